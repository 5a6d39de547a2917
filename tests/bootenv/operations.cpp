// SPDX-License-Identifier: Apache-2.0
// Stands in for open() of both offset sizes, so the one must not be the other's name.
#undef _FILE_OFFSET_BITS
#include "bootenv/operations.h"

#include <cstdarg>
#include <dlfcn.h>
#include <fcntl.h>
#include <map>
#include <mtd/mtd-user.h>
#include <optional>
#include <string_view>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace switchcfg::testing {
namespace {

struct Watch {
    std::vector<Operation> seen;
    std::map<int, std::string> descriptors;
    std::optional<Cut> cut;
    std::function<void(const Operation &)> then;
};
std::optional<Watch> watch;

bool is_watched(std::string_view path)
{
    return path == "/dev/flash_env" || path.starts_with("/mnt/flash/");
}

bool is_watched(int fd)
{
    return watch && watch->descriptors.contains(fd);
}

// Passes the result of a call on.
template<typename Result>
Result note(Result result, const std::string &name, std::size_t bytes = 0)
{
    watch->seen.push_back({name, bytes});
    if (watch->cut && watch->cut->after + 1 == watch->seen.size()) {
        ::_exit(cut_status);
    }
    if (watch->then) {
        watch->then(watch->seen.back());
    }
    return result;
}

template<typename Result>
Result note(Result result, const char *what, int fd, std::size_t bytes = 0)
{
    return is_watched(fd) ? note(result, what + (' ' + watch->descriptors[fd]), bytes) : result;
}

template<typename Function>
Function *real(const char *name)
{
    return reinterpret_cast<Function *>(::dlsym(RTLD_NEXT, name));
}

int watched_open(const char *name, const char *path, int flags, mode_t mode)
{
    const int fd = real<int(const char *, int, ...)>(name)(path, flags, mode);
    if (watch && fd >= 0 && is_watched(path)) {
        watch->descriptors[fd] = path;
        note(fd, "open " + std::string{path});
    }
    return fd;
}

} // namespace

void watch_operations(std::function<void(const Operation &)> then)
{
    watch.emplace().then = std::move(then);
}

void watch_operations(Cut cut)
{
    watch.emplace().cut = cut;
}

std::vector<Operation> stop_watching()
{
    std::vector<Operation> seen = std::move(watch->seen);
    watch.reset();
    return seen;
}

} // namespace switchcfg::testing

using namespace switchcfg::testing;

// NOLINTBEGIN(cert-dcl50-cpp, readability-inconsistent-declaration-parameter-name): they have the forms of the
// functions they stand for The program is built with hidden names; these have to be found in front of libc's.
#pragma GCC visibility push(default)
extern "C" {

int open(const char *path, int flags, ...)
{
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return watched_open("open", path, flags, mode);
}

int open64(const char *path, int flags, ...)
{
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return watched_open("open64", path, flags, mode);
}

int ioctl(int fd, unsigned long request, ...) noexcept
{
    va_list rest;
    va_start(rest, request);
    void *const argument = va_arg(rest, void *);
    va_end(rest);
    return note(real<int(int, unsigned long, ...)>("ioctl")(fd, request, argument),
        request == MEMERASE ? "erase a block of" : "geometry of", fd);
}

ssize_t write(int fd, const void *buffer, size_t length)
{
    if (!is_watched(fd)) {
        return real<ssize_t(int, const void *, size_t)>("write")(fd, buffer, length);
    }
    const bool is_last = watch->cut && watch->cut->after == watch->seen.size();
    const size_t now = is_last && watch->cut->bytes < length ? watch->cut->bytes : length;
    const ssize_t result = now == 0 ? 0 : real<ssize_t(int, const void *, size_t)>("write")(fd, buffer, now);
    return note(result, "write", fd, length);
}

ssize_t read(int fd, void *buffer, size_t length)
{
    return note(real<ssize_t(int, void *, size_t)>("read")(fd, buffer, length), "read", fd);
}

int fsync(int fd)
{
    return note(real<int(int)>("fsync")(fd), "sync", fd);
}

int close(int fd)
{
    const int result = real<int(int)>("close")(fd);
    if (is_watched(fd)) {
        note(result, "close " + watch->descriptors.extract(fd).mapped());
    }
    return result;
}

int rename(const char *from, const char *to) noexcept
{
    const int result = real<int(const char *, const char *)>("rename")(from, to);
    return watch && is_watched(to) ? note(result, "rename to " + std::string{to}) : result;
}

int mkdir(const char *path, mode_t mode) noexcept
{
    const int result = real<int(const char *, mode_t)>("mkdir")(path, mode);
    return watch && is_watched(path) ? note(result, "make " + std::string{path}) : result;
}
}
#pragma GCC visibility pop
// NOLINTEND(cert-dcl50-cpp, readability-inconsistent-declaration-parameter-name)
