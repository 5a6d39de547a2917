// SPDX-License-Identifier: Apache-2.0
// Examples for the help and the manual pages.
#ifndef SWITCHCFG_TOOLS_COMMAND_LINE_EXAMPLES_H
#define SWITCHCFG_TOOLS_COMMAND_LINE_EXAMPLES_H

#include <CLI/CLI.hpp>
#include <span>
#include <string_view>

namespace switchcfg::tool {

struct Example {
    std::string_view line; // the whole command; the sub-commands it names say whose help shows it
    std::string_view what;
};

// Ends the help of each sub-command with its examples, and that of a family with those of all its sub-commands.
void add_examples(CLI::App &app, std::span<const Example> examples);

// Those of switchcfg itself.
std::span<const Example> switchcfg_examples();

} // namespace switchcfg::tool

#endif
