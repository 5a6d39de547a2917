// SPDX-License-Identifier: Apache-2.0
// The values that arguments can have, as the switch has them now.
#ifndef SWITCHCFG_TOOLS_COMMAND_LINE_COMPLETION_VALUES_H
#define SWITCHCFG_TOOLS_COMMAND_LINE_COMPLETION_VALUES_H

#include <string>
#include <vector>

namespace switchcfg::tool {

// Of an argument of the command at `path` ("config get"): its name where it has a place, and its names with dashes.
// Empty when nothing is known, or no switch is there to ask.
std::vector<std::string> completion_values(
    const std::string &path, const std::string &positional, const std::string &option);

} // namespace switchcfg::tool

#endif
