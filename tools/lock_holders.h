// SPDX-License-Identifier: Apache-2.0
// The named locks, and who holds them by the kernel's own lock table.
#ifndef SWITCHCFG_TOOLS_LOCK_HOLDERS_H
#define SWITCHCFG_TOOLS_LOCK_HOLDERS_H

#include <string>
#include <vector>

namespace switchcfg::tool {

struct NamedLock {
    std::string name;
    std::string path;
    int fd;
};

// In the order of the lock table; the two locks outside it come last. Attach first.
std::vector<NamedLock> all_locks();

struct Holder {
    int pid;
    std::string process;
    bool exclusive;
    bool waiting;
};

// Holders of a lock on the file, and those who wait for one.
std::vector<Holder> holders_of(const std::string &path);

} // namespace switchcfg::tool

#endif
