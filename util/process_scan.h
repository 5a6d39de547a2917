// SPDX-License-Identifier: Apache-2.0
// Walking the processes in /proc, and the lists of process IDs that look-ups give.
#ifndef SWITCHCFG_UTIL_PROCESS_SCAN_H
#define SWITCHCFG_UTIL_PROCESS_SCAN_H

#include "util/digits.h"
#include "util/owned.h"

#include <charconv>
#include <cstdint>
#include <cstring>
#include <switchcfg/files.h>

namespace switchcfg {

// Calls `visit(entry name)` for each entry of the folder until it gives something else than 0, which is the result; 0
// after the last entry, -1 when the folder cannot be read.
template<typename Visit>
int for_each_entry(const char *path, Visit visit) noexcept
{
    return dir_iterate(
        path, [](const char *name, void *visitor) { return (*static_cast<Visit *>(visitor))(name); }, &visit);
}

// The same over process IDs.
template<typename Visit>
int for_each_process(Visit &&visit) noexcept
{
    return for_each_entry("/proc", [&](const char *name) noexcept {
        int pid = 0;
        if (!is_digit(*name) || std::from_chars(name, name + std::strlen(name), pid).ec != std::errc{}) {
            return 0;
        }
        return static_cast<int>(visit(pid));
    });
}

// A growing list that is terminated after every step; empty lists own no memory.
class ProcessList {
  public:
    bool add(int pid, std::int32_t terminator = 0) noexcept
    {
        auto *const grown = static_cast<std::int32_t *>(std::realloc(list_.get(), (count_ + 2) * sizeof(std::int32_t)));
        if (grown == nullptr) {
            return false;
        }
        (void)list_.release();
        list_.reset(grown);
        grown[count_++] = pid;
        grown[count_] = terminator;
        return true;
    }
    void clear() noexcept
    {
        list_.reset();
        count_ = 0;
    }
    std::int32_t *release() noexcept { return list_.release(); }

  private:
    Malloced<std::int32_t> list_;
    std::size_t count_ = 0;
};

} // namespace switchcfg

#endif
