// SPDX-License-Identifier: Apache-2.0
// Sending log messages to the logging daemon.
#include "util/owned.h"
#include "util/socket_setup.h"

#include <switchcfg/log.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/socket.h>

static_assert(sizeof(log_message_header) == 118);
static_assert(offsetof(log_message_header, category) == 0);
static_assert(offsetof(log_message_header, level) == 64);
static_assert(offsetof(log_message_header, facility) == 65);
static_assert(offsetof(log_message_header, text_length) == 66);
static_assert(offsetof(log_message_header, reserved) == 68);
static_assert(offsetof(log_message_header, reserved_flag) == 115);
static_assert(offsetof(log_message_header, reserved_word) == 116);

namespace {

using switchcfg::Descriptor;
using switchcfg::Malloced;

constexpr int longest_connect_s = 10;

// A daemon that has stopped taking connections must not stop the switch with it: when its backlog is full, the wait is
// bounded. The usual message pays no extra system call for that.
Descriptor connect_to_daemon() noexcept
{
    const switchcfg::UnixEndpoint endpoint{LOG_SOCKET_PATH};
    Descriptor fd{::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)};
    if (!fd || ::connect(fd.get(), endpoint.get(), endpoint.size) == 0) {
        return fd;
    }
    if (errno == EAGAIN) {
        const timeval limit{longest_connect_s, 0};
        if (::fcntl(fd.get(), F_SETFL, 0) == 0 &&
            ::setsockopt(fd.get(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit) == 0 &&
            ::connect(fd.get(), endpoint.get(), endpoint.size) == 0) {
            return fd;
        }
    }
    return Descriptor{};
}

bool hand_over(int fd, const void *bytes, std::size_t length) noexcept
{
    return ::send(fd, bytes, length, MSG_DONTWAIT | MSG_NOSIGNAL) > 0;
}

void leave_fallback_line(int why, const char *text) noexcept
{
    char reason[500];
    char *line = nullptr;
    if (::asprintf(&line, "[Error %s] %s", ::strerror_r(why, reason, sizeof reason), text) < 0) {
        return;
    }
    const Malloced<char> owned{line};
    (void)log_log_to_file(line);
}

int send_message(const char *category, int facility, int level, const char *format, va_list arguments) noexcept
{
    if (category == nullptr) {
        return LOGGERS_ERR_NULL_POINTER;
    }
    const Descriptor fd = connect_to_daemon();
    if (!fd) {
        return LOGGERS_ERR_SERVER_CONNECT;
    }
    char *formatted = nullptr;
    const int length = format == nullptr ? -1 : ::vasprintf(&formatted, format, arguments);
    if (length < 0 || formatted == nullptr) {
        return LOGGERS_ERR_GENERIC;
    }
    const Malloced<char> text{formatted};
    log_message_header header{};
    // The length wraps at 16 bits on both sides of the wire; the daemon reads as many bytes as the header says.
    const int built = log_build_message_header(category, facility, level, static_cast<std::uint16_t>(length), &header);
    if (built != LOGGERS_RET_OK) {
        return built;
    }
    if (!hand_over(fd.get(), &header, sizeof header) || !hand_over(fd.get(), text.get(), header.text_length)) {
        leave_fallback_line(errno, text.get());
        return LOGGERS_ERR_SERVER_SEND;
    }
    return LOGGERS_RET_OK;
}

} // namespace

int log_send_fac(int facility, int level, const char *format, ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    const int result = send_message(LOG_NO_CATEGORY, facility, level, format, arguments);
    va_end(arguments);
    return result;
}

int vlog_send_fac(int facility, int level, const char *format, va_list arguments) noexcept
{
    return send_message(LOG_NO_CATEGORY, facility, level, format, arguments);
}

int log_send_cat(const char *category, int level, const char *format, ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    const int result = send_message(category, LOG_NO_FACILITY, level, format, arguments);
    va_end(arguments);
    return result;
}

int vlog_send_cat(const char *category, int level, const char *format, va_list arguments) noexcept
{
    return send_message(category, LOG_NO_FACILITY, level, format, arguments);
}

int log_build_message_header(
    const char *name, int facility, int level, std::uint16_t text_length, log_message_header *header) noexcept
{
    if (name == nullptr || name[0] == '\0' || header == nullptr) {
        return LOGGERS_ERR_INVALID_PARAM;
    }
    const std::size_t length = ::strnlen(name, sizeof header->category - 1);
    std::memcpy(header->category, name, length);
    std::memset(header->category + length, 0, sizeof header->category - length);
    header->level = static_cast<std::uint8_t>(level);
    header->facility = static_cast<std::uint8_t>(facility);
    header->text_length = static_cast<std::uint16_t>(text_length + 1);
    header->reserved_flag = 0;
    header->reserved_word = 0;
    return LOGGERS_RET_OK;
}
