// SPDX-License-Identifier: Apache-2.0
#ifndef SWITCHCFG_TOOLS_LOCK_HOLD_H
#define SWITCHCFG_TOOLS_LOCK_HOLD_H

#include "tools/command_line/failure.h"

#include <switchcfg/locks.h>

namespace switchcfg::tool {

// Holds a named lock, waiting for it; throws Failure when it cannot be had.
class LockHold {
  public:
    explicit LockHold(const cfg_lock &lock, bool shared = false) : fd_(lock.fd)
    {
        if ((shared ? lock_read : lock_write)(fd_) != 0) {
            throw system_failure(lock.path, "cannot take the lock");
        }
    }
    ~LockHold() { lock_free(fd_); }
    LockHold(const LockHold &) = delete;
    LockHold &operator=(const LockHold &) = delete;

  private:
    int fd_;
};

} // namespace switchcfg::tool

#endif
