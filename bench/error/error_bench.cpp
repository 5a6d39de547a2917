// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/error.h>

#include <array>
#include <benchmark/benchmark.h>
#include <cstdint>

namespace {

// The floor: an exported function that loads one entry of a table, reached as the library's own functions are.
std::array<const char *, 512> table;

[[gnu::noinline, gnu::noipa]] const char *one_load(unsigned index)
{
    return table[index];
}
const char *(*volatile one_load_from_elsewhere)(unsigned) = one_load;

void error_table_load_floor(benchmark::State &state)
{
    const auto call = one_load_from_elsewhere;
    unsigned code = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(call(code));
        code = (code + 7) & 511U;
    }
}
BENCHMARK(error_table_load_floor);

void error_message(benchmark::State &state)
{
    unsigned code = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(cfg_strerror(-static_cast<int>(code)));
        code = (code + 7) & 511U;
    }
}
BENCHMARK(error_message);

void error_from_bcm(benchmark::State &state)
{
    unsigned code = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(cfg_error_from_bcm(-static_cast<int>(code)));
        code = (code + 7) & 31U;
    }
}
BENCHMARK(error_from_bcm);

void error_from_stp(benchmark::State &state)
{
    unsigned code = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(cfg_error_from_stp(static_cast<int>(code)));
        code = (code + 7) & 63U;
    }
}
BENCHMARK(error_from_stp);

void error_from_psm(benchmark::State &state)
{
    unsigned code = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(cfg_error_from_psm(-1000 - static_cast<int>(code)));
        code = (code + 1) & 7U;
    }
}
BENCHMARK(error_from_psm);

} // namespace
