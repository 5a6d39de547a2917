// SPDX-License-Identifier: Apache-2.0
// Manual pages, from the same descriptions that the help has.
#ifndef SWITCHCFG_TOOLS_MANUAL_H
#define SWITCHCFG_TOOLS_MANUAL_H

#include <CLI/CLI.hpp>
#include <string>

namespace switchcfg::tool {

// Writes switchcfg.1 and a page for each family, switchcfg-trap.1 and so on, into `folder`. Throws Failure.
void write_manual(const CLI::App &app, const std::string &folder);

} // namespace switchcfg::tool

#endif
