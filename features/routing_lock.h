// SPDX-License-Identifier: Apache-2.0
// The lock around each command to the routing stack.
#ifndef SWITCHCFG_FEATURES_ROUTING_LOCK_H
#define SWITCHCFG_FEATURES_ROUTING_LOCK_H

#include <cstdint>
#include <sys/types.h>

namespace switchcfg {

// The lock for as long as the object lives, if it could be had.
class RoutingLock {
  public:
    explicit RoutingLock(std::uint32_t command) noexcept;
    ~RoutingLock();
    RoutingLock(const RoutingLock &) = delete;
    RoutingLock &operator=(const RoutingLock &) = delete;
    explicit operator bool() const noexcept { return held_; }
    pid_t process() const noexcept { return process_; }

  private:
    std::uint32_t command_;
    pid_t process_;
    bool held_;
};

} // namespace switchcfg

#endif
