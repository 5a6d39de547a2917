// SPDX-License-Identifier: Apache-2.0
// A command line of the shell that is fed a text.
#ifndef SWITCHCFG_UTIL_PAGER_COMMAND_H
#define SWITCHCFG_UTIL_PAGER_COMMAND_H

#include "util/owned.h"

#include <csignal>
#include <cstdio>
#include <ctime>
#include <switchcfg/export.h>

namespace switchcfg {

// While it lives, writing to a program that has ended fails with EPIPE and raises nothing. Make it after the program
// was started, which would inherit the blocked signal.
class PipeSignalHeld {
  public:
    PipeSignalHeld() noexcept
    {
        sigset_t pending;
        (void)::sigemptyset(&pipe_signal_);
        (void)::sigaddset(&pipe_signal_, SIGPIPE);
        (void)::sigpending(&pending);
        was_pending_ = ::sigismember(&pending, SIGPIPE) == 1;
        (void)::pthread_sigmask(SIG_BLOCK, &pipe_signal_, &before_);
    }
    ~PipeSignalHeld()
    {
        const KeepErrno keep;
        constexpr timespec at_once{};
        if (!was_pending_) {
            (void)::sigtimedwait(&pipe_signal_, nullptr, &at_once);
        }
        (void)::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    PipeSignalHeld(const PipeSignalHeld &) = delete;
    PipeSignalHeld &operator=(const PipeSignalHeld &) = delete;

  private:
    sigset_t pipe_signal_;
    sigset_t before_;
    bool was_pending_;
};

inline const char *text_or_empty(const char *text) noexcept
{
    return text != nullptr ? text : "";
}

// The formatted command line; null when memory is out.
Malloced<char> command_line(const char *format, ...) noexcept SWITCHCFG_PRINTF(1, 2);

// Starts the command, lets `write` fill its standard input, and waits for it. When it cannot be started the text is
// dropped.
template<typename Write>
void feed_command(const char *command, Write &&write) noexcept
{
    std::FILE *const input = command != nullptr ? ::popen(command, "w") : nullptr; // NOLINT(cert-env33-c): the job
    if (input == nullptr) {
        return;
    }
    const PipeSignalHeld held;
    write(input);
    (void)std::fflush(input);
    (void)::pclose(input);
}

} // namespace switchcfg

#endif
