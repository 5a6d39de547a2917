// SPDX-License-Identifier: Apache-2.0
// An exchange over the request channel, beside the same bytes over bare sockets on both sides.
#include <switchcfg/request_channel.h>
#include <switchcfg/robust_io.h>

#include "bench/support/compare.h"
#include "bench/support/served.h"

#include <array>
#include <netinet/in.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using namespace switchcfg::bench;

constexpr std::uint16_t port = 20201;
constexpr std::uint16_t bare_port = 20202;
using Record = std::array<char, 708>;

sockaddr_in endpoint_of(std::uint16_t number)
{
    sockaddr_in endpoint{};
    endpoint.sin_family = AF_INET;
    endpoint.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    endpoint.sin_port = htons(number);
    return endpoint;
}

void answer(int fd)
{
    Record record;
    if (::read(fd, record.data(), record.size()) == static_cast<ssize_t>(record.size())) {
        (void)!::write(fd, record.data(), record.size());
    }
}

void serve_bare()
{
    const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
    const int on = 1;
    ::setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const sockaddr_in endpoint = endpoint_of(bare_port);
    ::bind(listener, reinterpret_cast<const sockaddr *>(&endpoint), sizeof endpoint);
    ::listen(listener, 5);
    serving();
    for (;;) {
        fd_set readable;
        FD_ZERO(&readable);
        FD_SET(listener, &readable);
        ::select(listener + 1, &readable, nullptr, nullptr, nullptr);
        const int fd = ::accept(listener, nullptr, nullptr);
        answer(fd);
        ::close(fd);
    }
}

const ServeAs bare{"bare-request", serve_bare};

void serve_channel()
{
    daemon_server server{};
    server.port = port;
    server.period = 100000;
    server.timer = [](void *) {
        serving();
        return 0;
    };
    server.connection = [](void *, int fd) {
        answer(fd);
        return 0;
    };
    daemon_server_loop(&server);
}
const ServeAs channel{"request-channel", serve_channel};

bool exchange_bare(Record &record)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    const sockaddr_in endpoint = endpoint_of(bare_port);
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(fd, &readable);
    timeval limit{10, 0};
    const bool done = ::connect(fd, reinterpret_cast<const sockaddr *>(&endpoint), sizeof endpoint) == 0 &&
                      ::write(fd, record.data(), record.size()) == static_cast<ssize_t>(record.size()) &&
                      ::select(fd + 1, &readable, nullptr, nullptr, &limit) == 1 &&
                      ::read(fd, record.data(), record.size()) == static_cast<ssize_t>(record.size());
    ::close(fd);
    return done;
}

void request_exchange(benchmark::State &state)
{
    const Served bare_server{"bare-request"};
    const Served server{"request-channel"};
    Record record{};
    compare(
        state, {"exchange over the request channel", "the bare TCP exchange", 1.1, Row::Clock::wall},
        [&] { return exchange_bare(record); },
        [&] { return daemon_client_req(port, 10, record.data(), record.size()) == 0; });
}
SWITCHCFG_ROW(request_exchange);

} // namespace
