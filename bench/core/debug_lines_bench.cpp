// SPDX-License-Identifier: Apache-2.0
// A debug line while nobody debugs, beside the one system call that finds that out.
#include <switchcfg/debug.h>

#include <benchmark/benchmark.h>
#include <unistd.h>

namespace {

void debug_line_unheard_floor(benchmark::State &state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(::access("/var/run/debug_terminals", F_OK));
    }
}
BENCHMARK(debug_line_unheard_floor);

void debug_line_unheard(benchmark::State &state)
{
    for (auto _ : state) {
        debug_process(27, "%s():%d | Command %s has taken the LOCK DCL", "dc_take_write_lock", 10, "name");
    }
}
BENCHMARK(debug_line_unheard);

void trace_silent(benchmark::State &state)
{
    for (auto _ : state) {
        devel_vprint_implementation("systemAPI", 1, "f", "%s: exited, status %d", "program", 0);
    }
}
BENCHMARK(trace_silent);

} // namespace
