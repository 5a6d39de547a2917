// SPDX-License-Identifier: Apache-2.0
// switchlab-agent: the SNMP agent of the lab, as far as notifications go. Drains the trap queue and sends what it
// finds.
#include "lab/stand-ins/agent/sender.h"

#include <switchcfg/startup.h>
#include <switchcfg/status.h>

#include <CLI/CLI.hpp>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <unistd.h>

namespace {

volatile std::sig_atomic_t ended = 0;

void end(int /*signal*/)
{
    ended = 1;
}

} // namespace

int main(int argc, char **argv)
try {
    CLI::App app{"The SNMP agent of the lab: sends the queued traps as SNMPv2c notifications"};
    std::string host = "127.0.0.1";
    std::string community = "public";
    int port = 162;
    int interval_ms = 50;
    int ready_fd = -1;
    bool once = false;
    app.add_option("--host", host, "Who receives them")->capture_default_str();
    app.add_option("--port", port, "UDP port of the receiver")->check(CLI::Range(1, 65535))->capture_default_str();
    app.add_option("--community", community, "Community of the notifications")->capture_default_str();
    app.add_option("--interval", interval_ms, "Milliseconds between two looks at the queue")
        ->check(CLI::Range(1, 60000))
        ->capture_default_str();
    app.add_flag("--once", once, "Send what is queued and end");
    app.add_option("--ready-fd", ready_fd, "Descriptor that gets a byte once the agent serves");
    CLI11_PARSE(app, argc, argv);

    if (cfg_init() != 0 || get_status() == nullptr) {
        (void)std::fprintf(stderr, "switchlab-agent: cannot map the shared records\n");
        return EXIT_FAILURE;
    }
    const switchlab::agent::Sender sender{"udp:" + host + ":" + std::to_string(port), community};
    (void)std::signal(SIGTERM, end);
    (void)std::signal(SIGINT, end);
    if (ready_fd >= 0) {
        (void)!::write(ready_fd, "", 1);
    }
    static std::array<trap_entry, TRAP_QUEUE_LENGTH> traps;
    while (ended == 0) {
        const int count = trap_queue_drain(traps.data(), TRAP_QUEUE_LENGTH);
        for (int i = 0; i < count; ++i) {
            (void)sender.send(traps[static_cast<std::size_t>(i)]);
        }
        if (once) {
            break;
        }
        if (count <= 0) {
            (void)::usleep(static_cast<useconds_t>(interval_ms) * 1000);
        }
    }
    return EXIT_SUCCESS;
} catch (const std::exception &failure) {
    (void)std::fprintf(stderr, "switchlab-agent: %s\n", failure.what());
    return EXIT_FAILURE;
}
