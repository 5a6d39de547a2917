// SPDX-License-Identifier: Apache-2.0
#include "features/routing_lock.h"

#include "util/pause.h"

#include <switchcfg/debug.h>
#include <switchcfg/locks.h>
#include <switchcfg/routing.h>

#include <atomic>
#include <unistd.h>

namespace switchcfg {
namespace {

constexpr int attempts = 1101;
constexpr int between_attempts_ms = 100;

// Record locks do not exclude the threads of a process, so those have this: the process whose thread is in an exchange.
// What a fork copied of it while another thread was in one is another process's number and does not count.
constinit std::atomic<pid_t> busy_process = 0;

bool try_take(pid_t process) noexcept
{
    pid_t seen = busy_process.load(std::memory_order_relaxed);
    if (seen == process || !busy_process.compare_exchange_strong(seen, process, std::memory_order_acquire)) {
        return false;
    }
    if (lock_try_write(DCLockGetSetFileFD) == 0) {
        return true;
    }
    busy_process.store(0, std::memory_order_release);
    return false;
}

bool take(pid_t process, std::uint32_t command) noexcept
{
    constexpr char function[] = "dc_take_write_lock";
    for (int attempt = 1; !try_take(process); ++attempt) {
        if (attempt == attempts) {
            debug_process(DC_DEBUG_CLASS, "%s():%d | System is busy while trying to process command %s", function,
                __LINE__, dc_get_cmd_id_name(command));
            return false;
        }
        pause_ms(between_attempts_ms);
    }
    debug_process(
        DC_DEBUG_CLASS, "%s():%d | Command %s has taken the LOCK DCL", function, __LINE__, dc_get_cmd_id_name(command));
    return true;
}

} // namespace

RoutingLock::RoutingLock(std::uint32_t command) noexcept
    : command_(command), process_(::getpid()), held_(take(process_, command))
{
}

RoutingLock::~RoutingLock()
{
    if (held_) {
        lock_free(DCLockGetSetFileFD);
        busy_process.store(0, std::memory_order_release);
        debug_process(DC_DEBUG_CLASS, "%s():%d | Command %s has given the LOCK DCL", "dc_give_write_lock", __LINE__,
            dc_get_cmd_id_name(command_));
    }
}

} // namespace switchcfg
