// SPDX-License-Identifier: Apache-2.0
// What queueing a trap costs: into an empty, a partly full and a full queue, beside the lock pair and the move of
// entries that the layout forces.
#include <switchcfg/config_region.h>
#include <switchcfg/locks.h>
#include <switchcfg/startup.h>
#include <switchcfg/status.h>
#include <switchcfg/trap.h>

#include "bench/support/compare.h"
#include "bench/support/trap_floor.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace {

using namespace switchcfg::bench;

void queue_trap(benchmark::State &state, const Row &row)
{
    const auto queued = static_cast<std::int32_t>(state.range(0));
    std::uint8_t *const status = trap_queue_of(queued);
    if (status == nullptr) {
        state.SkipWithError("the regions cannot be had");
        return;
    }
    int usage = 0;
    // A full queue stays full; any other is brought back to its fill, without being counted as work of ours.
    compare(
        state, row, [&] { return queue_trap_bare(status, queued); },
        [&] {
            const int sent = send_trap_high_memory_usage_detected(usage++);
            std::memcpy(status + trap_count_word, &queued, sizeof queued);
            return sent == 0;
        });
    cfg_exit();
}

void trap_queued(benchmark::State &state)
{
    queue_trap(state, {"trap queued", "lock pair and the move the layout forces", 1.2});
}
SWITCHCFG_ROW(trap_queued)->ArgName("queued")->Arg(0)->Arg(50)->Arg(100);

void scaling_queue_fill(benchmark::State &state)
{
    queue_trap(state, {"queueing a trap, by traps that are queued already", "lock pair and the move"});
}
SWITCHCFG_ROW(scaling_queue_fill)->Arg(0)->Arg(1)->Arg(10)->Arg(25)->Arg(50)->Arg(75)->Arg(98)->Arg(99)->Arg(100);

void trap_drain(benchmark::State &state)
{
    constexpr std::int32_t queued = 100;
    std::uint8_t *const status = trap_queue_of(queued);
    if (status == nullptr) {
        state.SkipWithError("the regions cannot be had");
        return;
    }
    static std::array<trap_entry, queued> taken;
    const int fd = cfg_lock_table[CFG_LOCK_TRAPS].fd;
    compare(
        state, {"100 traps taken by the agent", "lock pair and one copy"},
        [&] {
            lock_write(fd);
            std::memcpy(taken.data(), status + trap_entries, sizeof taken);
            benchmark::ClobberMemory();
            return lock_free(fd) == 0;
        },
        [&] {
            std::memcpy(status + trap_count_word, &queued, sizeof queued);
            return trap_queue_drain(taken.data(), queued) == queued;
        });
    cfg_exit();
}
SWITCHCFG_ROW(trap_drain);

} // namespace
