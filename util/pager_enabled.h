// SPDX-License-Identifier: Apache-2.0
#ifndef SWITCHCFG_UTIL_PAGER_ENABLED_H
#define SWITCHCFG_UTIL_PAGER_ENABLED_H

namespace switchcfg {

extern int pager_enabled; // what pager_enable() was last told

} // namespace switchcfg

#endif
