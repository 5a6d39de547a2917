// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/mapped_file.h>

#include "util/owned.h"

#include <cerrno>
#include <fcntl.h>
#include <switchcfg/files.h>
#include <switchcfg/robust_io.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace {

using switchcfg::Descriptor;

// Extends by one byte at the end: the part between stays a hole, so an unused region takes no space.
int make_length(const char *path, size_t len) noexcept
{
    if (path == nullptr) {
        errno = EFAULT;
        return -1;
    }
    const int64_t size = file_size(path);
    if (size >= 0 && static_cast<uint64_t>(size) >= len) {
        return 0;
    }
    const Descriptor file{::open(path, O_RDWR | O_CREAT, 0777)};
    if (!file) {
        return -1;
    }
    if (::lseek(file.get(), static_cast<off_t>(len) - 1, SEEK_SET) < 0) {
        return -1;
    }
    const char zero = 0;
    return vx_write(file.get(), &zero, 1);
}

void *map(const char *path, size_t len, int open_mode, int protection) noexcept
{
    const Descriptor file{::open(path, open_mode)};
    if (!file) {
        return nullptr;
    }
    void *const mapping = ::mmap(nullptr, len, protection, MAP_SHARED, file.get(), 0);
    return mapping == MAP_FAILED ? nullptr : mapping;
}

} // namespace

void *file_map_create(const char *path, size_t len) noexcept
{
    if (make_length(path, len) != 0) {
        return nullptr;
    }
    return map(path, len, O_RDWR, PROT_READ | PROT_WRITE);
}

void *file_map_read(const char *path) noexcept
{
    const int64_t size = file_size(path);
    return size < 0 ? nullptr : map(path, static_cast<size_t>(size), O_RDONLY, PROT_READ);
}

void *file_map_write(const char *path) noexcept
{
    const int64_t size = file_size(path);
    return size < 0 ? nullptr : map(path, static_cast<size_t>(size), O_RDWR, PROT_READ | PROT_WRITE);
}

int file_unmap(void *addr, size_t len) noexcept
{
    return ::munmap(addr, len);
}

int file_sync(void *addr, size_t len) noexcept
{
    return ::msync(addr, len, MS_SYNC);
}
