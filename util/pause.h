// SPDX-License-Identifier: Apache-2.0
// Sleeping between attempts. A signal does not shorten it, or a process with a busy timer would run out of attempts.
#ifndef SWITCHCFG_UTIL_PAUSE_H
#define SWITCHCFG_UTIL_PAUSE_H

#include "util/owned.h"

#include <cerrno>
#include <ctime>

namespace switchcfg {

inline void pause_ms(int milliseconds) noexcept
{
    const KeepErrno keep;
    timespec left{milliseconds / 1000, milliseconds % 1000 * 1000000L};
    while (::nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
}

} // namespace switchcfg

#endif
