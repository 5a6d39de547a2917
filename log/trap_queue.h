// SPDX-License-Identifier: Apache-2.0
// The queue of pending traps in the status region, for the senders and the reading side.
#ifndef SWITCHCFG_LOG_TRAP_QUEUE_H
#define SWITCHCFG_LOG_TRAP_QUEUE_H

#include "log/trap_text.h"

#include <cstdint>
#include <string_view>

namespace switchcfg {

// While it lives, no other process and no other thread of this one touches the queue, and what a process left half done
// when it died is finished. False when the lock cannot be had or the region is not mapped; errno says why.
class TrapQueueHold {
  public:
    TrapQueueHold() noexcept;
    ~TrapQueueHold();
    TrapQueueHold(const TrapQueueHold &) = delete;
    TrapQueueHold &operator=(const TrapQueueHold &) = delete;

    explicit operator bool() const noexcept { return region_ != nullptr; }

    // Entries that can be read: what a start trap made of the count is no reason to leave the entries.
    int count() const noexcept;
    void take_oldest(int taken) noexcept;
    void put(std::uint32_t id, std::string_view text) noexcept;
    const std::uint8_t *region() const noexcept { return region_; }

  private:
    std::uint8_t *region_ = nullptr;
    int fd_ = -1;
};

// 0, or -1 when the queue cannot be had.
int queue_trap(int id, std::string_view text) noexcept;

inline int queue_trap(int id, const TrapText &text) noexcept
{
    return queue_trap(id, text.view());
}

} // namespace switchcfg

#endif
