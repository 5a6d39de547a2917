// SPDX-License-Identifier: Apache-2.0
#include "tools/lock_holders.h"

#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <switchcfg/locks.h>
#include <switchcfg/startup.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace switchcfg::tool {

std::vector<NamedLock> all_locks()
{
    std::vector<NamedLock> locks;
    for (const cfg_lock &lock : cfg_lock_table) {
        locks.push_back({lock.name, lock.path, lock.fd});
    }
    locks.push_back({"DC", "/tmp/dcGetSetLock", DCLockGetSetFileFD});
    locks.push_back({"IPMC", "/tmp/ipmclock", IpmcLockFileFD});
    return locks;
}

// Lines such as "1: POSIX  ADVISORY  WRITE 4711 fe:01:12345 0 EOF"; a waiter has "->" behind its number.
std::vector<Holder> holders_of(const std::string &path)
{
    struct stat file {};
    if (::stat(path.c_str(), &file) != 0) {
        return {};
    }
    std::vector<Holder> holders;
    std::ifstream table{"/proc/locks"};
    for (std::string line; std::getline(table, line);) {
        std::istringstream words{line};
        std::string number;
        std::string kind;
        std::string mandatory;
        std::string type;
        std::string where;
        int pid = 0;
        words >> number >> kind;
        const bool waiting = kind == "->";
        if (waiting) {
            words >> kind;
        }
        words >> mandatory >> type >> pid >> where;
        unsigned major_number = 0;
        unsigned minor_number = 0;
        unsigned long long inode = 0;
        if (!words || std::sscanf(where.c_str(), "%x:%x:%llu", &major_number, &minor_number, &inode) != 3 ||
            inode != file.st_ino || ::makedev(major_number, minor_number) != file.st_dev) {
            continue;
        }
        std::unique_ptr<char, decltype(&std::free)> name{cfg_get_pid_name(pid), &std::free};
        holders.push_back({pid, name ? name.get() : "", type == "WRITE", waiting});
    }
    return holders;
}

} // namespace switchcfg::tool
