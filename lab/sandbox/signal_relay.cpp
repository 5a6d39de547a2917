// SPDX-License-Identifier: Apache-2.0
#include "lab/sandbox/signal_relay.h"

#include <array>
#include <cerrno>
#include <optional>
#include <sys/wait.h>

namespace switchlab {
namespace {

constexpr std::array relayed_signals{SIGHUP, SIGINT, SIGQUIT, SIGUSR1, SIGUSR2, SIGTERM, SIGWINCH};

// Reaps whatever has ended, orphans included.
std::optional<int> reap_until(pid_t child)
{
    for (;;) {
        int status = 0;
        const pid_t pid = ::waitpid(-1, &status, WNOHANG);
        if (pid == child) {
            return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
        }
        if (pid <= 0 && errno != EINTR) {
            return std::nullopt;
        }
    }
}

} // namespace

SignalRelay::SignalRelay()
{
    ::sigemptyset(&relayed_);
    ::sigaddset(&relayed_, SIGCHLD);
    for (const int number : relayed_signals) {
        ::sigaddset(&relayed_, number);
    }
    for (int number = SIGRTMIN; number <= SIGRTMAX; ++number) {
        ::sigaddset(&relayed_, number);
    }
    ::signal(SIGCHLD, SIG_DFL); // a parent that ignores it would otherwise take the exit status away
    ::sigprocmask(SIG_BLOCK, &relayed_, &original_);
}

void SignalRelay::restore_for_command() const
{
    ::sigprocmask(SIG_SETMASK, &original_, nullptr);
}

int SignalRelay::wait_for(pid_t child) const
{
    for (;;) {
        siginfo_t info{};
        const int number = ::sigwaitinfo(&relayed_, &info);
        if (number == SIGCHLD) {
            if (const std::optional<int> status = reap_until(child)) {
                return *status;
            }
        } else if (number > 0 && info.si_code != SI_KERNEL) {
            // What the terminal sends goes to the whole process group, so the command has it already.
            ::kill(child, number);
        }
    }
}

} // namespace switchlab
