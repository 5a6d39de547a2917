// SPDX-License-Identifier: Apache-2.0
// Every connection leads to a local socket that holds what the peer says and is at its end behind it. Include in one
// source of a program that is linked with --wrap=connect.
#ifndef SWITCHCFG_FUZZ_SCRIPTED_PEER_H
#define SWITCHCFG_FUZZ_SCRIPTED_PEER_H

#include "fuzz/fuzz_input.h"

#include <algorithm>
#include <array>
#include <sys/socket.h>
#include <unistd.h>

namespace switchcfg::fuzz {

inline std::string peer_says;

// Nothing has been left open by what ran before.
inline void require_all_closed()
{
    const int lowest = ::dup(0);
    require(lowest >= 0 && lowest < 16);
    ::close(lowest);
}

} // namespace switchcfg::fuzz

extern "C" int __wrap_connect(int fd, const sockaddr *address, socklen_t length);
extern "C" int __wrap_connect(int fd, const sockaddr * /*address*/, socklen_t /*length*/)
{
    using namespace switchcfg::fuzz;
    std::array<int, 2> ends{};
    constexpr std::size_t fits = 64U << 10U; // without anybody reading
    const std::size_t size = std::min(peer_says.size(), fits);
    require(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) == 0);
    require(::send(ends[1], peer_says.data(), size, MSG_DONTWAIT) == static_cast<ssize_t>(size));
    require(::shutdown(ends[1], SHUT_WR) == 0 && ::dup2(ends[0], fd) == fd);
    ::close(ends[0]);
    // The far end stays open to take the request, until the next connection.
    static int far_end = -1;
    if (far_end >= 0) {
        ::close(far_end);
    }
    far_end = ends[1];
    return 0;
}

#endif
