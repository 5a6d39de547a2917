// SPDX-License-Identifier: Apache-2.0
// The mapped configuration regions for code inside the library: one load, no call.
#ifndef SWITCHCFG_CORE_CONFIG_REGION_H
#define SWITCHCFG_CORE_CONFIG_REGION_H

#include "core/config_layout.h"

namespace switchcfg {

// Null while not mapped. Written at start-up and teardown only. Hidden on the declaration too, or the compiler would
// reach for them through the GOT.
[[gnu::visibility("hidden")]] extern std::uint8_t *running_config;
[[gnu::visibility("hidden")]] extern std::uint8_t *default_config;

} // namespace switchcfg

#endif
