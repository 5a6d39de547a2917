// SPDX-License-Identifier: Apache-2.0
#include "bench/support/compare.h"

#include <algorithm>
#include <ctime>
#include <vector>

namespace switchcfg::bench {
namespace {

constexpr double batch_seconds = 300e-6; // shorter than a time slice, so that few batches are interrupted
constexpr std::size_t fewest_turns = 11;

double quantile(std::vector<double> values, double part)
{
    const auto at = values.begin() + static_cast<std::ptrdiff_t>(static_cast<double>(values.size() - 1) * part);
    std::ranges::nth_element(values, at);
    return *at;
}

// As many operations as fill a batch, by the slower of the two.
std::int64_t operations_of(Batch &floor, Batch &thing, std::int64_t most)
{
    std::int64_t count = 1;
    while (count < most) {
        const double slower = std::max(floor.run(count), thing.run(count)) * static_cast<double>(count);
        if (slower <= 0 || slower >= batch_seconds / 2) {
            break;
        }
        count = std::min(count * 2, most);
    }
    return count;
}

void label(benchmark::State &state, const Row &row, const char *unit)
{
    state.SetLabel(std::string{row.title} + "|" + row.floor + "|" + unit);
}

} // namespace

double seconds_per_row = 1;

double seconds_of(Row::Clock clock) noexcept
{
    timespec now{};
    ::clock_gettime(clock == Row::Clock::thread ? CLOCK_THREAD_CPUTIME_ID : CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

void take_turns(benchmark::State &state, const Row &row, Batch &floor, Batch &thing, std::int64_t most)
{
    label(state, row, "ns");
    std::vector<double> floors;
    std::vector<double> things;
    std::vector<double> ratios;
    for (auto _ : state) {
        const std::int64_t count = operations_of(floor, thing, most);
        const double start = seconds_of(Row::Clock::wall);
        for (double now = start; now < start + seconds_per_row || ratios.size() < fewest_turns;
             now = seconds_of(Row::Clock::wall)) {
            double bare = 0;
            double ours = 0;
            if (ratios.size() % 2 == 0) {
                bare = floor.run(count);
                ours = thing.run(count);
            } else {
                ours = thing.run(count);
                bare = floor.run(count);
            }
            if (bare <= 0 || ours <= 0) {
                state.SkipWithError(bare <= 0 ? "the floor failed" : "the call failed");
                return;
            }
            floors.push_back(bare);
            things.push_back(ours);
            ratios.push_back(ours / bare);
        }
        state.SetIterationTime(quantile(things, 0.5));
    }
    state.counters["floor"] = quantile(floors, 0.5) * 1e9;
    state.counters["thing"] = quantile(things, 0.5) * 1e9;
    state.counters["ratio"] = quantile(ratios, 0.5);
    state.counters["low"] = quantile(ratios, 0.25);
    state.counters["high"] = quantile(ratios, 0.75);
    state.counters["turns"] = static_cast<double>(ratios.size());
    if (row.budget > 0) {
        state.counters["budget"] = row.budget;
    }
}

void report_amounts(
    benchmark::State &state, const Row &row, double floor, double thing, const char *unit, double most_above)
{
    label(state, row, unit);
    for (auto _ : state) {
        state.SetIterationTime(1e-9);
    }
    state.counters["floor"] = floor;
    state.counters["thing"] = thing;
    state.counters["most_above"] = most_above;
}

} // namespace switchcfg::bench
