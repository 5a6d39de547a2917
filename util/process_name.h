// SPDX-License-Identifier: Apache-2.0
// The name of a process or thread as the kernel keeps it.
#ifndef SWITCHCFG_UTIL_PROCESS_NAME_H
#define SWITCHCFG_UTIL_PROCESS_NAME_H

#include <array>

namespace switchcfg {

// At most this much of the first line of /proc/PID/status is read, terminator included.
inline constexpr unsigned process_name_line = 127;
using ProcessName = std::array<char, process_name_line>;

// False when no such process can be looked at. Does not allocate.
bool read_process_name(int pid, ProcessName &name) noexcept;

} // namespace switchcfg

#endif
