// SPDX-License-Identifier: Apache-2.0
// The time, asked for many times between two sleeps: no system call, where the library's uptime_cs() opens a file.
#ifndef SWITCHCFG_LAB_STACKD_CLOCK_H
#define SWITCHCFG_LAB_STACKD_CLOCK_H

#include <chrono>
#include <cstdint>

namespace switchlab::stackd {

inline std::uint64_t now_us()
{
    const auto since = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(since).count());
}

inline std::uint64_t now_cs()
{
    return now_us() / 10'000;
}

} // namespace switchlab::stackd

#endif
