// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/process.h>

#include "support/descriptors.h"
#include "support/file_text.h"
#include "support/peer.h"
#include "util/owned.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <unistd.h>

namespace {

using namespace switchcfg::testing;

// Sends the developer trace to a file.
class Run : public ::testing::Test {
  protected:
    Run() { ::setenv("SWITCHCFG_TRACE", "/tmp/trace", 1); }
    // Whether the last line traced is this one, from this function.
    static bool traced(const std::string &function, const std::string &message)
    {
        const std::string all = file_text("/tmp/trace");
        return all.find("systemAPI:") != std::string::npos && all.ends_with(" " + function + "(): " + message + "\n");
    }
};

char *argument(const char *text)
{
    return const_cast<char *>(text);
}

TEST_F(Run, ExecvOnlyTracesHowTheProgramEnded)
{
    const auto shell = [](const char *command) {
        char *const argv[] = {argument("/bin/sh"), argument("-c"), argument(command), nullptr};
        return _execv(argv);
    };
    EXPECT_EQ(shell("exit 3"), 0);
    EXPECT_TRUE(traced("_execv", "/bin/sh: exited, status 3"));
    EXPECT_EQ(shell("kill -9 $$"), 0);
    EXPECT_TRUE(traced("_execv", "/bin/sh: killed by signal 9"));
    char *const missing[] = {argument("sh"), nullptr};
    EXPECT_EQ(_execv(missing), 0) << "not searched in PATH, and not a failure";
    EXPECT_TRUE(traced("_execv", "sh: exited, status 1"));
    std::signal(SIGCHLD, SIG_IGN); // nothing to wait for
    EXPECT_EQ(shell("true"), -1);
    EXPECT_TRUE(traced("_execv", "Waitpid for /bin/sh error 10, No child processes"));
}

TEST_F(Run, ExecvpFailsOnAnExitStatusButNotOnASignal)
{
    const auto shell = [](const char *command) {
        char *const argv[] = {argument("any name"), argument("-c"), argument(command), nullptr};
        return _execvp("sh", argv);
    };
    EXPECT_EQ(shell("exit 0"), 0);
    EXPECT_EQ(shell("exit 3"), -1);
    EXPECT_TRUE(traced("_execvp", "Application sh error 3"));
    EXPECT_EQ(shell("kill -9 $$"), 0);
    char *const argv[] = {nullptr};
    EXPECT_EQ(_execvp("no such program", argv), -1);
    EXPECT_TRUE(traced("_execvp", "Application no such program error 1"));
    std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(shell("true"), -1);
    EXPECT_TRUE(traced("_execvp", "Waitpid for sh error 10, No child processes"));
}

TEST_F(Run, ExecTakesFourteenArgumentsOf38Characters)
{
    const std::string fits(38, 'x');
    const std::string too_long(39, 'x');
    EXPECT_EQ(_exec("sh", "sh", "-c", "echo $1 $# > /tmp/ran", "sh", fits.c_str(), nullptr), 0);
    EXPECT_EQ(file_text("/tmp/ran"), fits + " 1\n");
    const char *const script = "echo ${10} > /tmp/ran";
    EXPECT_EQ(_exec("sh", "sh", "-c", script, "4", "5", "6", "7", "8", "9", "10", "11", "12", "13", "14", nullptr), 0);
    EXPECT_EQ(file_text("/tmp/ran"), "14\n");
    EXPECT_EQ(_exec("sh", "sh", "-c", "echo $1 $# > /tmp/ran", "sh", too_long.c_str(), nullptr), -1);
    EXPECT_EQ(
        _exec("sh", "sh", "-c", script, "4", "5", "6", "7", "8", "9", "10", "11", "12", "13", "14", "15", nullptr), -1);
    EXPECT_EQ(file_text("/tmp/ran"), "14\n") << "nothing was run";
}

TEST_F(Run, SystemfGivesTheRawStatus)
{
    EXPECT_EQ(systemf("exit %d", 3), 3 << 8);
    EXPECT_EQ(systemf("echo %s > %s", std::string(5000, 'x').c_str(), "/tmp/out"), 0);
    EXPECT_EQ(file_text("/tmp/out").size(), 5001U);
}

// What a command printed; (none) for what was not handed over.
struct Captured {
    int result = 0;
    std::string out;
    std::string err;
    bool operator==(const Captured &) const = default;
};

Captured capture(const char *command)
{
    char *out = nullptr;
    char *err = nullptr;
    const int result = system_capture(command, &out, &err);
    const switchcfg::Malloced<char> own_out{out};
    const switchcfg::Malloced<char> own_err{err};
    return {result, out != nullptr ? out : "(none)", err != nullptr ? err : "(none)"};
}

TEST(Capture, TextsAndStatus)
{
    EXPECT_EQ(capture("echo out; echo err 1>&2"), (Captured{0, "out\n", "err\n"}));
    EXPECT_EQ(capture("exit 255"), (Captured{255, "", ""}));
    EXPECT_EQ(capture("echo before; kill -9 $$"), (Captured{-1, "before\n", ""}));
    EXPECT_EQ(capture("/no/such/program 2>/dev/null").result, 127);
    EXPECT_EQ(system_capture("exit 4", nullptr, nullptr), 4);
    char *err_text = nullptr;
    EXPECT_EQ(system_capture("exec 1>/tmp/out; echo out; echo err 1>&2", nullptr, &err_text), 0);
    EXPECT_STREQ(err_text, "err\n");
    std::free(err_text);
}

TEST(Capture, TwoFullPipesDoNotStall)
{
    // Each output is more than any pipe holds, one after the other in both orders, then mixed.
    for (const char *const command :
        {"head -c 2000000 /dev/zero | tr '\\0' e 1>&2; head -c 3000000 /dev/zero | tr '\\0' o",
            "head -c 3000000 /dev/zero | tr '\\0' o; head -c 2000000 /dev/zero | tr '\\0' e 1>&2",
            "(head -c 2000000 /dev/zero | tr '\\0' e 1>&2) & head -c 3000000 /dev/zero | tr '\\0' o; wait"}) {
        EXPECT_TRUE(capture(command) == (Captured{0, std::string(3000000, 'o'), std::string(2000000, 'e')})) << command;
    }
}

TEST(Capture, SurvivesSignalsAndClosedStandardDescriptorsButNotTheLackOfThem)
{
    Peer bare{[](Link &) {
        for (int fd = 0; fd <= 2; ++fd) {
            ::close(fd);
        }
        ::_exit(capture("echo out; echo err 1>&2") == Captured{0, "out\n", "err\n"} ? 0 : 1);
    }};
    EXPECT_EQ(bare.join(), 0);
    struct sigaction action {};
    action.sa_handler = [](int) {};
    ::sigaction(SIGUSR1, &action, nullptr); // without restart
    EXPECT_EQ(capture("for i in 1 2 3 4 5; do kill -USR1 $PPID; echo $i; done").out, "1\n2\n3\n4\n5\n");
    const NoMoreDescriptors none;
    EXPECT_EQ(capture("echo out"), (Captured{-1, "(none)", "(none)"}));
}

TEST(Pipe, BothEndsAreInherited)
{
    int read_end = -1;
    int write_end = -1;
    ASSERT_EQ(pipe_create(&read_end, &write_end), 0);
    EXPECT_EQ(systemf("echo through >&%d", write_end), 0);
    std::array<char, 16> text{};
    EXPECT_EQ(::read(read_end, text.data(), text.size()), 8);
}

TEST(Machine, AdjustmentIsCheckedAndWritten)
{
    EXPECT_EQ(oom_adj_set(::getpid(), 16), -1);
    EXPECT_EQ(oom_adj_set(::getpid(), -18), -1);
    EXPECT_EQ(oom_adj_set(::getpid(), 15), 0);
    EXPECT_EQ(file_text("/proc/self/oom_score_adj"), "1000\n");
    EXPECT_GT(oom_adj_set(99999999, -17), 0) << "the command runs and fails";
}

TEST(Machine, RandomNumbersStayInRange)
{
    std::set<int> seen;
    for (int i = 0; i < 1000; ++i) {
        seen.insert(random_max_n(7));
        EXPECT_EQ(random_max_n(1), 0);
        const int large = random_max_n(2147483647);
        EXPECT_TRUE(large >= 0 && large < 2147483647);
    }
    EXPECT_EQ(seen, (std::set<int>{0, 1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(random_max_n(0), 0);
    EXPECT_EQ(random_max_n(-5), 0);
    for (const auto &[from, to] : {std::pair{0.0, 1e-5}, {1e-6, 1e-6}, {-3.0, -2.0}, {1e-6, -1e30}}) {
        EXPECT_EQ(sleep_random(from, to), 0);
    }
}

} // namespace
