// SPDX-License-Identifier: Apache-2.0
// The asking side of the request channel.
#include "util/owned.h"
#include "util/send_rest.h"
#include "util/socket_setup.h"

#include <switchcfg/request_channel.h>
#include <switchcfg/robust_io.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <unistd.h>

namespace {

// One write of the record. The usual record fits the socket's buffer and costs one call; what does not fit must not
// let a peer that never reads hold the caller for ever. On a socket that the caller made non-blocking, a short write
// stays short.
bool send_record(int fd, const void *record, std::size_t length, std::uint32_t seconds) noexcept
{
    const auto *bytes = static_cast<const char *>(record);
    const ssize_t sent = ::send(fd, bytes, length, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent == static_cast<ssize_t>(length)) {
        return true;
    }
    if (sent < 0 && errno != EAGAIN) {
        return false;
    }
    const int why = errno;
    const int flags = ::fcntl(fd, F_GETFL);
    if (flags >= 0 && (flags & O_NONBLOCK) != 0) {
        errno = why;
        return sent >= 0;
    }
    const auto done = static_cast<std::size_t>(std::max<ssize_t>(sent, 0));
    return switchcfg::send_rest(fd, bytes + done, length - done, seconds);
}

} // namespace

int daemon_client_req_connect(std::uint32_t port) noexcept
{
    const sockaddr_in endpoint = switchcfg::ipv4_endpoint(htonl(INADDR_LOOPBACK), port);
    return switchcfg::connected_socket(
        SOCK_STREAM, 0, reinterpret_cast<const sockaddr *>(&endpoint), sizeof endpoint, {-1, -1});
}

int daemon_client_req_connect_ipv6(std::uint32_t port, const std::uint8_t address[16], std::uint32_t scope_id) noexcept
{
    if (address == nullptr) {
        errno = EINVAL;
        return -1;
    }
    const sockaddr_in6 endpoint = switchcfg::ipv6_endpoint(address, port, scope_id);
    return switchcfg::connected_socket(
        SOCK_STREAM, IPPROTO_TCP, reinterpret_cast<const sockaddr *>(&endpoint), sizeof endpoint, {-1, -1});
}

int daemon_client_req_send(int fd, std::uint32_t seconds, void *buffer, std::uint32_t length) noexcept
{
    if (buffer == nullptr) {
        return -1; // the socket is left alone
    }
    if (send_record(fd, buffer, length, seconds) && vx_read_timeout(fd, buffer, length, seconds) == 0) {
        return 0;
    }
    const switchcfg::KeepErrno keep;
    ::close(fd);
    return -1;
}

int daemon_client_req(std::uint32_t port, std::uint32_t seconds, void *buffer, std::uint32_t length) noexcept
{
    const int fd = daemon_client_req_connect(port);
    if (fd < 0 || daemon_client_req_send(fd, seconds, buffer, length) < 0) {
        return -1; // the send closed the socket, if it had a buffer
    }
    ::close(fd);
    return 0;
}

int daemon_client_req_ipv6(std::uint32_t port, const std::uint8_t address[16], std::uint32_t scope_id,
    std::uint32_t seconds, void *buffer, std::uint32_t length) noexcept
{
    const int fd = daemon_client_req_connect_ipv6(port, address, scope_id);
    if (fd < 0 || daemon_client_req_send(fd, seconds, buffer, length) < 0) {
        return -1;
    }
    ::close(fd);
    return 0;
}
