// SPDX-License-Identifier: Apache-2.0
// What cfg_init() arms.
#ifndef SWITCHCFG_CORE_CRASH_HANDLERS_H
#define SWITCHCFG_CORE_CRASH_HANDLERS_H

#include <switchcfg/startup.h>

namespace switchcfg {

// The deepest stack a report shows.
inline constexpr int report_depth = 15;

void set_crash_hook(cfg_crash_hook *hook) noexcept;
void install_crash_handlers() noexcept;
void install_thread_dump_handler() noexcept;

} // namespace switchcfg

#endif
