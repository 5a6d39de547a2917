// SPDX-License-Identifier: Apache-2.0
// switchlab-pm: the process manager of the lab. Runs the processes of a list, starts crashed ones again, and obeys the
// requests that arrive on its port.
#include "lab/stand-ins/pm/supervisor.h"

#include <switchcfg/pm_client.h>
#include <switchcfg/request_channel.h>
#include <switchcfg/robust_io.h>
#include <switchcfg/signals.h>

#include <CLI/CLI.hpp>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace {

using namespace switchlab::pm;

constexpr std::uint64_t period_cs = 5;
constexpr std::uint32_t patience_s = 1; // for a whole request: nobody else is served meanwhile

volatile std::sig_atomic_t asked_to_leave = 0;

struct Service {
    Supervisor supervisor;
    int ready_fd;
    bool started = false;
    bool leaving = false;
};

int tick(void *argument)
{
    auto &service = *static_cast<Service *>(argument);
    if (!service.started) { // the first tick: the port is open
        service.started = true;
        service.supervisor.start_all();
        if (service.ready_fd >= 0) {
            (void)vx_write(service.ready_fd, "", 1);
            ::close(service.ready_fd);
        }
    }
    if (asked_to_leave != 0 && !service.leaving) {
        service.leaving = true;
        service.supervisor.shut_down();
    }
    service.supervisor.tick();
    if (service.leaving && service.supervisor.all_down()) {
        std::exit(EXIT_SUCCESS);
    }
    return 0;
}

// The connection stays open until the request is done.
int serve_connection(void *argument, int fd)
{
    pm_request request{};
    if (vx_read_timeout(fd, &request, sizeof request, patience_s) != 0) {
        return ::close(fd);
    }
    static_cast<Service *>(argument)->supervisor.serve(request, [fd, request](int result) {
        pm_request reply = request;
        reply.result = result;
        (void)vx_write_nointr(fd, &reply, sizeof reply); // it fits into any socket's buffer
        ::close(fd);
    });
    return 0;
}

int run(int argc, char **argv)
{
    CLI::App app{"The process manager of the lab"};
    std::string list;
    Settings settings;
    int ready_fd = -1;
    app.add_option("LIST", list, "File with one process per line: NAME enabled|disabled COMMAND...")->required();
    app.add_option("--grace", settings.grace, "Hundredths of a second from SIGTERM to SIGKILL")->capture_default_str();
    app.add_option("--back-off", settings.first_back_off,
           "Hundredths of a second before a crashed process starts again; doubles with each crash")
        ->capture_default_str();
    app.add_option("--ready-fd", ready_fd, "Descriptor that gets a byte once the processes are started");
    CLI11_PARSE(app, argc, argv);

    Service service{{read_process_list(list), settings}, ready_fd};
    (void)signal_ignore(SIGPIPE);
    for (const int signo : {SIGTERM, SIGINT}) {
        (void)signal_handler(signo, [](int) { asked_to_leave = 1; });
    }
    const daemon_server server{PM_CLIENT_PORT, period_cs, &service, tick, serve_connection};
    (void)daemon_server_loop_conn_close(&server, 0);
    throw std::runtime_error{"cannot listen on port " + std::to_string(PM_CLIENT_PORT) + ": " + std::strerror(errno)};
}

} // namespace

int main(int argc, char **argv)
{
    try {
        return run(argc, argv);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "switchlab-pm: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
