// SPDX-License-Identifier: Apache-2.0
// What ZeroMQ leaves without bound: how many peers connect to a socket, and how much of a message that never ends it
// keeps for them. A guard watches the connections of a socket from outside and shuts those down that take too much.
#ifndef SWITCHCFG_RPC_CONNECTION_GUARD_H
#define SWITCHCFG_RPC_CONNECTION_GUARD_H

#include "rpc/zmq_handles.h"

#include <array>
#include <atomic>
#include <map>
#include <sys/socket.h>

namespace switchcfg::rpc {

// Counts the messages taken off a socket by connection; written by whoever receives, read by the guard.
class Progress {
  public:
    static constexpr int descriptors = 2048;

    void count(Message &message) noexcept;
    std::uint32_t of(int fd) const noexcept
    {
        return counts_[static_cast<std::size_t>(fd)].load(std::memory_order_relaxed);
    }

  private:
    std::array<std::atomic<std::uint32_t>, descriptors> counts_{};
};

class ConnectionGuard {
  public:
    static constexpr std::size_t most_connections = 256;
    static constexpr long tick_ms = 50;

    // Bytes of messages not yet taken off the socket that one connection, and all together, may hold.
    ConnectionGuard(const Progress &progress, std::uint64_t connection_limit, std::uint64_t total_limit) noexcept;
    ~ConnectionGuard();
    ConnectionGuard(const ConnectionGuard &) = delete;
    ConnectionGuard &operator=(const ConnectionGuard &) = delete;

    // Before the socket is bound. `name` makes the address its events come over; one of a kind in the context.
    bool watch(void *context, void *socket, const char *name) noexcept;

    // What to poll: its events, and a descriptor that is readable when a quiet connection wakes up.
    void *events() const noexcept { return events_.get(); }
    int wake_fd() const noexcept { return epoll_; }

    void on_events() noexcept;
    void on_wake() noexcept;

    // Looks after the connections that are not quiet, if tick_ms have passed. True while there are any.
    bool tick() noexcept;

  private:
    struct Peer {
        sockaddr_storage address{};
        socklen_t length = 0;
        bool of(int fd) noexcept;
        bool operator==(const Peer &other) const noexcept;
    };
    struct Connection {
        Peer peer;
        std::uint32_t progress = 0;
        std::uint64_t received = 0;    // bytes, as of the last look
        std::uint64_t at_progress = 0; // bytes, when a message was last seen to be taken
        bool active = false;
        std::uint64_t pending() const noexcept { return received - at_progress; }
    };
    using Connections = std::map<int, Connection>;

    void add(int fd);
    void await_data(int fd) const noexcept;
    bool look(int fd, Connection &connection) noexcept;
    void shut(Connections::iterator which) noexcept;

    const Progress &progress_;
    const std::uint64_t connection_limit_;
    const std::uint64_t total_limit_;
    std::size_t most_ = most_connections;
    Socket events_;
    int epoll_ = -1;
    Connections connections_;
    std::size_t active_ = 0;
    std::uint64_t next_tick_ = 0;
};

} // namespace switchcfg::rpc

#endif
