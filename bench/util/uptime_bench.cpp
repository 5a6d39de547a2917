// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/uptime.h>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

// What every turn of a server loop cannot do without: the three system calls.
void uptime_file_floor(benchmark::State &state)
{
    char text[100];
    for (auto _ : state) {
        const int fd = ::open("/proc/uptime", O_RDONLY | O_CLOEXEC);
        benchmark::DoNotOptimize(::read(fd, text, sizeof text));
        ::close(fd);
    }
}
BENCHMARK(uptime_file_floor);

void uptime_hundredths(benchmark::State &state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(uptime_cs());
    }
}
BENCHMARK(uptime_hundredths);

} // namespace
