// SPDX-License-Identifier: Apache-2.0
// What the socket helpers share: addresses as the kernel takes them, the way to a listening socket and the way to a
// connection. The helpers of a family differ in their codes, which come in as arguments.
#ifndef SWITCHCFG_UTIL_SOCKET_SETUP_H
#define SWITCHCFG_UTIL_SOCKET_SETUP_H

#include <cstdint>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

namespace switchcfg {

// `address` as it stands, `port` in host order.
inline sockaddr_in ipv4_endpoint(std::uint32_t address, std::uint32_t port) noexcept
{
    sockaddr_in endpoint{};
    endpoint.sin_family = AF_INET;
    endpoint.sin_port = htons(static_cast<std::uint16_t>(port));
    endpoint.sin_addr.s_addr = address;
    return endpoint;
}

inline sockaddr_in6 ipv6_endpoint(const void *address, std::uint32_t port, std::uint32_t scope_id = 0) noexcept
{
    sockaddr_in6 endpoint{};
    endpoint.sin6_family = AF_INET6;
    endpoint.sin6_port = htons(static_cast<std::uint16_t>(port));
    std::memcpy(&endpoint.sin6_addr, address, sizeof endpoint.sin6_addr);
    endpoint.sin6_scope_id = scope_id;
    return endpoint;
}

// A path longer than the field is cut. The kernel is told the length of the path, not of the field.
struct UnixEndpoint {
    explicit UnixEndpoint(const char *path) noexcept
    {
        const std::size_t length = ::strnlen(path, sizeof address.sun_path - 1);
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, path, length);
        size = static_cast<socklen_t>(sizeof address.sun_family + length);
    }
    const sockaddr *get() const noexcept { return reinterpret_cast<const sockaddr *>(&address); }

    sockaddr_un address{};
    socklen_t size = 0;
};

struct ListenCodes {
    int socket;
    int option;
    int bind;
    int listen;
};

// A TCP socket that listens, or the code of the step that failed.
int listening_socket(int protocol, const sockaddr *endpoint, socklen_t size, const ListenCodes &codes) noexcept;

struct ConnectCodes {
    int socket;
    int connect;
};

// A connected socket of the endpoint's family, or the code of the step that failed.
int connected_socket(
    int type, int protocol, const sockaddr *endpoint, socklen_t size, const ConnectCodes &codes) noexcept;

// The same within a time; a connection that fails later than at once gives -1.
int connected_socket_within(
    timeval limit, int protocol, const sockaddr *endpoint, socklen_t size, const ConnectCodes &codes) noexcept;

} // namespace switchcfg

#endif
