// SPDX-License-Identifier: Apache-2.0
#include "util/socket_setup.h"
#include "util/owned.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>

namespace switchcfg {

namespace {

constexpr int backlog = 5;

// Whether the connection that is under way on `fd` came about within the limit.
bool connection_made(int fd, timeval limit) noexcept
{
    pollfd wait{fd, POLLIN | POLLOUT, 0};
    const timespec time{limit.tv_sec, static_cast<long>(limit.tv_usec) * 1000};
    // Only a wait that ran out is looked at. One that failed, by a signal for instance, leaves the decision to the
    // socket's own error, as callers of these helpers have always had it.
    if (::ppoll(&wait, 1, &time, nullptr) == 0) {
        return false;
    }
    int error = 0;
    socklen_t size = sizeof error;
    return ::getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0;
}

} // namespace

int listening_socket(int protocol, const sockaddr *endpoint, socklen_t size, const ListenCodes &codes) noexcept
{
    Descriptor fd{::socket(endpoint->sa_family, SOCK_STREAM, protocol)};
    if (!fd) {
        return codes.socket;
    }
    const int on = 1;
    if (::setsockopt(fd.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) < 0) {
        return codes.option;
    }
    if (::bind(fd.get(), endpoint, size) < 0) {
        return codes.bind;
    }
    if (::listen(fd.get(), backlog) < 0) {
        return codes.listen;
    }
    return fd.release();
}

int connected_socket(
    int type, int protocol, const sockaddr *endpoint, socklen_t size, const ConnectCodes &codes) noexcept
{
    Descriptor fd{::socket(endpoint->sa_family, type, protocol)};
    if (!fd) {
        return codes.socket;
    }
    if (::connect(fd.get(), endpoint, size) < 0) {
        return codes.connect;
    }
    return fd.release();
}

int connected_socket_within(
    timeval limit, int protocol, const sockaddr *endpoint, socklen_t size, const ConnectCodes &codes) noexcept
{
    Descriptor fd{::socket(endpoint->sa_family, SOCK_STREAM, protocol)};
    if (!fd) {
        return codes.socket;
    }
    const int flags = ::fcntl(fd.get(), F_GETFL);
    (void)::fcntl(fd.get(), F_SETFL, flags | O_NONBLOCK);
    if (::connect(fd.get(), endpoint, size) < 0) {
        if (errno != EINPROGRESS) {
            return codes.connect;
        }
        if (!connection_made(fd.get(), limit)) {
            return -1;
        }
    }
    (void)::fcntl(fd.get(), F_SETFL, flags);
    return fd.release();
}

} // namespace switchcfg
