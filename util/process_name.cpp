// SPDX-License-Identifier: Apache-2.0
#include "util/process_name.h"

#include "util/owned.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fcntl.h>

namespace switchcfg {

bool read_process_name(int pid, ProcessName &name) noexcept
{
    char path[32];
    (void)std::snprintf(path, sizeof path, "/proc/%d/status", pid);
    const Descriptor status{::open(path, O_RDONLY | O_CLOEXEC)};
    if (!status) {
        return false;
    }
    std::array<char, process_name_line> line;
    const ssize_t length = ::read(status.get(), line.data(), line.size() - 1);
    if (length <= 0) {
        return false;
    }
    char *const newline = std::find(line.data(), line.data() + length, '\n');
    const char *const tab = std::find(line.data(), newline, '\t');
    if (tab == newline) {
        return false;
    }
    *std::copy(tab + 1, static_cast<const char *>(newline), name.data()) = '\0';
    return true;
}

} // namespace switchcfg
