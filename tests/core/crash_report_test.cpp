// SPDX-License-Identifier: Apache-2.0
// Crashes in children: what they log, and that they die of the signal they crashed with, whatever goes wrong meanwhile.
#include <switchcfg/startup.h>
#include <switchcfg/vxlog.h>

#include "support/file_text.h"
#include "support/peer.h"

#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

// Named in the back-traces.
extern "C" __attribute__((noinline, visibility("default"))) void fault_here(volatile int *where)
{
    *where = 1;
}

namespace {

using namespace switchcfg::testing;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;

constexpr char log_path[] = "/tmp/crash.log";

volatile bool going_on = true; // keeps the compiler from seeing where the recursions below must end

// How this program's log functions behave in a child.
enum class LogMode { writes, crashes, hangs } log_mode = LogMode::writes;

void append_line(const char *format, va_list arguments)
{
    if (log_mode == LogMode::crashes) {
        fault_here(reinterpret_cast<int *>(8));
    }
    while (log_mode == LogMode::hangs) {
        ::pause();
    }
    const int fd = ::open(log_path, O_WRONLY | O_CREAT | O_APPEND, 0600);
    EXPECT_GE(::vdprintf(fd, format, arguments), 0);
    EXPECT_EQ(::write(fd, "\n", 1), 1);
    ::close(fd);
}

} // namespace

extern "C" void vxlog(int, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    append_line(format, arguments);
    va_end(arguments);
}

extern "C" void vxlog_internal(int level, const char *format, ...)
{
    EXPECT_EQ(level, 2);
    va_list arguments;
    va_start(arguments, format);
    append_line(format, arguments);
    va_end(arguments);
}

namespace {

// The signal that ended the child in which `crash` ran after attaching; 0 when it ended otherwise.
int signal_of(const std::function<void()> &crash)
{
    Peer child{[&](Link & /*link*/) {
        if (::chdir("/tmp") != 0 || cfg_init() != 0) {
            ::_exit(1);
        }
        crash();
    }};
    const int status = child.join();
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

TEST(CrashReport, SegmentationFaultIsReportedInOrder)
{
    EXPECT_EQ(signal_of([] {
        ::prctl(PR_SET_NAME, "crasher");
        write_file("/tmp/pid", std::to_string(::getpid()));
        fault_here(reinterpret_cast<int *>(0x18));
    }),
        SIGSEGV);
    const auto lines = lines_of(file_text(log_path));
    ASSERT_GE(lines.size(), 8U);
    const std::string id = file_text("/tmp/pid");
    EXPECT_EQ(lines[0], "Process 'crasher' (PID " + id + ") received signal 11 (code 1). Backtrace generated.");
    EXPECT_THAT(lines[1], MatchesRegex("[A-Z][a-z]+ [A-Z][a-z]+ +[0-9]+ [0-9:]+ [0-9]+"));
    EXPECT_EQ(lines[2], "") << "the time keeps its newline";
    EXPECT_EQ(lines[3], "--- Backtrace start");
    EXPECT_THAT(lines[4], MatchesRegex("\\*\\*\\* Faulty address is 0x18, from 0x[0-9a-f]+"));
    const std::string interrupted = lines[4].substr(lines[4].rfind("0x"));
    EXPECT_THAT(lines[5], HasSubstr("(PID " + id + ") "));
    EXPECT_THAT(lines[5], HasSubstr("fault_here"));
    EXPECT_THAT(lines[5], HasSubstr("[" + interrupted + "]"));
    EXPECT_EQ(lines.back(), "--- Backtrace end");
    EXPECT_LE(lines.size(), 5U + 14U + 1U);
}

TEST(CrashReport, AbortIsReportedWithoutAFaultyAddressAndStandardStreamsAreFlushed)
{
    EXPECT_EQ(signal_of([] {
        if (std::freopen("/tmp/out", "w", stdout) != nullptr) {
            std::fputs("unflushed", stdout);
        }
        std::abort();
    }),
        SIGABRT);
    EXPECT_EQ(file_text("/tmp/out"), "unflushed");
    EXPECT_THAT(file_text(log_path), HasSubstr("received signal 6"));
    EXPECT_THAT(file_text(log_path), ::testing::Not(HasSubstr("Faulty")));
    EXPECT_THAT(file_text(log_path), HasSubstr("--- Backtrace end"));
}

TEST(CrashReport, HookRunsFirstWithTheSignalsOwnArgumentsAndMayHaveAChildThatCrashes)
{
    static cfg_crash_hook hook{[](int signo, siginfo_t *info, void *context) {
        const pid_t child = ::fork();
        if (child == 0) {
            std::abort();
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        vxlog(5, "hook %d %p %d, child %d", signo, info->si_addr, context != nullptr, WTERMSIG(status));
    }};
    EXPECT_EQ(signal_of([] {
        cfg_init_generic(&hook);
        fault_here(reinterpret_cast<int *>(0x18));
    }),
        SIGSEGV);
    const auto lines = lines_of(file_text(log_path));
    ASSERT_GE(lines.size(), 2U);
    EXPECT_EQ(lines[0], "hook 11 0x18 1, child 6");
    EXPECT_THAT(lines[1], HasSubstr("received signal 11"));
}

TEST(CrashReport, FaultInsideTheHookStillEndsWithTheOriginalSignal)
{
    EXPECT_EQ(cfg_data_bt_handler_init(SIGSEGV, nullptr, nullptr), 0) << "harmless without a hook";
    static cfg_crash_hook empty{nullptr};
    cfg_init_generic(&empty);
    EXPECT_EQ(cfg_data_bt_handler_init(SIGSEGV, nullptr, nullptr), 0);
    static cfg_crash_hook hook{[](int, siginfo_t *, void *) { fault_here(reinterpret_cast<int *>(0x18)); }};
    EXPECT_EQ(signal_of([] {
        cfg_init_generic(&hook);
        std::abort();
    }),
        SIGABRT);
}

TEST(CrashReport, EachSignalEndsTheProcessWithItselfThoughTheLogFunctionCrashesOrHangs)
{
    for (const LogMode mode : {LogMode::writes, LogMode::crashes, LogMode::hangs}) {
        for (const int signo : {SIGSEGV, SIGBUS, SIGABRT, SIGILL, SIGFPE}) {
            if (mode != LogMode::hangs || signo == SIGFPE) { // which takes seconds
                EXPECT_EQ(signal_of([=] {
                    log_mode = mode;
                    ::raise(signo);
                }),
                    signo);
            }
        }
    }
}

TEST(CrashReport, HangIsCutOffWithTheAlarmBlockedToo)
{
    EXPECT_EQ(signal_of([] {
        sigset_t all;
        ::sigfillset(&all);
        ::sigdelset(&all, SIGSEGV); // a blocked fault would be fatal at once
        ::pthread_sigmask(SIG_BLOCK, &all, nullptr);
        log_mode = LogMode::hangs;
        fault_here(reinterpret_cast<int *>(8));
    }),
        SIGSEGV);
}

TEST(CrashReport, ThreadsThatCrashTogetherLeaveOneWholeReport)
{
    EXPECT_EQ(signal_of([] {
        std::jthread threads[8];
        for (std::jthread &thread : threads) {
            thread = std::jthread{[] { fault_here(reinterpret_cast<int *>(0x18)); }};
        }
    }),
        SIGSEGV);
    const std::string log = file_text(log_path);
    EXPECT_THAT(log, HasSubstr("fault_here"));
    EXPECT_EQ(log.find("--- Backtrace start"), log.rfind("--- Backtrace start"));
    EXPECT_THAT(log, HasSubstr("--- Backtrace end"));
}

std::size_t stack_left = 0;

// Calls itself until `stack_left` bytes of the stack remain, then aborts.
[[gnu::noinline]] void abort_with_stack_left(const char *bottom)
{
    volatile char here[256];
    here[0] = 0;
    if (going_on && static_cast<std::size_t>(const_cast<const char *>(&here[0]) - bottom) > stack_left + 1024) {
        abort_with_stack_left(bottom);
    } else {
        ::raise(SIGABRT);
    }
    here[1] = 0; // keeps the call from becoming a jump
}

[[gnu::noinline]] int overrun_the_stack(int depth)
{
    volatile char here[512];
    here[0] = static_cast<char>(depth);
    return going_on ? overrun_the_stack(depth + 1) + here[0] : 0;
}

// Runs `body` on a thread whose stack is `size` bytes, with a guard below its bottom.
void on_stack_of(std::size_t size, void (*body)(const char *bottom))
{
    pthread_attr_t attributes;
    ::pthread_attr_init(&attributes);
    ::pthread_attr_setstacksize(&attributes, size);
    pthread_t thread{};
    const auto run = [](void *function) -> void * {
        pthread_attr_t own;
        void *bottom = nullptr;
        std::size_t all = 0;
        ::pthread_getattr_np(::pthread_self(), &own);
        ::pthread_attr_getstack(&own, &bottom, &all);
        reinterpret_cast<void (*)(const char *)>(function)(static_cast<const char *>(bottom));
        return nullptr;
    };
    ::pthread_create(&thread, &attributes, run, reinterpret_cast<void *>(body));
    ::pthread_join(thread, nullptr);
}

TEST(CrashReport, LittleStackLeftStillEndsWithTheOriginalSignal)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizer's own handling of small stacks comes first";
#endif
    // From enough for the kernel's signal frame but not for the report, to enough for both.
    for (const std::size_t left : {16 * 1024, 96 * 1024}) {
        EXPECT_EQ(signal_of([left] {
            stack_left = left;
            on_stack_of(256 * 1024, abort_with_stack_left);
        }),
            SIGABRT);
    }
}

TEST(CrashReport, OverrunOfTheWholeStackEndsWithSegmentationFault)
{
    EXPECT_EQ(signal_of([] { overrun_the_stack(0); }), SIGSEGV);
}

TEST(ThreadDump, WritesWhereTheThreadIsAndGoesOn)
{
    write_file(CFG_THREAD_DUMP_PATH, std::string(100000, 'x'));
    Peer child{[](Link &link) {
        ::prctl(PR_SET_NAME, "dumped");
        cfg_init();
        std::thread worker{[&] {
            ::prctl(PR_SET_NAME, "worker");
            errno = 4711;
            ::raise(SIGRTMIN);
            if (errno == 4711) {
                link.tell();
            }
            link.wait();
        }};
        worker.join();
        ::unlink(CFG_THREAD_DUMP_PATH);
        ::mkdir(CFG_THREAD_DUMP_PATH, 0755);
        ::raise(SIGRTMIN);
        link.tell();
    }};
    ASSERT_TRUE(child.await());
    const auto lines = lines_of(file_text(CFG_THREAD_DUMP_PATH));
    ASSERT_GE(lines.size(), 3U);
    EXPECT_LT(file_text(CFG_THREAD_DUMP_PATH).size(), 10000U) << "it replaces the one before";
    EXPECT_THAT(lines[0], MatchesRegex("Process 'dumped' \\(PID " + std::to_string(child.pid()) +
                                       "\\) thread 'worker' \\(TID [0-9]+\\)"));
    EXPECT_THAT(lines, ::testing::Contains(HasSubstr("libswitchcfg.so"))) << "entry 0, the handler, is included";
    child.go();
    EXPECT_TRUE(child.await()) << "the process keeps running, though the next dump cannot be written";
}

} // namespace
