// SPDX-License-Identifier: Apache-2.0
#ifndef SWITCHCFG_UTIL_MONOTONIC_H
#define SWITCHCFG_UTIL_MONOTONIC_H

#include <cstdint>
#include <ctime>

namespace switchcfg {

// For deadlines: no change of the date moves it.
inline std::int64_t now_ms() noexcept
{
    timespec now{};
    (void)::clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

} // namespace switchcfg

#endif
