// SPDX-License-Identifier: Apache-2.0
// A row: the thing beside its floor. Short batches of both take turns, so what else the machine does meets both, and
// the row's figure is the median over the ratios of neighbouring batches.
#pragma once

#include <benchmark/benchmark.h>
#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>

namespace switchcfg::bench {

struct Row {
    const char *title;
    const char *floor;
    double budget = 0; // the most that the ratio may be; 0: none
    // Time of this thread for what runs on it alone; time on the wall for what waits for another process.
    enum class Clock { thread, wall } clock = Clock::thread;
};

// How long the two of a row take turns.
extern double seconds_per_row;

double seconds_of(Row::Clock clock) noexcept;

// One batch: its seconds per operation, negative when an operation failed.
struct Batch {
    virtual double run(std::int64_t count) = 0;

  protected:
    ~Batch() = default;
};

// Runs the turns and reports. `most` bounds the operations of a batch.
void take_turns(benchmark::State &state, const Row &row, Batch &floor, Batch &thing, std::int64_t most);

// What a row reports that is no time: a figure and its floor in `unit`, where at most `more` above the floor is good.
void report_amounts(
    benchmark::State &state, const Row &row, double floor, double thing, const char *unit, double most_above);

// False when the operation says so with a bool; any other result is good.
template<typename Operation>
bool once(Operation &operation)
{
    using Result = std::invoke_result_t<Operation &>;
    if constexpr (std::is_void_v<Result>) {
        operation();
        return true;
    } else if constexpr (std::is_same_v<Result, bool>) {
        return operation();
    } else {
        benchmark::DoNotOptimize(operation());
        return true;
    }
}

template<typename Operation>
struct OperationBatch final : Batch {
    OperationBatch(Operation run_once, Row::Clock its_clock) : operation(std::move(run_once)), clock(its_clock) {}
    [[gnu::noinline]] double run(std::int64_t count) override
    {
        bool good = true;
        Operation its_own = operation; // what it counts stays in registers
        const double start = seconds_of(clock);
        for (std::int64_t i = 0; i < count; ++i) {
            good = once(its_own) && good;
        }
        const double took = seconds_of(clock) - start;
        return good ? took / static_cast<double>(count) : -1;
    }
    Operation operation;
    Row::Clock clock;
};

// A callable that measures its own batch.
template<typename Measure>
struct MeasuredBatch final : Batch {
    explicit MeasuredBatch(Measure its_measure) : measure(std::move(its_measure)) {}
    double run(std::int64_t) override { return measure(); }
    Measure measure;
};

// Zero, but not before `result` is there: with it in the next argument a call waits for the answer to the last one, as
// a caller does that needs the answer to go on.
template<typename Result>
std::uint32_t zero_after(Result result)
{
    if constexpr (std::is_pointer_v<Result>) {
        auto bits = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(result));
        benchmark::DoNotOptimize(bits);
        return static_cast<std::uint32_t>(bits >> 63);
    } else {
        std::uint64_t bits = static_cast<std::uint32_t>(result);
        benchmark::DoNotOptimize(bits);
        return static_cast<std::uint32_t>(bits >> 32);
    }
}

// A function of this program as one of the library is called: through a pointer that is not known before the program
// runs.
template<typename Function>
Function through_pointer(Function function)
{
    volatile Function slot = function;
    return slot;
}

template<typename Floor, typename Thing>
void compare(benchmark::State &state, const Row &row, Floor floor, Thing thing, std::int64_t most = INT64_MAX)
{
    OperationBatch<Floor> floor_batch{std::move(floor), row.clock};
    OperationBatch<Thing> thing_batch{std::move(thing), row.clock};
    take_turns(state, row, floor_batch, thing_batch, most);
}

template<typename Floor, typename Thing>
void compare_measured(benchmark::State &state, const Row &row, Floor floor, Thing thing)
{
    MeasuredBatch<Floor> floor_batch{std::move(floor)};
    MeasuredBatch<Thing> thing_batch{std::move(thing)};
    take_turns(state, row, floor_batch, thing_batch, 1);
}

} // namespace switchcfg::bench

// One round of turns is all there is to an iteration. Names that begin with scaling_ or peer_ have tables of their own
// on the page that scripts/bench writes.
#define SWITCHCFG_ROW(NAME) BENCHMARK(NAME)->Iterations(1)->UseManualTime()->Unit(benchmark::kMicrosecond)
