// SPDX-License-Identifier: Apache-2.0
#ifndef SWITCHCFG_TOOLS_COMMAND_LINE_RUN_H
#define SWITCHCFG_TOOLS_COMMAND_LINE_RUN_H

#include <CLI/CLI.hpp>

namespace switchcfg::tool {

// What the switchcfg programs have in common: --json and the options for long output, completion, manual, failures on
// standard error, exit status. To be called once the sub-commands are added.
int run(CLI::App &app, int argc, char **argv);

} // namespace switchcfg::tool

#endif
