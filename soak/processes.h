// SPDX-License-Identifier: Apache-2.0
// The processes of the unit, as /proc shows them.
#ifndef SWITCHCFG_SOAK_PROCESSES_H
#define SWITCHCFG_SOAK_PROCESSES_H

#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

namespace switchcfg::soak {

struct Process {
    pid_t pid;
    std::string name; // as the kernel keeps it, 15 characters
    bool zombie;
};

std::vector<Process> processes();
int open_descriptors(pid_t pid); // negative when the process is gone
long address_space_kib(pid_t pid);
std::map<std::string, int> count_by_name(const std::vector<Process> &all);

} // namespace switchcfg::soak

#endif
