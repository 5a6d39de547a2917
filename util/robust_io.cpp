// SPDX-License-Identifier: Apache-2.0
// Whole-buffer input and output. Every loop here has its own rule for interruptions, end of file and zero lengths,
// which the header states; they are written out one by one so that each rule can be read in one place.
#include <switchcfg/robust_io.h>

#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <limits>
#include <sys/select.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

constexpr int line_size = 100;

bool is_blank(char c) noexcept
{
    return c == ' ' || c == '\t';
}

bool interrupted() noexcept
{
    return errno == EINTR;
}

const char *behind(const void *buffer, ssize_t count) noexcept
{
    return static_cast<const char *>(buffer) + count;
}

char *behind(void *buffer, ssize_t count) noexcept
{
    return static_cast<char *>(buffer) + count;
}

// A descriptor number outside the set would write behind it.
bool fits_set(int fd) noexcept
{
    if (fd >= 0 && fd < FD_SETSIZE) {
        return true;
    }
    errno = fd < 0 ? EBADF : EINVAL;
    return false;
}

timeval whole_seconds(std::uint32_t seconds) noexcept
{
    using Seconds = decltype(timeval::tv_sec);
    if constexpr (sizeof(Seconds) <= sizeof seconds) {
        constexpr std::uint32_t longest = std::numeric_limits<Seconds>::max();
        seconds = seconds < longest ? seconds : longest;
    }
    return {static_cast<Seconds>(seconds), 0};
}

timeval split_seconds(double seconds) noexcept
{
    // Beyond this a conversion is not defined; a value that is no number fails like a negative one.
    constexpr double longest = std::numeric_limits<std::int32_t>::max();
    if (!(seconds > -longest)) {
        seconds = -longest;
    } else if (seconds > longest) {
        seconds = longest;
    }
    const auto whole = static_cast<std::int32_t>(seconds);
    return {whole, static_cast<suseconds_t>((seconds - whole) * 1000000)};
}

int wait_for(int fd, fd_set *readable, fd_set *writable, timeval *left) noexcept
{
    fd_set *const set = readable != nullptr ? readable : writable;
    FD_ZERO(set);
    FD_SET(fd, set);
    return ::select(fd + 1, readable, writable, nullptr, left);
}

} // namespace

int vx_write(int fd, const void *buffer, std::uint32_t length) noexcept
{
    for (;;) {
        const ssize_t written = ::write(fd, buffer, length);
        if (written < 1) {
            return -1;
        }
        buffer = behind(buffer, written);
        length -= static_cast<std::uint32_t>(written);
        if (length == 0) {
            return 0;
        }
    }
}

int vx_write_nointr(int fd, const void *buffer, std::uint32_t length) noexcept
{
    do {
        const ssize_t written = ::write(fd, buffer, length);
        if (written >= 0) {
            buffer = behind(buffer, written);
            length -= static_cast<std::uint32_t>(written);
        } else if (!interrupted()) {
            return -1;
        }
    } while (length != 0);
    return 0;
}

int vx_read(int fd, void *buffer, std::uint32_t length) noexcept
{
    for (;;) {
        const ssize_t count = ::read(fd, buffer, length);
        if (count < 1) {
            return -1;
        }
        buffer = behind(buffer, count);
        length -= static_cast<std::uint32_t>(count);
        if (length == 0) {
            return 0;
        }
    }
}

int vx_read_nointr(int fd, void *buffer, std::uint32_t length) noexcept
{
    return vx_read_nointr_read_err(fd, buffer, length, nullptr);
}

int vx_read_nointr_read_err(int fd, void *buffer, std::uint32_t length, int *error) noexcept
{
    int count = 0;
    do {
        count = static_cast<int>(::read(fd, buffer, length));
        if (count >= 1) {
            buffer = behind(buffer, count);
            length -= static_cast<std::uint32_t>(count);
        } else if (errno != EINTR && errno != EAGAIN) { // at end of file too, as the header warns
            if (error != nullptr) {
                *error = count;
            }
            return -1;
        }
    } while (length != 0);
    return count;
}

int vx_read_timeout(int fd, void *buffer, std::uint32_t length, std::uint32_t seconds) noexcept
{
    timeval left = whole_seconds(seconds); // each wait takes its time from here
    while (length != 0) {
        if (!fits_set(fd)) {
            return -1;
        }
        fd_set readable;
        const int ready = wait_for(fd, &readable, nullptr, &left);
        if (ready < 0 && interrupted()) {
            continue;
        }
        if (ready < 1) {
            return -1;
        }
        const ssize_t count = ::read(fd, buffer, length);
        if (count < 1) {
            return -1;
        }
        buffer = behind(buffer, count);
        length -= static_cast<std::uint32_t>(count);
    }
    return 0;
}

int vx_fwrite(const void *buffer, std::uint32_t length, FILE *stream) noexcept
{
    for (;;) {
        const std::size_t written = std::fwrite(buffer, 1, length, stream);
        if (written < 1) {
            return -1;
        }
        buffer = behind(buffer, static_cast<ssize_t>(written));
        length -= static_cast<std::uint32_t>(written);
        if (length == 0) {
            return 0;
        }
    }
}

int vx_fread(void *buffer, std::uint32_t length, FILE *stream) noexcept
{
    for (;;) {
        const std::size_t count = std::fread(buffer, 1, length, stream);
        if (count < 1) {
            return std::feof(stream) != 0 ? 0 : -1;
        }
        buffer = behind(buffer, static_cast<ssize_t>(count));
        length -= static_cast<std::uint32_t>(count);
        if (length == 0) {
            return 0;
        }
    }
}

char *read_cfile_line(FILE *stream, char *line) noexcept
{
    if (std::fgets(line, line_size, stream) == nullptr) {
        return nullptr;
    }
    char *first = line;
    while (is_blank(*first)) {
        ++first;
    }
    if (*first == '\0' || *first == '#') {
        *first = '\0';
        return first;
    }
    char *end = std::strchr(line, '\n');
    if (end == nullptr) {
        return first;
    }
    while (end > line && !is_blank(end[-1])) {
        --end;
    }
    *end = '\0';
    return first;
}

int fds_have_data(double seconds, int count, ...) noexcept
{
    if (count == 0) {
        return 0;
    }
    if (count < 0) {
        errno = EINVAL;
        return -1;
    }
    fd_set readable;
    FD_ZERO(&readable);
    bool all_fit = true;
    va_list descriptors;
    va_start(descriptors, count);
    for (int i = 0; i < count && all_fit; ++i) {
        const int fd = va_arg(descriptors, int);
        all_fit = fits_set(fd);
        if (all_fit) {
            FD_SET(fd, &readable);
        }
    }
    va_end(descriptors);
    if (!all_fit) {
        return -1;
    }
    timeval left = split_seconds(seconds);
    return ::select(FD_SETSIZE, &readable, nullptr, nullptr, &left);
}

int fd_has_data(double seconds, int fd) noexcept
{
    return fds_have_data(seconds, 1, fd);
}

int vx_connect_timeout(int fd, const sockaddr *address, socklen_t length, std::uint32_t seconds) noexcept
{
    if (fcntl_set(fd, O_NONBLOCK, 0) != 0) {
        return -1;
    }
    if (::connect(fd, address, length) != 0) {
        if (errno != EINPROGRESS || !fits_set(fd)) {
            return -1;
        }
        fd_set writable;
        timeval left = whole_seconds(seconds);
        if (wait_for(fd, nullptr, &writable, &left) < 1) {
            return -1;
        }
        std::int32_t pending = 0;
        socklen_t pending_size = sizeof pending;
        if (::getsockopt(fd, SOL_SOCKET, SO_ERROR, &pending, &pending_size) != 0 || pending != 0) {
            return -1;
        }
    }
    return fcntl_set(fd, 0, O_NONBLOCK);
}

int fcntl_set(int fd, int set, int clear) noexcept
{
    const int flags = ::fcntl(fd, F_GETFL);
    if (flags < 0) {
        return -1;
    }
    return ::fcntl(fd, F_SETFL, (flags & ~clear) | set) < 0 ? -1 : 0;
}
