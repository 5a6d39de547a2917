// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/locks.h>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

void lock_pair_floor(benchmark::State &state)
{
    const int fd = ::open("/tmp/lock_bench", O_RDWR | O_CREAT, 0600);
    struct flock whole {};
    for (auto _ : state) {
        whole.l_type = F_WRLCK;
        benchmark::DoNotOptimize(::fcntl(fd, F_SETLK, &whole));
        whole.l_type = F_UNLCK;
        benchmark::DoNotOptimize(::fcntl(fd, F_SETLK, &whole));
    }
    ::close(fd);
}
BENCHMARK(lock_pair_floor);

void lock_pair(benchmark::State &state)
{
    const int fd = lock_create("/tmp/lock_bench");
    for (auto _ : state) {
        benchmark::DoNotOptimize(lock_write(fd));
        benchmark::DoNotOptimize(lock_free(fd));
    }
    lock_destroy(fd);
}
BENCHMARK(lock_pair);

} // namespace
