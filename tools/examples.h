// SPDX-License-Identifier: Apache-2.0
// Examples for the help and the manual pages.
#ifndef SWITCHCFG_TOOLS_EXAMPLES_H
#define SWITCHCFG_TOOLS_EXAMPLES_H

#include <CLI/CLI.hpp>

namespace switchcfg::tool {

// Gives each family of sub-commands its examples, at the end of its help.
void add_examples(CLI::App &app);

} // namespace switchcfg::tool

#endif
