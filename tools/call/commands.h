// SPDX-License-Identifier: Apache-2.0
#ifndef SWITCHCFG_TOOLS_CALL_COMMANDS_H
#define SWITCHCFG_TOOLS_CALL_COMMANDS_H

#include "tools/call/functions.h"
#include "tools/command_line/examples.h"

#include <CLI/CLI.hpp>

namespace switchcfg::tool {

void add_function_commands(CLI::App &app);
void add_list_command(CLI::App &app);
void add_stats_command(CLI::App &app);
std::span<const Example> call_examples();

// Throws Failure when the result says that the function did not do it.
void require_success(const std::string &what, const Outcome &outcome);

} // namespace switchcfg::tool

#endif
