// SPDX-License-Identifier: Apache-2.0
#include "rpc/connection_guard.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <linux/tcp.h>
#include <netinet/in.h>
#include <string>
#include <sys/epoll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace switchcfg::rpc {
namespace {

// Bytes the peer has sent so far. Kernels before 4.1 and some emulators do not tell.
bool received_of(int fd, std::uint64_t &received) noexcept
{
    tcp_info info{};
    socklen_t length = sizeof info;
    constexpr std::size_t needed = offsetof(tcp_info, tcpi_bytes_received) + sizeof info.tcpi_bytes_received;
    if (::getsockopt(fd, IPPROTO_TCP, TCP_INFO, &info, &length) != 0 || length < needed) {
        return false;
    }
    received = info.tcpi_bytes_received;
    return true;
}

} // namespace

bool ConnectionGuard::Peer::of(int fd) noexcept
{
    length = sizeof address;
    return ::getpeername(fd, reinterpret_cast<sockaddr *>(&address), &length) == 0;
}

bool ConnectionGuard::Peer::operator==(const Peer &other) const noexcept
{
    return length == other.length && std::memcmp(&address, &other.address, length) == 0;
}

void Progress::count(Message &message) noexcept
{
    const int fd = ::zmq_msg_get(message.get(), ZMQ_SRCFD);
    if (fd >= 0 && fd < descriptors) {
        auto &place = counts_[static_cast<std::size_t>(fd)];
        // One writer at a time: no read-modify-write needed.
        place.store(place.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    }
}

ConnectionGuard::ConnectionGuard(
    const Progress &progress, std::uint64_t connection_limit, std::uint64_t total_limit) noexcept
    : progress_(progress), connection_limit_(connection_limit), total_limit_(total_limit)
{
    rlimit open_files{};
    if (::getrlimit(RLIMIT_NOFILE, &open_files) == 0 && open_files.rlim_cur != RLIM_INFINITY) {
        // The process needs descriptors for its own work too.
        most_ = static_cast<std::size_t>(std::clamp<rlim_t>(open_files.rlim_cur / 4, 1, most_connections));
    }
}

ConnectionGuard::~ConnectionGuard()
{
    if (epoll_ != -1) {
        ::close(epoll_);
    }
}

bool ConnectionGuard::watch(void *context, void *socket, const char *name) noexcept
{
    char address[64];
    (void)std::snprintf(address, sizeof address, "inproc://%s", name);
    epoll_ = ::epoll_create1(EPOLL_CLOEXEC);
    events_.reset(::zmq_socket(context, ZMQ_PAIR));
    return epoll_ != -1 && events_ && set_option(events_.get(), ZMQ_LINGER, 0) &&
           ::zmq_socket_monitor(socket, address, ZMQ_EVENT_ACCEPTED | ZMQ_EVENT_DISCONNECTED | ZMQ_EVENT_CLOSED) == 0 &&
           ::zmq_connect(events_.get(), address) == 0;
}

void ConnectionGuard::on_events() noexcept
{
    Message event;
    Message address;
    while (::zmq_msg_recv(event.get(), events_.get(), ZMQ_DONTWAIT) != -1) {
        while (::zmq_msg_recv(address.get(), events_.get(), 0) == -1 && errno == EINTR) {
        }
        std::uint16_t what = 0;
        std::int32_t fd = -1;
        if (event.size() != sizeof what + sizeof fd) {
            continue;
        }
        std::memcpy(&what, event.data(), sizeof what);
        std::memcpy(&fd, event.data() + sizeof what, sizeof fd);
        if (const auto known = connections_.find(fd); known != connections_.end()) {
            active_ -= known->second.active ? 1U : 0U;
            connections_.erase(known);
        }
        if (what != ZMQ_EVENT_ACCEPTED) {
            continue;
        }
        try {
            if (fd < 0 || fd >= Progress::descriptors || connections_.size() >= most_) {
                ::shutdown(fd, SHUT_RDWR);
            } else {
                add(fd);
            }
        } catch (...) {
            ::shutdown(fd, SHUT_RDWR); // a connection there is no memory to watch
        }
    }
}

void ConnectionGuard::add(int fd)
{
    Connection connection;
    if (!connection.peer.of(fd)) {
        return; // gone again already
    }
    connection.progress = progress_.of(fd);
    connections_.emplace(fd, connection);
    epoll_event wanted{};
    wanted.events = EPOLLIN | EPOLLONESHOT;
    wanted.data.fd = fd;
    if (::epoll_ctl(epoll_, EPOLL_CTL_ADD, fd, &wanted) != 0) {
        await_data(fd);
    }
}

void ConnectionGuard::await_data(int fd) const noexcept
{
    epoll_event wanted{};
    wanted.events = EPOLLIN | EPOLLONESHOT;
    wanted.data.fd = fd;
    (void)::epoll_ctl(epoll_, EPOLL_CTL_MOD, fd, &wanted);
}

void ConnectionGuard::on_wake() noexcept
{
    std::array<epoll_event, 32> ready{};
    const int count = ::epoll_wait(epoll_, ready.data(), static_cast<int>(ready.size()), 0);
    for (int i = 0; i < count; ++i) {
        const auto found = connections_.find(ready[static_cast<std::size_t>(i)].data.fd);
        if (found != connections_.end() && !found->second.active) {
            found->second.active = true;
            active_ += 1;
        }
    }
}

// True while there was something new from the connection.
bool ConnectionGuard::look(int fd, Connection &connection) noexcept
{
    std::uint64_t received = 0;
    if (!received_of(fd, received)) {
        return false;
    }
    const std::uint32_t progress = progress_.of(fd);
    const bool news = received != connection.received || progress != connection.progress;
    connection.received = received;
    if (progress != connection.progress) {
        connection.progress = progress;
        connection.at_progress = received;
    }
    return news;
}

// The descriptor is ZeroMQ's and may be another connection's by now.
void ConnectionGuard::shut(Connections::iterator which) noexcept
{
    Peer peer;
    if (peer.of(which->first) && peer == which->second.peer) {
        ::shutdown(which->first, SHUT_RDWR);
    }
    active_ -= which->second.active ? 1U : 0U;
    connections_.erase(which);
}

bool ConnectionGuard::tick() noexcept
{
    const std::uint64_t now = monotonic_ms();
    if (active_ == 0 || now < next_tick_) {
        return active_ != 0;
    }
    next_tick_ = now + static_cast<std::uint64_t>(tick_ms);
    std::uint64_t total = 0;
    for (auto at = connections_.begin(); at != connections_.end();) {
        const auto which = at++;
        auto &[fd, connection] = *which;
        if (connection.active && !look(fd, connection)) {
            connection.active = false;
            active_ -= 1;
            await_data(fd);
        }
        if (connection.pending() > connection_limit_) {
            shut(which);
        } else {
            total += connection.pending();
        }
    }
    while (total > total_limit_ && !connections_.empty()) {
        const auto greatest =
            std::ranges::max_element(connections_, {}, [](const auto &entry) { return entry.second.pending(); });
        total -= greatest->second.pending();
        shut(greatest);
    }
    return active_ != 0;
}

} // namespace switchcfg::rpc
