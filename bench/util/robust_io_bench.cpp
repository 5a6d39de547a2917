// SPDX-License-Identifier: Apache-2.0
// Each row beside the bare system calls of the same job: 64 bytes through a pipe, a wait on a descriptor that is ready.
#include <switchcfg/robust_io.h>

#include <array>
#include <benchmark/benchmark.h>
#include <sys/select.h>
#include <unistd.h>

namespace {

using Block = std::array<char, 64>;

struct Pipe {
    Pipe() { ready = ::pipe(ends.data()) == 0; }
    ~Pipe()
    {
        ::close(ends[0]);
        ::close(ends[1]);
    }
    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;
    std::array<int, 2> ends{-1, -1};
    bool ready = false;
};

void pipe_pair_floor(benchmark::State &state)
{
    const Pipe pipe;
    Block block{};
    for (auto _ : state) {
        benchmark::DoNotOptimize(::write(pipe.ends[1], block.data(), block.size()));
        benchmark::DoNotOptimize(::read(pipe.ends[0], block.data(), block.size()));
    }
}
BENCHMARK(pipe_pair_floor);

template<auto WriteAll, auto ReadAll>
void pipe_pair(benchmark::State &state)
{
    const Pipe pipe;
    Block block{};
    for (auto _ : state) {
        benchmark::DoNotOptimize(WriteAll(pipe.ends[1], block.data(), block.size()));
        benchmark::DoNotOptimize(ReadAll(pipe.ends[0], block.data(), block.size()));
    }
}
BENCHMARK_TEMPLATE(pipe_pair, vx_write, vx_read);
BENCHMARK_TEMPLATE(pipe_pair, vx_write_nointr, vx_read_nointr);

int wait_bare(int fd, int highest)
{
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(fd, &readable);
    timeval left{1, 0};
    return ::select(highest, &readable, nullptr, nullptr, &left);
}

void read_timeout_floor(benchmark::State &state)
{
    const Pipe pipe;
    Block block{};
    for (auto _ : state) {
        benchmark::DoNotOptimize(::write(pipe.ends[1], block.data(), block.size()));
        benchmark::DoNotOptimize(wait_bare(pipe.ends[0], pipe.ends[0] + 1));
        benchmark::DoNotOptimize(::read(pipe.ends[0], block.data(), block.size()));
    }
}
BENCHMARK(read_timeout_floor);

void read_timeout(benchmark::State &state)
{
    const Pipe pipe;
    Block block{};
    for (auto _ : state) {
        benchmark::DoNotOptimize(vx_write(pipe.ends[1], block.data(), block.size()));
        benchmark::DoNotOptimize(vx_read_timeout(pipe.ends[0], block.data(), block.size(), 1));
    }
}
BENCHMARK(read_timeout);

template<bool Ours>
void has_data(benchmark::State &state)
{
    const Pipe pipe;
    (void)vx_write(pipe.ends[1], "x", 1);
    for (auto _ : state) {
        benchmark::DoNotOptimize(Ours ? fd_has_data(1.0, pipe.ends[0]) : wait_bare(pipe.ends[0], FD_SETSIZE));
    }
}
void has_data_floor(benchmark::State &state)
{
    has_data<false>(state);
}
BENCHMARK(has_data_floor);
BENCHMARK_TEMPLATE(has_data, true);

} // namespace
