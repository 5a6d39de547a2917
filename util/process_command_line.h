// SPDX-License-Identifier: Apache-2.0
// The command line of a process, without allocating.
#ifndef SWITCHCFG_UTIL_PROCESS_COMMAND_LINE_H
#define SWITCHCFG_UTIL_PROCESS_COMMAND_LINE_H

#include <array>

namespace switchcfg {

inline constexpr unsigned command_line_size = 256; // what is kept of it
using CommandLine = std::array<char, command_line_size + 1>;

// False when there is no such process or it has no command line (kernel threads, zombies).
bool read_command_line(int pid, CommandLine &text) noexcept;

} // namespace switchcfg

#endif
