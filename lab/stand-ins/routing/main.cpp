// SPDX-License-Identifier: Apache-2.0
// switchlab-routing: the routing stack of the lab. Keeps a table of static routes, answers commands over the bridge and
// misbehaves when asked to.
#include "lab/stand-ins/routing/server.h"

#include <switchcfg/robust_io.h>
#include <switchcfg/routing.h>
#include <switchcfg/socket.h>

#include <CLI/CLI.hpp>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

int main(int argc, char **argv)
try {
    using namespace switchlab::routing;
    CLI::App app{"The routing stack of the lab"};
    std::size_t limit = 100000;
    unsigned chaos = 0;
    std::uint32_t seed = 1;
    std::string fault;
    int ready_fd = -1;
    app.add_option("--routes", limit, "Most routes of the table")->capture_default_str();
    app.add_option("--fault", fault,
        "KIND[:ARGUMENT] [COUNT]: what the first COUNT commands suffer: stall[:MS], close, half, protocol-error, "
        "garbage, huge[:BYTES] or endless");
    app.add_option("--chaos", chaos, "So many commands in a hundred suffer a fault of a random kind")
        ->check(CLI::Range(0, 100));
    app.add_option("--seed", seed, "What the random kinds follow from")->capture_default_str();
    app.add_option("--ready-fd", ready_fd, "Descriptor that gets a byte once the daemon serves");
    CLI11_PARSE(app, argc, argv);

    // The connections' threads run to the end of the process and may see these to its very end.
    auto &table = *new RouteTable{limit};
    auto &faults = *new Faults{chaos, seed};
    if (!fault.empty() && !faults.request(fault)) {
        std::fprintf(stderr, "switchlab-routing: '%s' is no fault\n", fault.c_str());
        return EXIT_FAILURE;
    }
    (void)std::signal(SIGPIPE, SIG_IGN);
    const int listener = socket_is_create_local(DC_PORT);
    if (listener < 0) {
        std::fprintf(stderr, "switchlab-routing: cannot listen on port %d: %s\n", DC_PORT, std::strerror(errno));
        return EXIT_FAILURE;
    }
    if (ready_fd >= 0) {
        (void)vx_write(ready_fd, "", 1);
        ::close(ready_fd);
    }
    for (;;) {
        const int fd = ::accept(listener, nullptr, nullptr);
        if (fd >= 0) {
            std::thread{[&table, &faults, fd] { serve_connection(fd, table, faults); }}.detach();
        } else if (errno != EINTR && errno != ECONNABORTED) {
            (void)::usleep(100000); // out of descriptors, for example
        }
    }
} catch (const std::exception &failure) {
    (void)std::fprintf(stderr, "switchlab-routing: %s\n", failure.what());
    std::_Exit(EXIT_FAILURE);
}
