// SPDX-License-Identifier: Apache-2.0
// switchlab-bcmd: the switch-chip daemon of the lab. Serves a table of functions over a chip that exists in its memory
// only; SIGUSR1 makes it print its statistics.
#include "lab/stand-ins/bcmd/chip.h"
#include "lab/stand-ins/bcmd/functions.h"

#include <switchcfg/funclist.h>
#include <switchcfg/print_ext.h>
#include <switchcfg/robust_io.h>

#include <CLI/CLI.hpp>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <string>
#include <sys/signalfd.h>
#include <system_error>
#include <unistd.h>

namespace {

using namespace switchlab::bcmd;

struct Settings {
    std::uint32_t units = 2;
    std::uint32_t macs = 256;
    std::string stats_file;
    int ready_fd = -1;
};

// Signals are taken from a descriptor, one after the other, where everything may be called. The threads that serve
// inherit the mask, so it is set before they are there.
int take_signals()
{
    sigset_t taken;
    sigemptyset(&taken);
    for (const int signo : {SIGUSR1, SIGTERM, SIGINT}) {
        sigaddset(&taken, signo);
    }
    ::sigprocmask(SIG_BLOCK, &taken, nullptr);
    const int fd = ::signalfd(-1, &taken, SFD_CLOEXEC);
    if (fd == -1) {
        throw std::system_error{errno, std::generic_category(), "signalfd"};
    }
    return fd;
}

void print_statistics(const Settings &settings)
{
    std::FILE *const stream = settings.stats_file.empty() ? stdout : std::fopen(settings.stats_file.c_str(), "ae");
    if (stream == nullptr) {
        std::fprintf(stderr, "switchlab-bcmd: %s: %s\n", settings.stats_file.c_str(), std::strerror(errno));
        return;
    }
    dumpFunclistStats(BcmdFunclistServer::getInstance().statistics(), stream);
    (void)(stream == stdout ? std::fflush(stdout) : std::fclose(stream));
}

// The same call as other processes make, but it does not leave this one.
void introduce()
{
    void *output = nullptr;
    std::uint32_t length = 0;
    const int result = bcm_cmd(BCMD_GENERAL_VERSION, 0, 0, 0, 0, nullptr, 0, &output, &length);
    const std::unique_ptr<void, decltype(&std::free)> owner{output, &std::free};
    std::printf("switchlab-bcmd %d: result %d, %.*s", static_cast<int>(::getpid()), result, static_cast<int>(length),
        output != nullptr ? static_cast<const char *>(output) : "\n");
    (void)std::fflush(stdout);
}

void serve(const Settings &settings)
{
    const int signals = take_signals();
    (void)printExts_init(); // the dump of the labels prints addresses
    chip().make_units(settings.units);
    chip().learn(settings.macs);

    BcmdFunclistServer &server = BcmdFunclistServer::getInstance();
    register_general_functions(server);
    register_table_functions(server);
    register_diag_functions(server);
    register_unit_functions(server);
    register_port_functions(server);
    register_mpls_functions(server);
    register_vhw_functions(server);
    server.enableStatistics();

    BcmdFunclistClient *const client = BcmdFunclistClient::getInstance();
    if (client == nullptr) {
        throw std::bad_alloc{};
    }
    client->local_call = true;
    introduce();

    if (server.startProcessing() != 0) {
        throw std::system_error{errno, std::generic_category(), "cannot serve"};
    }
    if (settings.ready_fd >= 0) {
        (void)vx_write(settings.ready_fd, "", 1);
        ::close(settings.ready_fd);
    }
    signalfd_siginfo signal{};
    while (vx_read_nointr(signals, &signal, sizeof signal) != -1 && signal.ssi_signo == SIGUSR1) {
        print_statistics(settings);
    }
    interrupt_functions();
    server.stop();
    server.wait();
}

} // namespace

int main(int argc, char **argv)
{
    try {
        CLI::App app{"The switch-chip daemon of the lab. SIGUSR1 prints the statistics of its commands."};
        Settings settings;
        app.add_option("--units", settings.units, "Units of the stack")
            ->check(CLI::Range(1U, Chip::most_units))
            ->capture_default_str();
        app.add_option("--macs", settings.macs, "Addresses in its table at the start")
            ->check(CLI::Range(0U, static_cast<std::uint32_t>(Chip::most_macs)))
            ->capture_default_str();
        app.add_option("--stats-file", settings.stats_file, "Append statistics to this file, not standard output");
        app.add_option("--ready-fd", settings.ready_fd, "Descriptor that gets a byte once it serves");
        CLI11_PARSE(app, argc, argv);
        serve(settings);
        return EXIT_SUCCESS;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "switchlab-bcmd: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
