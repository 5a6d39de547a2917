// SPDX-License-Identifier: Apache-2.0
// switchlab-cpumon: the CPU monitor of a unit in the lab. Answers with the figures of this machine and of the lab's
// processes.
#include "lab/stand-ins/cpumon/monitor.h"

#include <switchcfg/robust_io.h>
#include <switchcfg/socket.h>

#include <CLI/CLI.hpp>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <netdb.h>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using switchlab::cpumon::Monitor;

constexpr std::uint32_t patience_s = 2; // with a client: nobody else is served meanwhile

// Several units share the network of one lab, each with an address of its own, so daemon_server_loop6() and its "every
// address" would not do.
int listen_on(const std::string &address)
{
    addrinfo hints{};
    hints.ai_family = AF_INET6;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICHOST | AI_PASSIVE;
    addrinfo *found = nullptr;
    const std::string port = std::to_string(CPUMON_PORT);
    if (const int wrong = ::getaddrinfo(address.c_str(), port.c_str(), &hints, &found); wrong != 0) {
        throw std::runtime_error{address + ": " + ::gai_strerror(wrong)};
    }
    const int yes = 1;
    const int fd = ::socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool listens = fd >= 0 && ::setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes) == 0 &&
                         ::bind(fd, found->ai_addr, found->ai_addrlen) == 0 && ::listen(fd, 5) == 0;
    const int why = errno;
    ::freeaddrinfo(found);
    if (!listens) {
        throw std::runtime_error{"cannot listen on " + address + " port " + port + ": " + std::strerror(why)};
    }
    return fd;
}

void serve(const Monitor &monitor, int fd)
{
    cpumon_request record{};
    if (vx_read_timeout(fd, &record, sizeof record, patience_s) != 0 ||
        socket_timeouts_set(fd, static_cast<int>(patience_s)) != 0) {
        return;
    }
    const std::string text = monitor.answer(record);
    std::string reply{reinterpret_cast<const char *>(&record), sizeof record};
    reply += text;
    (void)socket_send(fd, reply.data(), static_cast<int>(reply.size()));
}

[[noreturn]] void run(Monitor &monitor, int listener, int interval_ms)
{
    for (auto due = std::chrono::steady_clock::now();;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(due - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            monitor.sample();
            due = std::chrono::steady_clock::now() + std::chrono::milliseconds{interval_ms};
            continue;
        }
        pollfd wait{listener, POLLIN, 0};
        if (::poll(&wait, 1, static_cast<int>(left.count())) > 0) {
            const int fd = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
            if (fd >= 0) {
                serve(monitor, fd);
                ::close(fd);
            }
        }
    }
}

} // namespace

int main(int argc, char **argv)
try {
    CLI::App app{"The CPU monitor of a unit in the lab"};
    std::string address = "::";
    unsigned unit = 1;
    int interval_ms = 1000;
    int ready_fd = -1;
    app.add_option("--address", address, "IPv6 address to listen on, with %INTERFACE when it is link-local")
        ->capture_default_str();
    app.add_option("--unit", unit, "Unit, from 1, for the captions")->check(CLI::Range(1U, 8U))->capture_default_str();
    app.add_option("--interval", interval_ms, "Milliseconds between two samples")
        ->check(CLI::Range(10, 60000))
        ->capture_default_str();
    app.add_option("--ready-fd", ready_fd, "Descriptor that gets a byte once the monitor serves");
    CLI11_PARSE(app, argc, argv);

    (void)std::signal(SIGPIPE, SIG_IGN);
    const int listener = listen_on(address);
    Monitor monitor{unit};
    monitor.sample();
    if (ready_fd >= 0) {
        (void)!::write(ready_fd, "", 1);
        ::close(ready_fd);
    }
    run(monitor, listener, interval_ms);
} catch (const std::exception &failure) {
    (void)std::fprintf(stderr, "switchlab-cpumon: %s\n", failure.what());
    return EXIT_FAILURE;
}
