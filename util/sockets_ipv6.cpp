// SPDX-License-Identifier: Apache-2.0
// Sockets over IPv6: the failing step has its own code.
#include "util/socket_setup.h"

#include <switchcfg/socket.h>

#include <cerrno>
#include <cstdint>

namespace {

using switchcfg::ConnectCodes;
using switchcfg::ListenCodes;

constexpr ListenCodes listen_codes{SOCKET_IS6_ERR_SOCKET, -1, SOCKET_IS6_ERR_BIND, SOCKET_IS6_ERR_LISTEN};
constexpr ConnectCodes connect_codes{SOCKET_IS6_ERR_SOCKET, SOCKET_IS6_ERR_CONNECT};

// Only whole seconds: callers of the IPv6 form count on a fraction not being waited for.
timeval limit_of(double seconds) noexcept
{
    constexpr double longest = INT32_MAX;
    if (!(seconds < longest)) {
        return {INT32_MAX, 0};
    }
    return {seconds < -longest ? -1 : static_cast<std::int32_t>(seconds), 0};
}

} // namespace

int socket_is6_create(std::uint32_t port, const std::uint8_t address[16]) noexcept
{
    if (address == nullptr) {
        errno = EINVAL;
        return -1;
    }
    const sockaddr_in6 endpoint = switchcfg::ipv6_endpoint(address, port);
    return switchcfg::listening_socket(
        IPPROTO_TCP, reinterpret_cast<const sockaddr *>(&endpoint), sizeof endpoint, listen_codes);
}

int socket_is6_create_any(std::uint32_t port) noexcept
{
    return socket_is6_create(port, in6addr_any.s6_addr);
}

int socket_is6_create_local(std::uint32_t port) noexcept
{
    return socket_is6_create(port, in6addr_loopback.s6_addr);
}

int socket_is6_connect(const std::uint8_t address[16], std::uint32_t port) noexcept
{
    if (address == nullptr) {
        errno = EINVAL;
        return -1;
    }
    const sockaddr_in6 endpoint = switchcfg::ipv6_endpoint(address, port);
    return switchcfg::connected_socket(
        SOCK_STREAM, IPPROTO_TCP, reinterpret_cast<const sockaddr *>(&endpoint), sizeof endpoint, connect_codes);
}

int socket_is6_connect_timeout(const std::uint8_t address[16], std::uint32_t port, double seconds) noexcept
{
    if (address == nullptr) {
        errno = EINVAL;
        return -1;
    }
    const sockaddr_in6 endpoint = switchcfg::ipv6_endpoint(address, port);
    errno = 0; // the IPv6 form starts from a clean errno, the IPv4 form does not
    return switchcfg::connected_socket_within(
        limit_of(seconds), IPPROTO_TCP, reinterpret_cast<const sockaddr *>(&endpoint), sizeof endpoint, connect_codes);
}
