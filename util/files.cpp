// SPDX-License-Identifier: Apache-2.0
// Whole-file helpers.
#define _FILE_OFFSET_BITS 64 // stat and readdir fail on large files and inode numbers otherwise, where long has 32 bits
#include <switchcfg/files.h>
#include <switchcfg/robust_io.h>

#include "util/owned.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using switchcfg::Descriptor;
using switchcfg::Folder;

namespace {

// The C library does not take null paths; ours fail as the kernel would make them fail.
bool is_path(const char *path) noexcept
{
    if (path == nullptr) {
        errno = EFAULT;
    }
    return path != nullptr;
}

} // namespace

int file_exists(const char *path) noexcept
{
    struct stat info;
    return is_path(path) && ::stat(path, &info) == 0 ? 1 : 0;
}

std::int64_t file_size(const char *path) noexcept
{
    struct stat info;
    return is_path(path) && ::stat(path, &info) == 0 ? info.st_size : -1;
}

std::int64_t fd_size(int fd) noexcept
{
    struct stat info;
    return ::fstat(fd, &info) == 0 ? info.st_size : -1;
}

int file_write(const char *path, const void *buffer, std::uint32_t length) noexcept
{
    const Descriptor file{is_path(path) ? ::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666) : -1};
    if (!file) {
        return -1;
    }
    if (length == 0) {
        return 0;
    }
    return vx_write(file.get(), buffer, length) == 0 && ::fsync(file.get()) == 0 ? 0 : -1;
}

int dir_iterate(const char *path, int (*callback)(const char *name, void *argument), void *argument)
{
    const Folder folder{is_path(path) ? ::opendir(path) : nullptr};
    if (!folder) {
        return -1;
    }
    for (;;) {
        errno = 0;
        const dirent *const entry = ::readdir(folder.get()); // the stream is this call's own
        if (entry == nullptr) {
            return errno == 0 ? 0 : -1;
        }
        if (const int result = callback(entry->d_name, argument); result != 0) {
            return result;
        }
    }
}
