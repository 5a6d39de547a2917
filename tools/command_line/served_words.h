// SPDX-License-Identifier: Apache-2.0
// What a command answers to shells, for completion, and to packaging, for its manual.
#ifndef SWITCHCFG_TOOLS_COMMAND_LINE_SERVED_WORDS_H
#define SWITCHCFG_TOOLS_COMMAND_LINE_SERVED_WORDS_H

#include <CLI/CLI.hpp>
#include <span>
#include <string>

namespace switchcfg::tool {

// "complete-words WORD..." and "write-manual FOLDER": words that are not the command's own, so they are not parsed.
// False for all others. `exit_status` says in the manual what statuses there are. Throws Failure.
bool served_shell_or_packaging(const CLI::App &app, std::span<const std::string> words, const std::string &exit_status);

} // namespace switchcfg::tool

#endif
