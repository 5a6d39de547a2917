// SPDX-License-Identifier: Apache-2.0
// What queueing a trap costs: into an empty, a half full and a full queue, beside the lock pair and the move of entries
// that the layout forces.
#include <switchcfg/config_region.h>
#include <switchcfg/locks.h>
#include <switchcfg/startup.h>
#include <switchcfg/status.h>
#include <switchcfg/trap.h>

#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstring>

namespace {

constexpr std::size_t entries = 8051696;
constexpr std::size_t count_word = 8103296;

std::uint8_t *ready_queue(int queued)
{
    if (cfg_init() != 0) {
        return nullptr;
    }
    static_cast<std::uint8_t *>(cfg_get_cfg())[14281 + 40] = 1;
    trap_queue_clear();
    for (int i = 0; i < queued; ++i) {
        send_trap_high_memory_usage_detected(-1 - i);
    }
    return static_cast<std::uint8_t *>(get_status());
}

void trap_floor(benchmark::State &state)
{
    const auto queued = static_cast<std::int32_t>(state.range(0));
    std::uint8_t *status = ready_queue(queued);
    const int fd = cfg_lock_table[CFG_LOCK_TRAPS].fd;
    trap_entry entry{};
    for (auto _ : state) {
        lock_write(fd);
        if (queued == 100) {
            std::memmove(status + entries, status + entries + 516, 98 * std::size_t{516});
        }
        std::memcpy(status + entries + static_cast<std::size_t>(queued == 100 ? 98 : queued) * 516, &entry, 128);
        benchmark::ClobberMemory();
        lock_free(fd);
    }
}
BENCHMARK(trap_floor)->Arg(0)->Arg(50)->Arg(100);

void trap_queued(benchmark::State &state)
{
    const auto queued = static_cast<std::int32_t>(state.range(0));
    std::uint8_t *status = ready_queue(queued);
    int usage = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(send_trap_high_memory_usage_detected(usage++));
        std::memcpy(status + count_word, &queued, sizeof queued);
    }
}
BENCHMARK(trap_queued)->Arg(0)->Arg(50)->Arg(100);

} // namespace
