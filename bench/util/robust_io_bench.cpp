// SPDX-License-Identifier: Apache-2.0
// Each row beside the bare system calls of the same job: 64 bytes through a pipe, a wait on a descriptor that is ready.
#include <switchcfg/robust_io.h>

#include "bench/support/compare.h"

#include <array>
#include <sys/select.h>
#include <unistd.h>

namespace {

using namespace switchcfg::bench;

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

int wait_bare(int fd, int highest)
{
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(fd, &readable);
    timeval left{1, 0};
    return ::select(highest, &readable, nullptr, nullptr, &left);
}

template<auto WriteAll, auto ReadAll>
void through_pipe(benchmark::State &state, const char *title)
{
    const Pipe pipe;
    Block block{};
    compare(
        state, {title, "write, read"},
        [&] {
            return ::write(pipe.ends[1], block.data(), block.size()) > 0 &&
                   ::read(pipe.ends[0], block.data(), block.size()) > 0;
        },
        [&] {
            return WriteAll(pipe.ends[1], block.data(), block.size()) >= 0 &&
                   ReadAll(pipe.ends[0], block.data(), block.size()) >= 0;
        });
}

void pipe_pair(benchmark::State &state)
{
    through_pipe<vx_write, vx_read>(state, "`vx_write` and `vx_read` of 64 bytes");
}
SWITCHCFG_ROW(pipe_pair);

void pipe_pair_no_intr(benchmark::State &state)
{
    through_pipe<vx_write_nointr, vx_read_nointr>(state, "`vx_write_nointr` and `vx_read_nointr` of 64 bytes");
}
SWITCHCFG_ROW(pipe_pair_no_intr);

void read_timeout(benchmark::State &state)
{
    const Pipe pipe;
    Block block{};
    compare(
        state, {"`vx_read_timeout` of 64 bytes", "write, select, read"},
        [&] {
            return ::write(pipe.ends[1], block.data(), block.size()) > 0 &&
                   wait_bare(pipe.ends[0], pipe.ends[0] + 1) == 1 &&
                   ::read(pipe.ends[0], block.data(), block.size()) > 0;
        },
        [&] {
            return vx_write(pipe.ends[1], block.data(), block.size()) == 0 &&
                   vx_read_timeout(pipe.ends[0], block.data(), block.size(), 1) == 0;
        });
}
SWITCHCFG_ROW(read_timeout);

void has_data(benchmark::State &state)
{
    const Pipe pipe;
    (void)vx_write(pipe.ends[1], "x", 1);
    compare(
        state, {"`fd_has_data`", "select"}, [&] { return wait_bare(pipe.ends[0], FD_SETSIZE); },
        [&] { return fd_has_data(1.0, pipe.ends[0]); });
}
SWITCHCFG_ROW(has_data);

} // namespace
