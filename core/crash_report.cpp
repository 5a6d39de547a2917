// SPDX-License-Identifier: Apache-2.0
// The crash handler: logs who crashed, where and how it got there, then lets the process die of the same signal.
//
// The report calls the log function of the host program and allocates, in a process that has just proven that something
// in it is wrong. So it runs under guard: a fault inside it, an overrun of what is left of the stack, or a lock that
// will never be given back ends the process with the signal it was about to die of anyway.
#include "core/crash_handlers.h"
#include "core/interrupted_address.h"

#include <switchcfg/startup.h>
#include <switchcfg/vxlog.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <execinfo.h>
#include <sys/time.h>
#include <unistd.h>

namespace switchcfg {
namespace {

constexpr int critical = 2;

cfg_crash_hook *registered_hook = nullptr;

// The crash being reported: its signal, and the thread that reports it.
std::atomic<int> reported_signal{0};
std::atomic<pid_t> reporting_thread{0};

// Where a second fault is handled when the crashed thread has no stack left.
alignas(16) char guard_stack[32 * 1024];

[[noreturn]] void die_of(int signo) noexcept
{
    struct sigaction by_default {};
    by_default.sa_handler = SIG_DFL;
    ::sigaction(signo, &by_default, nullptr);
    sigset_t only;
    ::sigemptyset(&only);
    ::sigaddset(&only, signo);
    ::pthread_sigmask(SIG_UNBLOCK, &only, nullptr);
    ::raise(signo);
    ::_exit(128 + signo); // not reached: the signal was deliverable and fatal
}

// A fault or time-out while a crash is being reported. Another thread that crashes meanwhile has nothing to add: it
// waits for the end of the process, which the time limit guarantees.
void on_failed_report(int signo)
{
    if (signo != SIGALRM && reporting_thread.load() != ::gettid()) {
        while (::tgkill(::getpid(), reporting_thread.load(), 0) == 0) {
            ::pause();
        }
        die_of(signo); // a child that the hook forked: its reporter is not in this process
    }
    die_of(reported_signal.load());
}

constexpr int crash_signals[] = {SIGSEGV, SIGBUS, SIGABRT, SIGILL, SIGFPE};

void guard_the_report() noexcept
{
    stack_t spare{};
    spare.ss_sp = guard_stack;
    spare.ss_size = sizeof guard_stack;
    ::sigaltstack(&spare, nullptr);

    struct sigaction guarded {};
    guarded.sa_handler = on_failed_report;
    guarded.sa_flags = SA_NODEFER | SA_ONSTACK;
    for (const int signo : crash_signals) {
        ::sigaction(signo, &guarded, nullptr);
    }
    ::sigaction(SIGALRM, &guarded, nullptr);
    sigset_t alarm_only;
    ::sigemptyset(&alarm_only);
    ::sigaddset(&alarm_only, SIGALRM);
    ::pthread_sigmask(SIG_UNBLOCK, &alarm_only, nullptr);
    itimerval limit{};
    limit.it_value.tv_sec = CFG_CRASH_REPORT_SECONDS;
    ::setitimer(ITIMER_REAL, &limit, nullptr);
}

// False when this thread must not report: another one is at it.
bool begin_report(int signo) noexcept
{
    pid_t nobody = 0;
    if (!reporting_thread.compare_exchange_strong(nobody, ::gettid())) {
        return false;
    }
    reported_signal.store(signo);
    guard_the_report();
    return true;
}

// backtrace() is called in this very function: the report leaves out entry 0, which must be this handler, and puts the
// interrupted address into entry 1, which is the kernel's trampoline and would hide the function at fault.
void on_crash(int signo, siginfo_t *info, void *ucontext)
{
    if (!begin_report(signo)) {
        on_failed_report(signo);
    }
    cfg_data_bt_handler_init(signo, info, ucontext);

    void *const interrupted = interrupted_address(ucontext);
    char *const name = cfg_get_pid_name(::getpid());
    const std::time_t now = std::time(nullptr);
    vxlog(critical, "Process '%s' (PID %d) received signal %d (code %d). Backtrace generated.", name, ::getpid(), signo,
        info->si_code);
    std::free(name);

    char date[32];
    vxlog_internal(critical, "%s", ::ctime_r(&now, date));
    vxlog_internal(critical, "--- Backtrace start");
    if (signo == SIGSEGV) {
        vxlog_internal(critical, "*** Faulty address is %p, from %p", info->si_addr, interrupted);
    }
    void *frames[report_depth];
    const int depth = ::backtrace(frames, report_depth);
    frames[1] = interrupted;
    char **const symbols = ::backtrace_symbols(frames, depth);
    for (int i = 1; i < depth; ++i) {
        vxlog_internal(critical, "(PID %d) %s", ::getpid(), symbols[i]);
    }
    std::free(static_cast<void *>(symbols));
    vxlog_internal(critical, "--- Backtrace end");
    (void)std::fflush(stdout);
    (void)std::fflush(stderr);
    die_of(signo);
}

} // namespace

void set_crash_hook(cfg_crash_hook *hook) noexcept
{
    registered_hook = hook;
}

void install_crash_handlers() noexcept
{
    // The unwinder is loaded by the first back-trace; loading it in a process that has crashed could wait for ever for
    // the loader's or the allocator's lock.
    void *here[1];
    (void)::backtrace(here, 1);

    struct sigaction report {};
    report.sa_sigaction = on_crash;
    report.sa_flags = SA_SIGINFO | SA_NODEFER;
    // The kernel refuses SIGKILL; tools that list a daemon's requests expect to see it asked for.
    for (const int signo : {SIGSEGV, SIGBUS, SIGABRT, SIGILL, SIGFPE, SIGKILL}) {
        ::sigaction(signo, &report, nullptr);
    }
}

} // namespace switchcfg

int cfg_data_bt_handler_init(int signo, siginfo_t *info, void *ucontext)
{
    const cfg_crash_hook *const hook = switchcfg::registered_hook;
    if (hook != nullptr && hook->handler != nullptr) {
        hook->handler(signo, info, ucontext);
    }
    return 0;
}
