// SPDX-License-Identifier: Apache-2.0
// What the driver of the fault run and its workers share: memory that outlives any of them.
#ifndef SWITCHCFG_SOAK_SHARED_H
#define SWITCHCFG_SOAK_SHARED_H

#include <array>
#include <atomic>
#include <cstdint>
#include <ctime>
#include <sys/types.h>

namespace switchcfg::soak {

enum class Call : std::uint8_t {
    start,
    log_send,
    log_fetch,
    trap_send,
    trap_peek,
    config_change,
    config_sync,
    process_request,
    monitor_request,
    routing_command,
    chip_call,
    process_lookup,
    command_capture,
    boot_variable,
};

struct CallFacts {
    const char *name;
    int limit_s;       // what the interface promises, or the faults that may be in its way; 0 for no limit
    bool every_minute; // succeeds between two inspections
};

inline constexpr std::array<CallFacts, 14> calls{{
    {"cfg_init", 30, false},
    {"log_send_cat", 10, true},
    {"logger_get", 20, true},
    {"send_trap_*", 20, true},
    {"trap_queue_peek", 20, true},
    {"configuration change under its lock", 20, true},
    {"cfg_data_sync", 20, true},
    {"pm_client_start", 10, true},
    {"cpumon_daemon_request_extra_data", 13, true},
    {"dc_socket_send", 200, true},
    {"bcm_cmd", 60, true},
    {"pid_by_name", 10, true},
    {"system_capture", 20, true},
    {"bootenv_get", 10, true},
}};

struct Tally {
    std::atomic<std::uint64_t> done;
    std::atomic<std::uint64_t> failed;
    std::atomic<std::uint32_t> longest_ms;
};

enum class Kind : std::uint8_t { logs, traps, configuration, requests, chip, toolkit };
inline constexpr std::array kind_names{"logs", "traps", "configuration", "requests", "chip", "toolkit"};

inline constexpr int most_workers = 10;
inline constexpr std::uint32_t remembered_lines = 1U
                                                  << 22U; // an hour of the fastest machine so far makes a third of them

struct Worker {
    Kind kind;
    std::atomic<pid_t> pid;
    std::atomic<std::uint32_t> stops; // how often it was stopped, which no promise covers
    std::atomic<int> call;            // the one it is in, negative between two
    std::atomic<bool> paused;
    std::atomic<std::uint32_t> next_line;
    // Lines that were seen in the store in flash: they stay there until newer ones take their place.
    std::array<std::atomic<std::uint8_t>, remembered_lines> in_flash;
};

struct Shared {
    std::atomic<bool> pause;
    std::atomic<bool> end;
    std::atomic<std::uint32_t> log_epoch;   // changes when something is done to the logging daemon
    std::atomic<std::uint32_t> flash_epoch; // or to where it keeps its files
    std::array<Tally, calls.size()> tallies;
    std::array<Worker, most_workers> workers;
    std::atomic<std::uint64_t> lines_acknowledged;
    std::atomic<std::uint64_t> lines_verified;
    std::atomic<std::uint64_t> lines_undecided; // the daemon was killed before they could be looked for
    std::atomic<int> most_queued;               // traps
    std::atomic<std::uint32_t> violations;
};

inline std::uint64_t now_ms()
{
    timespec now{};
    (void)::clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1000 + static_cast<std::uint64_t>(now.tv_nsec) / 1000000;
}

// Counts it and says it on standard error.
[[gnu::format(printf, 2, 3)]] void violation(Shared &shared, const char *format, ...);

} // namespace switchcfg::soak

#endif
