// SPDX-License-Identifier: Apache-2.0
// Which process has a file open.
#include <switchcfg/process.h>

#include "util/process_scan.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace switchcfg {
namespace {

constexpr std::size_t link_size = 256; // what is looked at of the link of a descriptor

int first_with_file(const char *path, int passed_over) noexcept
{
    return for_each_process(
        [&](int pid) noexcept { return pid != passed_over && pid_has_file_open(pid, path) == 1 ? pid : 0; });
}

} // namespace
} // namespace switchcfg

int pid_has_file_open(int pid, const char *path) noexcept
{
    using namespace switchcfg;
    char folder[32];
    (void)std::snprintf(folder, sizeof folder, "/proc/%d/fd", pid);
    return for_each_entry(folder, [&](const char *name) noexcept {
        char descriptor[sizeof folder + 16];
        (void)std::snprintf(descriptor, sizeof descriptor, "%s/%.15s", folder, name);
        char target[link_size + 1];
        const ssize_t length = ::readlink(descriptor, target, link_size);
        if (length < 0 || path == nullptr) {
            return 0;
        }
        target[length] = '\0';
        return std::strcmp(target, path) == 0 ? 1 : 0;
    });
}

int file_is_open(const char *path) noexcept
{
    return switchcfg::first_with_file(path, 0);
}

int file_is_open_by_other(const char *path) noexcept
{
    return switchcfg::first_with_file(path, ::getpid());
}
