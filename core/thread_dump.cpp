// SPDX-License-Identifier: Apache-2.0
// The thread-dump handler: a thread that is sent SIGRTMIN writes where it is, and goes on.
#include "core/crash_handlers.h"
#include "util/owned.h"

#include <switchcfg/startup.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <execinfo.h>
#include <fcntl.h>
#include <unistd.h>

namespace switchcfg {
namespace {

void on_dump_request(int /*signo*/, siginfo_t * /*info*/, void * /*ucontext*/)
{
    const KeepErrno keep; // the interrupted code goes on
    // /tmp is everyone's: what stands there may be somebody's link to a file of ours, or a pipe that nobody reads.
    Descriptor file{::open(
        CFG_THREAD_DUMP_PATH, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0666)};
    std::FILE *const dump = file ? ::fdopen(file.get(), "w") : nullptr;
    if (dump == nullptr) {
        return;
    }
    (void)file.release();
    char *const process = cfg_get_pid_name(::getpid());
    char *const thread = cfg_get_pid_name(::gettid());
    (void)std::fprintf(dump, "Process '%s' (PID %d) thread '%s' (TID %d)\n", process, ::getpid(), thread, ::gettid());
    std::free(process);
    std::free(thread);

    void *frames[report_depth];
    const int depth = ::backtrace(frames, report_depth);
    char **const symbols = ::backtrace_symbols(frames, depth);
    if (symbols == nullptr) {
        (void)std::fputs("error: backtrace_symbols\n", dump);
    } else {
        for (int i = 0; i < depth; ++i) {
            (void)std::fprintf(dump, "%s\n", symbols[i]);
        }
    }
    std::free(static_cast<void *>(symbols));
    (void)std::fclose(dump);
}

} // namespace

void install_thread_dump_handler() noexcept
{
    struct sigaction dump {};
    dump.sa_sigaction = on_dump_request;
    dump.sa_flags = SA_SIGINFO | SA_NODEFER;
    ::sigaction(SIGRTMIN, &dump, nullptr);
}

} // namespace switchcfg
