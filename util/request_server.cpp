// SPDX-License-Identifier: Apache-2.0
// The loop of a serving daemon.
#include <switchcfg/request_channel.h>
#include <switchcfg/socket.h>

#include <cerrno>
#include <cstdint>
#include <ctime>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// What uptime_cs() reads from its file, from the clock behind it: the loop asks at every turn.
std::uint64_t since_boot_cs() noexcept
{
    timespec now{};
    (void)::clock_gettime(CLOCK_BOOTTIME, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 100 + static_cast<std::uint64_t>(now.tv_nsec) / 10000000;
}

// How long until the deadline; nothing when it has passed. What no clock can wait for is cut to 68 years.
timespec time_until(std::uint64_t deadline) noexcept
{
    constexpr std::uint32_t longest_s = INT32_MAX;
    constexpr std::uint32_t us_per_s = 1000000;
    const auto left_us = static_cast<std::int64_t>((deadline - since_boot_cs()) * 10000);
    if (left_us <= 0) {
        return {0, 0};
    }
    const std::uint64_t left_s = static_cast<std::uint64_t>(left_us) / us_per_s;
    if (left_s >= longest_s) {
        return {longest_s, 0};
    }
    return {static_cast<std::int32_t>(left_s),
        static_cast<long>(static_cast<std::uint64_t>(left_us) - left_s * us_per_s) * 1000};
}

// Above 0 when a connection waits, 0 when the time ran out, -1 when the wait failed.
int wait_for_connection(int listener, const timespec &time) noexcept
{
    pollfd wait{listener, POLLIN, 0};
    const int ready = ::ppoll(&wait, 1, &time, nullptr);
    if (ready > 0 && (wait.revents & POLLNVAL) != 0) {
        errno = EBADF; // a callback closed the listener: the loop must not spin on it
        return -1;
    }
    return ready;
}

void serve_connection(const daemon_server &server, int listener, bool close_connections)
{
    const int fd = ::accept(listener, nullptr, nullptr);
    if (fd < 0) {
        return;
    }
    if (server.connection != nullptr) {
        (void)server.connection(server.argument, fd);
    }
    if (close_connections) {
        ::close(fd);
    }
}

// The description is read anew at every use: callbacks change it.
[[noreturn]] void serve(const daemon_server &server, int listener, bool close_connections)
{
    std::uint64_t deadline = since_boot_cs(); // so the first tick comes at once
    for (;;) {
        const int ready = wait_for_connection(listener, time_until(deadline));
        if (ready > 0) {
            serve_connection(server, listener, close_connections);
        } else if (ready == 0) {
            deadline = since_boot_cs() + server.period; // from now, so that late rounds do not pile up
            if (server.timer != nullptr) {
                (void)server.timer(server.argument);
            }
        } else if (errno != EINTR) {
            ::sleep(1);
        }
    }
}

} // namespace

int daemon_server_loop(const daemon_server *server)
{
    return daemon_server_loop_conn_close(server, 1);
}

int daemon_server_loop_conn_close(const daemon_server *server, int close_connections)
{
    if (server == nullptr) {
        return -1;
    }
    const int listener = socket_is_create_local(server->port);
    if (listener < 0) {
        return -1;
    }
    serve(*server, listener, close_connections != 0);
}

int daemon_server_loop6(const daemon_server *server)
{
    return daemon_server_loop_conn_close6(server, 1);
}

int daemon_server_loop_conn_close6(const daemon_server *server, int close_connections)
{
    if (server == nullptr) {
        return -1;
    }
    const int listener = socket_is6_create_any(server->port);
    if (listener < 0) {
        return -1;
    }
    serve(*server, listener, close_connections != 0);
}
