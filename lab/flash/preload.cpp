// SPDX-License-Identifier: Apache-2.0
// The flash device where FUSE cannot be used: /dev/flash_env is the image file itself, and this library, preloaded into
// every program of the lab, gives descriptors of that file the manners of the device. The kernel keeps positions, dup,
// fork and exec right, since they are real descriptors. Calls that the C library makes inside itself (stdio) pass by.
#include "lab/flash/files.h"
#include "lab/flash/ioctl.h"
#include "util/owned.h"

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#define INTERPOSED extern "C" __attribute__((visibility("default")))
// The next definition of the name that this library stands in front of.
#define REAL(name) real<decltype(&::name)>(#name)

// What programs built with _FORTIFY_SOURCE call; the headers do not always declare them.
extern "C" {
int __open_2(const char *path, int flags);
int __open64_2(const char *path, int flags);
int __openat_2(int folder, const char *path, int flags);
int __openat64_2(int folder, const char *path, int flags);
ssize_t __read_chk(int fd, void *buffer, size_t count, size_t size);
ssize_t __pread_chk(int fd, void *buffer, size_t count, off_t position, size_t size);
ssize_t __pread64_chk(int fd, void *buffer, size_t count, off64_t position, size_t size);
}

namespace {

using switchlab::NorFlash;

std::optional<NorFlash> flash;
struct stat64 image;
pthread_once_t attached = PTHREAD_ONCE_INIT;

template<typename Function>
Function real(const char *name) noexcept
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

// The flash of this lab, or null.
NorFlash *the_flash() noexcept
{
    ::pthread_once(&attached, [] {
        const switchcfg::KeepErrno keep;
        if (::stat64(switchlab::flash_image_path, &image) == 0) {
            flash = switchlab::attach_flash();
        }
    });
    return flash ? &*flash : nullptr;
}

// The flash if that is what the descriptor refers to, or null.
NorFlash *flash_behind(int fd) noexcept
{
    const switchcfg::KeepErrno keep;
    struct stat64 about {};
    NorFlash *const device = the_flash();
    const bool ours =
        device != nullptr && ::fstat64(fd, &about) == 0 && about.st_ino == image.st_ino && about.st_dev == image.st_dev;
    return ours ? device : nullptr;
}

template<typename Result>
Result give(Result result) noexcept
{
    if (result < 0) {
        errno = static_cast<int>(-result);
        return -1;
    }
    return result;
}

int access_mode(int fd) noexcept
{
    return ::fcntl(fd, F_GETFL) & O_ACCMODE;
}

ssize_t write_at(NorFlash &device, int fd, const void *bytes, std::size_t count, off64_t position) noexcept
{
    if (access_mode(fd) == O_RDONLY) {
        return give<ssize_t>(-EBADF);
    }
    if (position < 0) {
        return give<ssize_t>(-EINVAL);
    }
    return give(device.write(static_cast<std::uint64_t>(position), {static_cast<const std::uint8_t *>(bytes), count}));
}

ssize_t write_on(NorFlash &device, int fd, const void *bytes, std::size_t count) noexcept
{
    const off64_t position = ::lseek64(fd, 0, SEEK_CUR);
    const ssize_t put = write_at(device, fd, bytes, count, position);
    if (put > 0) {
        ::lseek64(fd, position + put, SEEK_SET);
    }
    return put;
}

// Reading is the kernel's business, as long as the power is on.
bool unreadable(int fd) noexcept
{
    const NorFlash *const device = flash_behind(fd);
    return device != nullptr && give(device->check_open()) < 0;
}

// False, with errno, when it is the device and has no power. A device is neither truncated nor appended to.
bool may_open(const char *path, int &flags) noexcept
{
    if (path == nullptr || std::strcmp(path, switchlab::flash_device_path) != 0) {
        return true;
    }
    flags &= ~(O_TRUNC | O_APPEND);
    const NorFlash *const device = the_flash();
    return device == nullptr || give(device->check_open()) == 0;
}

bool takes_mode(int flags) noexcept
{
    return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
}

} // namespace

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the C library's names are reserved to it.

#define INTERPOSE_OPEN(name)                                                                                           \
    INTERPOSED int name(const char *path, int flags, ...)                                                              \
    {                                                                                                                  \
        va_list rest;                                                                                                  \
        va_start(rest, flags);                                                                                         \
        const mode_t mode = takes_mode(flags) ? va_arg(rest, mode_t) : 0;                                              \
        va_end(rest);                                                                                                  \
        return may_open(path, flags) ? REAL(name)(path, flags, mode) : -1;                                             \
    }
#define INTERPOSE_OPENAT(name)                                                                                         \
    INTERPOSED int name(int folder, const char *path, int flags, ...)                                                  \
    {                                                                                                                  \
        va_list rest;                                                                                                  \
        va_start(rest, flags);                                                                                         \
        const mode_t mode = takes_mode(flags) ? va_arg(rest, mode_t) : 0;                                              \
        va_end(rest);                                                                                                  \
        return may_open(path, flags) ? REAL(name)(folder, path, flags, mode) : -1;                                     \
    }
#define INTERPOSE_OPEN_2(name)                                                                                         \
    INTERPOSED int name(const char *path, int flags)                                                                   \
    {                                                                                                                  \
        return may_open(path, flags) ? REAL(name)(path, flags) : -1;                                                   \
    }
#define INTERPOSE_OPENAT_2(name)                                                                                       \
    INTERPOSED int name(int folder, const char *path, int flags)                                                       \
    {                                                                                                                  \
        return may_open(path, flags) ? REAL(name)(folder, path, flags) : -1;                                           \
    }

INTERPOSE_OPEN(open)
INTERPOSE_OPEN(open64)
INTERPOSE_OPENAT(openat)
INTERPOSE_OPENAT(openat64)
INTERPOSE_OPEN_2(__open_2)
INTERPOSE_OPEN_2(__open64_2)
INTERPOSE_OPENAT_2(__openat_2)
INTERPOSE_OPENAT_2(__openat64_2)

INTERPOSED ssize_t read(int fd, void *buffer, size_t count)
{
    return unreadable(fd) ? -1 : REAL(read)(fd, buffer, count);
}

INTERPOSED ssize_t readv(int fd, const struct iovec *parts, int count)
{
    return unreadable(fd) ? -1 : REAL(readv)(fd, parts, count);
}

INTERPOSED ssize_t pread(int fd, void *buffer, size_t count, off_t position)
{
    return unreadable(fd) ? -1 : REAL(pread)(fd, buffer, count, position);
}

INTERPOSED ssize_t pread64(int fd, void *buffer, size_t count, off64_t position)
{
    return unreadable(fd) ? -1 : REAL(pread64)(fd, buffer, count, position);
}

INTERPOSED ssize_t __read_chk(int fd, void *buffer, size_t count, size_t size)
{
    return unreadable(fd) ? -1 : REAL(__read_chk)(fd, buffer, count, size);
}

INTERPOSED ssize_t __pread_chk(int fd, void *buffer, size_t count, off_t position, size_t size)
{
    return unreadable(fd) ? -1 : REAL(__pread_chk)(fd, buffer, count, position, size);
}

INTERPOSED ssize_t __pread64_chk(int fd, void *buffer, size_t count, off64_t position, size_t size)
{
    return unreadable(fd) ? -1 : REAL(__pread64_chk)(fd, buffer, count, position, size);
}

INTERPOSED ssize_t write(int fd, const void *bytes, size_t count)
{
    NorFlash *const device = flash_behind(fd);
    return device != nullptr ? write_on(*device, fd, bytes, count) : REAL(write)(fd, bytes, count);
}

INTERPOSED ssize_t writev(int fd, const struct iovec *parts, int count)
{
    NorFlash *const device = flash_behind(fd);
    if (device == nullptr) {
        return REAL(writev)(fd, parts, count);
    }
    ssize_t total = 0;
    for (int i = 0; i < count; ++i) {
        const ssize_t put = write_on(*device, fd, parts[i].iov_base, parts[i].iov_len);
        if (put < 0) {
            return total > 0 ? total : -1;
        }
        total += put;
    }
    return total;
}

INTERPOSED ssize_t pwrite(int fd, const void *bytes, size_t count, off_t position)
{
    NorFlash *const device = flash_behind(fd);
    return device != nullptr ? write_at(*device, fd, bytes, count, position) : REAL(pwrite)(fd, bytes, count, position);
}

INTERPOSED ssize_t pwrite64(int fd, const void *bytes, size_t count, off64_t position)
{
    NorFlash *const device = flash_behind(fd);
    return device != nullptr ? write_at(*device, fd, bytes, count, position)
                             : REAL(pwrite64)(fd, bytes, count, position);
}

// Copying inside the kernel would write past the device's manners; callers fall back to read and write.
INTERPOSED ssize_t copy_file_range(int in, off64_t *in_at, int out, off64_t *out_at, size_t count, unsigned flags)
{
    const bool device = flash_behind(in) != nullptr || flash_behind(out) != nullptr;
    return device ? give<ssize_t>(-EXDEV) : REAL(copy_file_range)(in, in_at, out, out_at, count, flags);
}

INTERPOSED ssize_t sendfile(int out, int in, off_t *position, size_t count)
{
    return flash_behind(out) != nullptr ? give<ssize_t>(-EINVAL) : REAL(sendfile)(out, in, position, count);
}

INTERPOSED int fsync(int fd)
{
    return flash_behind(fd) != nullptr ? give(-EINVAL) : REAL(fsync)(fd);
}

INTERPOSED int fdatasync(int fd)
{
    return flash_behind(fd) != nullptr ? give(-EINVAL) : REAL(fdatasync)(fd);
}

INTERPOSED int ftruncate(int fd, off_t length) noexcept
{
    return flash_behind(fd) != nullptr ? 0 : REAL(ftruncate)(fd, length);
}

INTERPOSED int ftruncate64(int fd, off64_t length) noexcept
{
    return flash_behind(fd) != nullptr ? 0 : REAL(ftruncate64)(fd, length);
}

INTERPOSED int ioctl(int fd, unsigned long request, ...) noexcept
{
    va_list rest;
    va_start(rest, request);
    void *const argument = va_arg(rest, void *);
    va_end(rest);
    NorFlash *const device = _IOC_TYPE(request) == 'M' ? flash_behind(fd) : nullptr;
    return device != nullptr ? give(switchlab::flash_ioctl(*device, request, argument, access_mode(fd) != O_RDONLY))
                             : REAL(ioctl)(fd, request, argument);
}

// NOLINTEND(readability-inconsistent-declaration-parameter-name)
