// SPDX-License-Identifier: Apache-2.0
// An exchange over the request channel, beside the same bytes over bare sockets on both sides.
#include <switchcfg/request_channel.h>
#include <switchcfg/robust_io.h>

#include <array>
#include <benchmark/benchmark.h>
#include <csignal>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

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

// A server in a process of its own, which says over a pipe that it listens.
class Server {
  public:
    explicit Server(void (*serve)(int ready))
    {
        int ready[2];
        if (::pipe(ready) != 0) {
            std::abort();
        }
        pid_ = ::fork();
        if (pid_ == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            serve(ready[1]);
            ::_exit(1);
        }
        ::close(ready[1]);
        char byte = 0;
        if (::read(ready[0], &byte, 1) != 1) {
            std::abort();
        }
        ::close(ready[0]);
    }
    ~Server()
    {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    Server(const Server &) = delete;
    Server &operator=(const Server &) = delete;

  private:
    pid_t pid_;
};

void answer(int fd)
{
    Record record;
    if (::read(fd, record.data(), record.size()) == static_cast<ssize_t>(record.size())) {
        (void)!::write(fd, record.data(), record.size());
    }
}

void serve_bare(int ready)
{
    const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
    const int on = 1;
    ::setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const sockaddr_in endpoint = endpoint_of(bare_port);
    ::bind(listener, reinterpret_cast<const sockaddr *>(&endpoint), sizeof endpoint);
    ::listen(listener, 5);
    (void)!::write(ready, "", 1);
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

void serve_channel(int ready)
{
    static int ready_fd;
    ready_fd = ready;
    daemon_server server{};
    server.port = port;
    server.period = 100000;
    server.timer = [](void *) { return static_cast<int>(::write(ready_fd, "", 1)); };
    server.connection = [](void *, int fd) {
        answer(fd);
        return 0;
    };
    daemon_server_loop(&server);
}

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

void request_exchange_floor(benchmark::State &state)
{
    const Server server{serve_bare};
    Record record{};
    for (auto _ : state) {
        if (!exchange_bare(record)) {
            state.SkipWithError("the exchange failed");
            break;
        }
    }
}
BENCHMARK(request_exchange_floor)->UseRealTime();

void request_exchange(benchmark::State &state)
{
    const Server server{serve_channel};
    Record record{};
    for (auto _ : state) {
        if (daemon_client_req(port, 10, record.data(), record.size()) != 0) {
            state.SkipWithError("the exchange failed");
            break;
        }
    }
}
BENCHMARK(request_exchange)->UseRealTime();

} // namespace
