// SPDX-License-Identifier: Apache-2.0
// The trap queue, and the least that queueing into it takes.
#pragma once

#include "core/config_layout.h"
#include "core/status_layout.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <switchcfg/config_region.h>
#include <switchcfg/locks.h>
#include <switchcfg/startup.h>
#include <switchcfg/status.h>
#include <switchcfg/trap.h>

namespace switchcfg::bench {

inline constexpr std::size_t trap_entries = status_layout::trap_id.offset;
inline constexpr std::size_t trap_count_word = status_layout::trap_count.offset;
inline constexpr std::size_t trap_size = status_layout::per_trap.stride;

// Attaches the process; null when that fails. Else the status region, with so many different traps queued, and the
// sending of this kind of trap switched on.
inline std::uint8_t *trap_queue_of(int queued)
{
    std::filesystem::create_directories("/var/run/cfg");
    if (cfg_init() != 0) {
        return nullptr;
    }
    auto *const config = static_cast<std::uint8_t *>(cfg_get_cfg());
    for (std::uint32_t trap = 0; trap < config_layout::trap_enable.count(); ++trap) {
        store(config, config_layout::trap_enable, 1, trap);
    }
    trap_queue_clear();
    for (int i = 0; i < queued; ++i) {
        send_trap_high_memory_usage_detected(-1 - i);
    }
    return static_cast<std::uint8_t *>(get_status());
}

inline bool queue_trap_bare(std::uint8_t *status, int queued)
{
    static const trap_entry entry{};
    const int fd = cfg_lock_table[CFG_LOCK_TRAPS].fd;
    if (lock_write(fd) != 0) {
        return false;
    }
    std::uint8_t *const first = status + trap_entries;
    if (queued == 100) {
        std::memmove(first, first + trap_size, 98 * trap_size);
    }
    std::memcpy(first + static_cast<std::size_t>(queued == 100 ? 98 : queued) * trap_size, &entry, 128);
    benchmark::ClobberMemory();
    return lock_free(fd) == 0;
}

} // namespace switchcfg::bench
