// SPDX-License-Identifier: Apache-2.0
// Manual pages, from the same descriptions that the help has.
#ifndef SWITCHCFG_TOOLS_COMMAND_LINE_MANUAL_H
#define SWITCHCFG_TOOLS_COMMAND_LINE_MANUAL_H

#include <CLI/CLI.hpp>
#include <string>

namespace switchcfg::tool {

// Writes a page for the tool, switchcfg.1, and one for each sub-command, switchcfg-trap.1 and so on, into `folder`.
// `exit_status` says what statuses there are. Throws Failure.
void write_manual(const CLI::App &app, const std::string &folder, const std::string &exit_status);

} // namespace switchcfg::tool

#endif
