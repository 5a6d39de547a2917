// SPDX-License-Identifier: Apache-2.0
// Walking the processes in /proc, and the lists of process IDs that look-ups give.
#ifndef SWITCHCFG_UTIL_PROCESS_SCAN_H
#define SWITCHCFG_UTIL_PROCESS_SCAN_H

#include "util/digits.h"
#include "util/owned.h"

#include <charconv>
#include <cstdint>
#include <cstring>
#include <dirent.h>
#include <memory>

namespace switchcfg {

struct CloseFolder {
    void operator()(DIR *folder) const noexcept
    {
        const KeepErrno keep;
        (void)::closedir(folder);
    }
};
using Folder = std::unique_ptr<DIR, CloseFolder>;

// Calls `visit(entry name)` for each entry of the folder until it gives something else than 0, which is the result; 0
// after the last entry, -1 when the folder cannot be read.
template<typename Visit>
int for_each_entry(const char *path, Visit &&visit) noexcept
{
    const Folder folder{::opendir(path)};
    if (!folder) {
        return -1;
    }
    while (const dirent *const entry = ::readdir(folder.get())) { // NOLINT(concurrency-mt-unsafe): a stream of our own
        if (const int result = visit(static_cast<const char *>(entry->d_name)); result != 0) {
            return result;
        }
    }
    return 0;
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
