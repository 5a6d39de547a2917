// SPDX-License-Identifier: Apache-2.0
#ifndef SWITCHCFG_TOOLS_SIGNAL_NAME_H
#define SWITCHCFG_TOOLS_SIGNAL_NAME_H

#include <string>

namespace switchcfg::tool {

// "TERM", "SIGTERM" or "15"; throws Failure.
int signal_by_name(const std::string &name);

} // namespace switchcfg::tool

#endif
