// SPDX-License-Identifier: Apache-2.0
// Small owning types for what the C interface hands around: descriptors, malloc'ed memory, streams and
// folders.
#ifndef SWITCHCFG_UTIL_OWNED_H
#define SWITCHCFG_UTIL_OWNED_H

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <memory>
#include <unistd.h>
#include <utility>

namespace switchcfg {

// Cleaning up must not hide why the work failed.
class KeepErrno {
  public:
    KeepErrno() noexcept : kept_(errno) {}
    ~KeepErrno() { errno = kept_; }
    KeepErrno(const KeepErrno &) = delete;
    KeepErrno &operator=(const KeepErrno &) = delete;

  private:
    int kept_;
};

class Descriptor {
  public:
    Descriptor() noexcept = default;
    explicit Descriptor(int fd) noexcept : fd_(fd) {}
    Descriptor(Descriptor &&other) noexcept : fd_(other.release()) {}
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        reset(other.release());
        return *this;
    }
    ~Descriptor() { reset(); }

    explicit operator bool() const noexcept { return fd_ >= 0; }
    int get() const noexcept { return fd_; }
    int release() noexcept { return std::exchange(fd_, -1); }
    void reset(int fd = -1) noexcept
    {
        if (fd_ >= 0) {
            const KeepErrno keep;
            ::close(fd_);
        }
        fd_ = fd;
    }

  private:
    int fd_ = -1;
};

struct Free {
    void operator()(void *memory) const noexcept { std::free(memory); }
};
template<typename T>
using Malloced = std::unique_ptr<T, Free>;

struct CloseStream {
    void operator()(std::FILE *stream) const noexcept
    {
        const KeepErrno keep;
        (void)std::fclose(stream);
    }
};
using Stream = std::unique_ptr<std::FILE, CloseStream>;

struct CloseFolder {
    void operator()(DIR *folder) const noexcept
    {
        const KeepErrno keep;
        (void)::closedir(folder);
    }
};
using Folder = std::unique_ptr<DIR, CloseFolder>;

} // namespace switchcfg

#endif
