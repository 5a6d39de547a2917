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
    // POSIX counts zones west of Greenwich. Widened first, so that no stored word overflows. Hours and minutes carry
    // the same sign in this text, which other programs of the switch have always read from TZ; of zones east of
    // Greenwich with minutes, C libraries read the whole hours.
    const std::int64_t west = -std::int64_t{load(running_config, config_layout::utc_offset_minutes)};
    char zone[32];
    (void)std::snprintf(zone, sizeof zone, "STD%d:%d", static_cast<int>(west / 60), static_cast<int>(west % 60));
    vx_setenv("TZ", "%s", zone);
    ::tzset();
}
