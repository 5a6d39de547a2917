// SPDX-License-Identifier: Apache-2.0
// A command to the routing stack, beside the same bytes over the same kind of connection between the same lock pair,
// after the same look at what came unasked. What remains is the debug lines: a system call for each of the three.
#include <switchcfg/locks.h>
#include <switchcfg/routing.h>
#include <switchcfg/socket.h>

#include "bench/support/compare.h"
#include "bench/support/served.h"

#include <arpa/inet.h>
#include <array>
#include <cstdlib>
#include <cstring>
#include <netinet/tcp.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace switchcfg::bench;

constexpr std::size_t payload_size = 16;
using Request = std::array<char, 12 + payload_size>;
using Reply = std::array<char, 8 + payload_size>;

// A daemon that answers every command with data of the same size.
void answer(int fd)
{
    Reply reply{};
    reply[3] = 1;
    reply[7] = payload_size;
    const int on = 1;
    ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    for (Request request; ::recv(fd, request.data(), request.size(), MSG_WAITALL) > 0;) {
        (void)!::write(fd, reply.data(), reply.size());
    }
    ::close(fd);
}

void serve()
{
    const int listener = socket_is_create_local(DC_PORT);
    if (listener < 0) {
        return;
    }
    serving();
    for (;;) {
        std::thread{answer, ::accept(listener, nullptr, nullptr)}.detach();
    }
}
const ServeAs routing{"routing", serve};

bool readable_within(int fd, timeval limit)
{
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(fd, &readable);
    return ::select(fd + 1, &readable, nullptr, nullptr, &limit) == 1;
}

bool read_bare(int fd, void *buffer, std::size_t length)
{
    return readable_within(fd, {DC_REPLY_TIMEOUT_S, 0}) && ::read(fd, buffer, length) == static_cast<ssize_t>(length);
}

bool exchange_bare(int fd, const Request &request)
{
    std::array<char, 8> header;
    lock_try_write(DCLockGetSetFileFD);
    const bool sent = !readable_within(fd, {}) && ::write(fd, request.data(), 12) == 12 &&
                      ::write(fd, &request[12], payload_size) == static_cast<ssize_t>(payload_size);
    const bool read = sent && read_bare(fd, header.data(), header.size());
    void *data = std::malloc(payload_size);
    const bool done = read && read_bare(fd, data, payload_size);
    lock_free(DCLockGetSetFileFD);
    std::free(data);
    return done;
}

void routing_command(benchmark::State &state)
{
    const Served daemon{"routing"};
    DClockGetSetCreate();
    const std::uint32_t here = htonl(INADDR_LOOPBACK);
    const int fd = daemon.runs() ? socket_is_connect(&here, DC_PORT) : -1;
    const int on = 1;
    ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    const Request request{};
    const std::array<char, payload_size> payload{};
    compare(
        state, {"command to the routing stack", "the same bytes, bare, between the lock pair", 0, Row::Clock::wall},
        [&] { return exchange_bare(fd, request); },
        [&] {
            void *reply = nullptr;
            std::uint32_t length = 0;
            const int sent = dc_socket_send(257, payload.data(), payload_size, &reply, &length);
            std::free(reply);
            return sent == 1;
        });
    cfg_dc_finish_connection();
    ::close(fd);
    ::close(DCLockGetSetFileFD);
}
SWITCHCFG_ROW(routing_command);

} // namespace
