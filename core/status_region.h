// SPDX-License-Identifier: Apache-2.0
// The mapped status region for code inside the library: one load, no call.
#ifndef SWITCHCFG_CORE_STATUS_REGION_H
#define SWITCHCFG_CORE_STATUS_REGION_H

#include "core/status_layout.h"

namespace switchcfg {

// Null while not mapped. Written at start-up and teardown only. The attribute matters on a declaration: without it the
// compiler must reach for the pointer through the GOT, one more load in every accessor.
[[gnu::visibility("hidden")]] extern std::uint8_t *status_region;

inline std::uint8_t *status_base() noexcept
{
    return status_region;
}

} // namespace switchcfg

#endif
