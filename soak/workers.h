// SPDX-License-Identifier: Apache-2.0
// Clients of all kinds that never stop calling.
#ifndef SWITCHCFG_SOAK_WORKERS_H
#define SWITCHCFG_SOAK_WORKERS_H

#include "soak/shared.h"

namespace switchcfg::soak {

inline constexpr int could_not_start = 3; // exit status: cfg_init() said so

// Until the end of the run. `seed` makes what it does another each time.
[[noreturn]] void work(Shared &shared, int index, std::uint32_t seed);

} // namespace switchcfg::soak

#endif
