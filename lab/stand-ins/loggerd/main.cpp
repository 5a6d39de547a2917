// SPDX-License-Identifier: Apache-2.0
// switchlab-loggerd: the logging daemon of the lab. Takes messages on the local socket, keeps them in the four stores
// and answers commands on the control port.
#include "lab/stand-ins/loggerd/command_server.h"
#include "lab/stand-ins/loggerd/message_intake.h"

#include <switchcfg/log.h>
#include <switchcfg/log_store.h>
#include <switchcfg/request_channel.h>
#include <switchcfg/socket.h>

#include <CLI/CLI.hpp>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <thread>
#include <unistd.h>

namespace {

using namespace switchlab::loggerd;

// Every line is in its store before its sender is let go, so there is nothing to save.
void leave(int /*signal*/)
{
    ::unlink(LOG_SOCKET_PATH);
    ::_exit(EXIT_SUCCESS);
}

} // namespace

int main(int argc, char **argv)
try {
    CLI::App app{"The logging daemon of the lab"};
    Limits limits;
    int ready_fd = -1;
    app.add_option("--ram-limit", limits.ram, "Most bytes of each store in memory")->capture_default_str();
    app.add_option("--flash-limit", limits.flash, "Most bytes of each store in flash")->capture_default_str();
    app.add_option("--flash-folder", limits.flash_folder, "Where the stores in flash are kept")->capture_default_str();
    app.add_flag("--echo", limits.echo, "Print each message, too");
    app.add_option("--ready-fd", ready_fd, "Descriptor that gets a byte once the daemon serves");
    CLI11_PARSE(app, argc, argv);

    // The socket file of a daemon that runs must not be taken from it.
    const int running = daemon_client_req_connect(LOG_CONTROL_PORT);
    if (running >= 0) {
        std::fprintf(stderr, "switchlab-loggerd: port %d is served already\n", LOG_CONTROL_PORT);
        return EXIT_FAILURE;
    }
    (void)std::signal(SIGPIPE, SIG_IGN);
    const int listener = socket_us_create(LOG_SOCKET_PATH);
    if (listener < 0) {
        std::fprintf(stderr, "switchlab-loggerd: cannot listen on %s: %s\n", LOG_SOCKET_PATH, std::strerror(errno));
        return EXIT_FAILURE;
    }
    (void)std::signal(SIGTERM, leave);
    (void)std::signal(SIGINT, leave);

    Journal journal{limits};
    journal.note("started");
    std::thread{[&] { take_messages(listener, journal); }}.detach();
    serve_commands(journal, ready_fd);
    std::fprintf(stderr, "switchlab-loggerd: cannot listen on port %d: %s\n", LOG_CONTROL_PORT, std::strerror(errno));
    std::_Exit(EXIT_FAILURE);
} catch (const std::exception &failure) {
    (void)std::fprintf(stderr, "switchlab-loggerd: %s\n", failure.what());
    std::_Exit(EXIT_FAILURE);
}
