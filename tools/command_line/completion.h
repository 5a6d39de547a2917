// SPDX-License-Identifier: Apache-2.0
// What a shell offers while a command line is being typed: sub-commands, options, and values as the switch has them
// now.
#ifndef SWITCHCFG_TOOLS_COMMAND_LINE_COMPLETION_H
#define SWITCHCFG_TOOLS_COMMAND_LINE_COMPLETION_H

#include <CLI/CLI.hpp>
#include <span>
#include <string>
#include <vector>

namespace switchcfg::tool {

// `words`: what stands behind the name of the tool, the last one as far as it is typed. Never throws for want of a
// switch: then there are no live values.
std::vector<std::string> completions(const CLI::App &app, std::span<const std::string> words);

} // namespace switchcfg::tool

#endif
