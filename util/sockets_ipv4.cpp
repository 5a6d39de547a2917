// SPDX-License-Identifier: Apache-2.0
// Sockets over IPv4: every failure is -1.
#include "util/socket_setup.h"

#include <switchcfg/socket.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

namespace {

using switchcfg::ConnectCodes;
using switchcfg::ListenCodes;

constexpr ListenCodes listen_codes{-1, -1, -1, -1};
constexpr ConnectCodes connect_codes{-1, -1};

int listen_on(std::uint32_t host_order_address, std::uint32_t port) noexcept
{
    const sockaddr_in endpoint = switchcfg::ipv4_endpoint(htonl(host_order_address), port);
    return switchcfg::listening_socket(0, reinterpret_cast<const sockaddr *>(&endpoint), sizeof endpoint, listen_codes);
}

sockaddr_in endpoint_of(const std::uint32_t *address, std::uint32_t port) noexcept
{
    std::uint32_t word;
    std::memcpy(&word, address, sizeof word); // callers hand in pointers into packed records
    return switchcfg::ipv4_endpoint(word, port);
}

// Whole seconds and microseconds, both truncated. What no clock can wait for is cut to 68 years.
timeval limit_of(double seconds) noexcept
{
    constexpr double longest = INT32_MAX;
    if (!(seconds < longest)) {
        return {INT32_MAX, 0};
    }
    if (seconds < -longest) {
        return {-1, 0};
    }
    const auto whole = static_cast<std::int32_t>(seconds);
    return {whole, static_cast<suseconds_t>((seconds - whole) * 1000000)};
}

} // namespace

int net_tcp_socket() noexcept
{
    return ::socket(AF_INET, SOCK_STREAM, 0);
}

int net_udp_socket() noexcept
{
    return ::socket(AF_INET, SOCK_DGRAM, 0);
}

int socket_is_create(std::uint32_t port) noexcept
{
    return listen_on(INADDR_ANY, port);
}

int socket_is_create_local(std::uint32_t port) noexcept
{
    return listen_on(INADDR_LOOPBACK, port);
}

int socket_is_connect(const std::uint32_t *address, std::uint32_t port) noexcept
{
    if (address == nullptr) {
        errno = EINVAL;
        return -1;
    }
    const sockaddr_in endpoint = endpoint_of(address, port);
    return switchcfg::connected_socket(
        SOCK_STREAM, 0, reinterpret_cast<const sockaddr *>(&endpoint), sizeof endpoint, connect_codes);
}

int socket_is_connect_timeout(const std::uint32_t *address, std::uint32_t port, double seconds) noexcept
{
    if (address == nullptr) {
        errno = EINVAL;
        return -1;
    }
    const sockaddr_in endpoint = endpoint_of(address, port);
    return switchcfg::connected_socket_within(
        limit_of(seconds), 0, reinterpret_cast<const sockaddr *>(&endpoint), sizeof endpoint, connect_codes);
}
