// SPDX-License-Identifier: Apache-2.0
#include "features/routing_connection.h"

#include "util/monotonic.h"
#include "util/owned.h"
#include "util/pause.h"
#include "util/send_rest.h"
#include "util/socket_setup.h"

#include <switchcfg/robust_io.h>
#include <switchcfg/routing.h>

#include <cerrno>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace switchcfg {
namespace {

constexpr int passes = 5;
constexpr int connects_per_pass = 10;
constexpr std::uint32_t connect_timeout_s = 1;
constexpr int between_connects_ms = 1000;
// A daemon that takes nothing of a payload any more; the six attempts together stay below the wait for a reply.
constexpr std::uint32_t write_timeout_s = 60;
// A daemon that sends faster than we throw away.
constexpr int drain_limit_ms = 2000;

int connect_once() noexcept
{
    Descriptor socket{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    const sockaddr_in endpoint = ipv4_endpoint(htonl(INADDR_LOOPBACK), DC_PORT);
    if (!socket || vx_connect_timeout(socket.get(), reinterpret_cast<const sockaddr *>(&endpoint), sizeof endpoint,
                       connect_timeout_s) != 0) {
        return -1;
    }
    const int on = 1;
    (void)::setsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    return socket.release();
}

int connect_pass() noexcept
{
    for (int attempt = 1;; ++attempt) {
        const int fd = connect_once();
        if (fd >= 0 || attempt == connects_per_pass) {
            return fd;
        }
        pause_ms(between_connects_ms);
    }
}

} // namespace

bool RoutingConnection::open(pid_t process) noexcept
{
    for (int pass = 1;; ++pass) {
        fd_ = connect_pass();
        if (fd_ >= 0 || pass == passes) {
            process_ = process;
            return fd_ >= 0;
        }
        pause_ms(between_connects_ms);
    }
}

void RoutingConnection::close() noexcept
{
    if (is_open()) {
        const KeepErrno keep;
        ::close(fd_);
        fd_ = -1;
    }
}

void RoutingConnection::drop_inherited(pid_t process) noexcept
{
    if (process_ != process) {
        close();
    }
}

void RoutingConnection::drain() const noexcept
{
    std::uint8_t scrap[10];
    std::int64_t end = 0;
    for (;;) {
        errno = 0;
        if (vx_read_timeout(fd_, scrap, sizeof scrap, 0) != 0) {
            return;
        }
        const std::int64_t now = now_ms();
        end = end == 0 ? now + drain_limit_ms : end;
        if (now > end) {
            errno = ETIMEDOUT;
            return;
        }
    }
}

// As vx_write_nointr() writes, but a peer that is gone must give an error and not the signal that ends the process, and
// one that takes a byte now and then must not keep us.
bool RoutingConnection::write(std::span<const std::uint8_t> bytes) const noexcept
{
    if (bytes.empty()) {
        return true;
    }
    const ssize_t sent = ::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent == static_cast<ssize_t>(bytes.size())) {
        return true;
    }
    if (sent < 0 && errno != EAGAIN && errno != EINTR) {
        return false;
    }
    const auto rest = bytes.subspan(sent > 0 ? static_cast<std::size_t>(sent) : 0);
    return send_rest(fd_, reinterpret_cast<const char *>(rest.data()), rest.size(), write_timeout_s);
}

bool RoutingConnection::read(std::span<std::uint8_t> bytes) const noexcept
{
    return vx_read_timeout(fd_, bytes.data(), static_cast<std::uint32_t>(bytes.size()), DC_REPLY_TIMEOUT_S) == 0;
}

} // namespace switchcfg
