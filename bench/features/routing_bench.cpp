// SPDX-License-Identifier: Apache-2.0
// A command to the routing stack, beside the same bytes over the same kind of connection between the same lock pair,
// after the same look at what came unasked. What remains is the debug lines: a system call for each of the three.
#include <switchcfg/locks.h>
#include <switchcfg/routing.h>
#include <switchcfg/socket.h>

#include <arpa/inet.h>
#include <array>
#include <benchmark/benchmark.h>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <netinet/tcp.h>
#include <sys/prctl.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr std::size_t payload_size = 16;
using Request = std::array<char, 12 + payload_size>;
using Reply = std::array<char, 8 + payload_size>;

// A daemon in a process of its own, which answers every command with data of the same size.
class Daemon {
  public:
    Daemon() : listener_(socket_is_create_local(DC_PORT)), pid_(listener_ < 0 ? -1 : ::fork())
    {
        if (pid_ == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            serve();
        }
    }
    ~Daemon()
    {
        ::close(listener_);
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
        }
    }
    Daemon(const Daemon &) = delete;
    Daemon &operator=(const Daemon &) = delete;
    bool runs() const { return pid_ > 0; }

  private:
    [[noreturn]] void serve() const
    {
        Reply reply{};
        reply[3] = 1;
        reply[7] = payload_size;
        const int fd = ::accept(listener_, nullptr, nullptr);
        const int on = 1;
        ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        for (Request request; ::recv(fd, request.data(), request.size(), MSG_WAITALL) > 0;) {
            (void)!::write(fd, reply.data(), reply.size());
        }
        ::_exit(0);
    }

    int listener_;
    pid_t pid_;
};

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

void routing_command_floor(benchmark::State &state)
{
    const Daemon daemon;
    DClockGetSetCreate();
    const std::uint32_t here = htonl(INADDR_LOOPBACK);
    const int fd = daemon.runs() ? socket_is_connect(&here, DC_PORT) : -1;
    const int on = 1;
    ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    const Request request{};
    for (auto _ : state) {
        if (!exchange_bare(fd, request)) {
            state.SkipWithError("the exchange failed");
            break;
        }
    }
    ::close(fd);
    ::close(DCLockGetSetFileFD);
}
BENCHMARK(routing_command_floor)->UseRealTime();

void routing_command(benchmark::State &state)
{
    const Daemon daemon;
    DClockGetSetCreate();
    const std::array<char, payload_size> payload{};
    for (auto _ : state) {
        void *reply = nullptr;
        std::uint32_t length = 0;
        if (!daemon.runs() || dc_socket_send(257, payload.data(), payload_size, &reply, &length) != 1) {
            state.SkipWithError("the exchange failed");
            break;
        }
        std::free(reply);
    }
    cfg_dc_finish_connection();
    ::close(DCLockGetSetFileFD);
}
BENCHMARK(routing_command)->UseRealTime();

void routing_command_name(benchmark::State &state)
{
    std::uint32_t id = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(dc_get_cmd_id_name(++id % 400));
    }
}
BENCHMARK(routing_command_name);

} // namespace
