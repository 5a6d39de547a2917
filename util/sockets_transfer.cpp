// SPDX-License-Identifier: Apache-2.0
// Whole buffers through connected sockets, and time-outs on them.
#include <switchcfg/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

int socket_send(int fd, const void *buffer, std::int32_t length) noexcept
{
    const auto *bytes = static_cast<const char *>(buffer);
    std::int32_t piece = length;
    std::int32_t sent = 0;
    while (sent < length) {
        const ssize_t taken =
            ::send(fd, bytes + sent, static_cast<std::size_t>(std::min(length - sent, piece)), MSG_NOSIGNAL);
        if (taken >= 0) {
            sent += static_cast<std::int32_t>(taken);
        } else if (errno == EMSGSIZE && piece > 1) {
            piece /= 2;
        } else {
            return -1; // down to a single byte, halving would only repeat empty sends for ever
        }
    }
    return sent;
}

int socket_recv(int fd, void *buffer, std::int32_t length) noexcept
{
    auto *bytes = static_cast<char *>(buffer);
    std::int32_t received = 0;
    while (received < length) {
        const ssize_t got = ::recv(fd, bytes + received, static_cast<std::size_t>(length - received), 0);
        if (got < 0) {
            return -1;
        }
        if (got == 0) {
            ::close(fd); // callers leave a descriptor alone after 0
            return 0;
        }
        received += static_cast<std::int32_t>(got);
    }
    return received;
}

int socket_timeouts_set(int fd, int seconds) noexcept
{
    const timeval time{seconds, 0};
    const int sending = ::setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &time, sizeof time);
    const int receiving = ::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &time, sizeof time);
    return sending < 0 || receiving < 0 ? -1 : 0;
}
