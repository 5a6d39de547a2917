// SPDX-License-Identifier: Apache-2.0
// A log message beside syslog(3), each with a reader in a process of its own; what the sender spends is counted. Where
// a system logger runs there is no row: nobody's log is to fill up.
#include <switchcfg/log.h>
#include <switchcfg/socket.h>

#include "bench/support/compare.h"
#include "bench/support/served.h"

#include <sys/socket.h>
#include <syslog.h>
#include <unistd.h>

namespace {

using namespace switchcfg::bench;

constexpr char device[] = "/dev/log";
constexpr int batch = 5; // as many as wait for their reader

// The readers tell after each batch that they have taken it.
constexpr char taken[] = "/tmp/log_bench_taken";

void tell(int fd, int &read)
{
    if (++read % batch == 0) {
        (void)!::write(fd, "", 1);
    }
}

void serve_syslog()
{
    const int fd = socket_ud_create(device);
    const int told = socket_ud_connect(taken);
    if (fd < 0 || told < 0) {
        return;
    }
    serving();
    char line[2048];
    for (int read = 0; ::recv(fd, line, sizeof line, 0) > 0;) {
        tell(told, read);
    }
}
const ServeAs syslog_reader{"syslog", serve_syslog};

void serve_log()
{
    const int listener = socket_us_create(LOG_SOCKET_PATH);
    const int told = socket_ud_connect(taken);
    if (listener < 0 || told < 0) {
        return;
    }
    serving();
    char line[2048];
    for (int read = 0;;) {
        const int fd = ::accept(listener, nullptr, nullptr);
        while (::recv(fd, line, sizeof line, 0) > 0) {
        }
        ::close(fd);
        tell(told, read);
    }
}
const ServeAs log_reader{"log", serve_log};

template<typename Send>
auto sent(int fd, Send send)
{
    return [fd, send] {
        const double start = seconds_of(Row::Clock::wall);
        bool good = true;
        for (int i = 0; i < batch; ++i) {
            good = send(i) && good;
        }
        const double took = seconds_of(Row::Clock::wall) - start;
        char word = 0;
        good = good && ::recv(fd, &word, 1, 0) == 1;
        return good ? took / batch : -1;
    };
}

void peer_syslog(benchmark::State &state)
{
    if (::access(device, F_OK) == 0) {
        state.SkipWithError("a system logger runs here");
        return;
    }
    const int fd = socket_ud_create(taken);
    {
        const Served syslog_daemon{"syslog"};
        const Served log_daemon{"log"};
        const timeval patience{5, 0};
        ::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        if (fd < 0 || !syslog_daemon.runs() || !log_daemon.runs()) {
            state.SkipWithError("a reader cannot be started");
        } else {
            compare_measured(state, {"log message", "syslog(3)"},
                sent(fd,
                    [](int port) {
                        ::syslog(LOG_WARNING, "Link-Flap detected on port %d/%d, blocking", 1, port);
                        return true;
                    }),
                sent(fd, [](int port) {
                    return log_send_fac(3, 4, "Link-Flap detected on port %d/%d, blocking", 1, port) == 0;
                }));
        }
    }
    ::closelog();
    ::close(fd);
    ::unlink(taken);
    ::unlink(device);
}
SWITCHCFG_ROW(peer_syslog);

} // namespace
