// SPDX-License-Identifier: Apache-2.0
#include "core/config_region.h"

#include <switchcfg/startup.h>
#include <switchcfg/text.h>

#include <cstdio>
#include <ctime>

void updateTZ() noexcept
{
    using namespace switchcfg;
    if (running_config == nullptr) {
        return;
    }
    // POSIX counts zones west of Greenwich. Unsigned first, so that no stored word overflows. Hours and minutes carry
    // the same sign in this text, in all releases, although the C library does not read a sign there: it takes
    // STD-5:-30, half past five, for 5:59.
    const std::int32_t east = load(running_config, config_layout::utc_offset_minutes);
    const int sign = east > 0 ? -1 : 1;
    const std::uint32_t minutes = east < 0 ? 0U - static_cast<std::uint32_t>(east) : static_cast<std::uint32_t>(east);
    char zone[32];
    (void)std::snprintf(
        zone, sizeof zone, "STD%d:%d", sign * static_cast<int>(minutes / 60), sign * static_cast<int>(minutes % 60));
    vx_setenv("TZ", "%s", zone);
    ::tzset();
}
