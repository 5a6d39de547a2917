// SPDX-License-Identifier: Apache-2.0
#include "util/send_rest.h"

#include "util/monotonic.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <sys/socket.h>

namespace switchcfg {

bool send_rest(int fd, const char *bytes, std::size_t length, std::uint32_t seconds) noexcept
{
    const std::int64_t deadline = now_ms() + static_cast<std::int64_t>(seconds) * 1000;
    while (length != 0) {
        const std::int64_t left = std::clamp<std::int64_t>(deadline - now_ms(), 0, INT32_MAX);
        pollfd wait{fd, POLLOUT, 0};
        const int ready = ::poll(&wait, 1, static_cast<int>(left));
        if (ready < 0 && errno == EINTR) {
            continue;
        }
        if (ready <= 0) {
            return false;
        }
        const ssize_t sent = ::send(fd, bytes, length, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent < 0 && errno != EAGAIN) {
            return false;
        }
        if (sent > 0) {
            bytes += sent;
            length -= static_cast<std::size_t>(sent);
        }
    }
    return true;
}

} // namespace switchcfg
