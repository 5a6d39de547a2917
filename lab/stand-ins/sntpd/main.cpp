// SPDX-License-Identifier: Apache-2.0
// switchlab-sntpd: the SNTP daemon of the lab. Follows the running configuration and the key file, asks the servers for
// the time, and says what they answer. It leaves the clock alone: that is the workstation's.
#include "lab/stand-ins/sntpd/exchange.h"
#include "lab/stand-ins/sntpd/settings.h"

#include <switchcfg/sntp.h>
#include <switchcfg/startup.h>
#include <switchcfg/status.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <string>
#include <unistd.h>

namespace {

using namespace switchlab::sntpd;
using Clock = std::chrono::steady_clock;

volatile std::sig_atomic_t ended = 0;

void say(const std::string &what)
{
    std::printf("sntpd: %s\n", what.c_str());
    (void)std::fflush(stdout);
}

// The first server that gives a believable answer is the one.
void ask_servers(const Settings &settings, std::uint16_t port)
{
    for (const Server &server : settings.servers) {
        const Key *const key = settings.authenticate ? settings.key(server.key) : nullptr;
        if (settings.authenticate && key == nullptr) {
            say(server.text + " is not asked: it has no key");
            continue;
        }
        const Answer answer = ask(server.address(), port, key);
        if (!answer.refused.empty()) {
            say(server.text + " " + answer.refused);
            continue;
        }
        (void)sntp_set_lastOk_ip_addr(server.text.c_str());
        char offset[32];
        (void)std::snprintf(offset, sizeof offset, "%+.6f", answer.offset_s);
        say(server.text + " answers, stratum " + std::to_string(answer.stratum) + ", offset " + offset + " s" +
            (key != nullptr ? ", authenticated with key " + std::to_string(key->id) : ""));
        return;
    }
}

} // namespace

int main(int argc, char **argv)
try {
    CLI::App app{"The SNTP daemon of the lab"};
    std::uint16_t port = 123;
    int look_ms = 100;
    int ready_fd = -1;
    app.add_option("--port", port, "UDP port of the servers")->check(CLI::Range(1, 65535))->capture_default_str();
    app.add_option("--look", look_ms, "Milliseconds between two looks at settings and key file")
        ->check(CLI::Range(1, 60000))
        ->capture_default_str();
    app.add_option("--ready-fd", ready_fd, "Descriptor that gets a byte once the daemon has read its settings");
    CLI11_PARSE(app, argc, argv);

    if (cfg_init() != 0 || get_status() == nullptr) {
        (void)std::fprintf(stderr, "switchlab-sntpd: cannot map the shared records\n");
        return EXIT_FAILURE;
    }
    for (const int signo : {SIGTERM, SIGINT}) {
        (void)std::signal(signo, [](int) { ended = 1; });
    }
    std::optional<Settings> settings;
    for (auto due = Clock::now(); ended == 0; (void)::usleep(static_cast<useconds_t>(look_ms) * 1000)) {
        Settings now = current_settings();
        if (settings != now) {
            settings = std::move(now);
            say(settings->text());
            due = Clock::now();
        }
        if (ready_fd >= 0) {
            (void)!::write(ready_fd, "", 1);
            ::close(std::exchange(ready_fd, -1));
        }
        if (Clock::now() >= due) {
            ask_servers(*settings, port);
            due = Clock::now() + std::chrono::seconds{settings->interval_s};
        }
    }
    return EXIT_SUCCESS;
} catch (const std::exception &failure) {
    (void)std::fprintf(stderr, "switchlab-sntpd: %s\n", failure.what());
    return EXIT_FAILURE;
}
