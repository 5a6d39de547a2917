// SPDX-License-Identifier: Apache-2.0
// Unix-domain sockets, streams and datagrams.
#include "util/owned.h"
#include "util/socket_setup.h"

#include <switchcfg/socket.h>

#include <cerrno>
#include <unistd.h>

namespace {

constexpr int backlog = 5;

int create(const char *path, int type) noexcept
{
    if (path == nullptr) {
        errno = EINVAL;
        return -1;
    }
    const switchcfg::UnixEndpoint endpoint{path};
    (void)::unlink(endpoint.address.sun_path); // a stale socket file never blocks the bind
    switchcfg::Descriptor fd{::socket(AF_UNIX, type, 0)};
    if (!fd || ::bind(fd.get(), endpoint.get(), endpoint.size) < 0) {
        return -1;
    }
    if (type == SOCK_STREAM && ::listen(fd.get(), backlog) < 0) {
        return -1;
    }
    return fd.release();
}

int connect_to(const char *path, int type) noexcept
{
    if (path == nullptr) {
        errno = EINVAL;
        return -1;
    }
    const switchcfg::UnixEndpoint endpoint{path};
    return switchcfg::connected_socket(type, 0, endpoint.get(), endpoint.size, {-1, -1});
}

} // namespace

int socket_us_create(const char *path) noexcept
{
    return create(path, SOCK_STREAM);
}

int socket_ud_create(const char *path) noexcept
{
    return create(path, SOCK_DGRAM);
}

int socket_us_accept(int listener) noexcept
{
    return ::accept(listener, nullptr, nullptr);
}

int socket_us_connect(const char *path) noexcept
{
    return connect_to(path, SOCK_STREAM);
}

int socket_ud_connect(const char *path) noexcept
{
    return connect_to(path, SOCK_DGRAM);
}
