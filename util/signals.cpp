// SPDX-License-Identifier: Apache-2.0
// Signal dispositions and masks.
#include <switchcfg/signals.h>

#include <csignal>

namespace {

int set_mask(int how, int signo) noexcept
{
    sigset_t only;
    ::sigemptyset(&only);
    if (::sigaddset(&only, signo) != 0) {
        return -1;
    }
    return ::sigprocmask(how, &only, nullptr);
}

} // namespace

int signal_ignore(int signo) noexcept
{
    return signal_handler(signo, SIG_IGN);
}

int signal_default(int signo) noexcept
{
    return signal_handler(signo, SIG_DFL);
}

int signal_handler(int signo, void (*handler)(int)) noexcept
{
    struct sigaction action {};
    action.sa_handler = handler;
    ::sigemptyset(&action.sa_mask);
    return ::sigaction(signo, &action, nullptr);
}

int signal_block(int signo) noexcept
{
    return set_mask(SIG_BLOCK, signo);
}

int signal_unblock(int signo) noexcept
{
    return set_mask(SIG_UNBLOCK, signo);
}
