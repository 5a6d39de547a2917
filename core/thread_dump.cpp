// SPDX-License-Identifier: Apache-2.0
// The thread-dump handler: a thread that is sent SIGRTMIN writes where it is, and goes on.
#include "core/crash_handlers.h"
#include "util/owned.h"

#include <switchcfg/startup.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <execinfo.h>
#include <unistd.h>

namespace switchcfg {
namespace {

void on_dump_request(int /*signo*/, siginfo_t * /*info*/, void * /*ucontext*/)
{
    const KeepErrno keep; // the interrupted code goes on
    std::FILE *const dump = std::fopen(CFG_THREAD_DUMP_PATH, "w");
    if (dump == nullptr) {
        return;
    }
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
