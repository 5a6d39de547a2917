// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/process.h>

#include "support/peer.h"
#include "util/owned.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <set>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using switchcfg::testing::Link;
using switchcfg::testing::Peer;

std::string content(const char *path)
{
    std::ifstream file{path};
    return {std::istreambuf_iterator<char>{file}, {}};
}

// Sends the developer trace to a file.
class Run : public ::testing::Test {
  protected:
    Run() { ::setenv("SWITCHCFG_TRACE", "/tmp/trace", 1); }
    // Whether the last line traced is this one, from this function.
    static bool traced(const std::string &function, const std::string &message)
    {
        const std::string all = content("/tmp/trace");
        const std::string end = " " + function + "(): " + message + "\n";
        return all.find("systemAPI:") != std::string::npos && all.ends_with(end);
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
    EXPECT_EQ(content("/tmp/ran"), fits + " 1\n");
    ::unlink("/tmp/ran");
    EXPECT_EQ(_exec("sh", "sh", "-c", "echo $1 $# > /tmp/ran", "sh", too_long.c_str(), nullptr), -1);
    EXPECT_EQ(_exec("sh", "sh", "-c", "> /tmp/ran", "4", "5", "6", "7", "8", "9", "10", "11", "12", "13", "14", "15",
                  nullptr),
        -1);
    EXPECT_NE(::access("/tmp/ran", F_OK), 0) << "nothing was run";
    EXPECT_EQ(_exec("sh", "sh", "-c", "echo ${10} > /tmp/ran", "4", "5", "6", "7", "8", "9", "10", "11", "12", "13",
                  "14", nullptr),
        0);
    EXPECT_EQ(content("/tmp/ran"), "14\n");
}

TEST_F(Run, SystemfGivesTheRawStatus)
{
    EXPECT_EQ(WEXITSTATUS(systemf("exit %d", 3)), 3);
    EXPECT_EQ(systemf("exit %d", 3), 3 << 8);
    EXPECT_EQ(systemf("echo %s > %s", std::string(5000, 'x').c_str(), "/tmp/out"), 0);
    EXPECT_EQ(content("/tmp/out").size(), 5001U);
}

// What a command printed; (none) for what was not handed over.
struct Captured {
    int result = 0;
    std::string out;
    std::string err;
    explicit Captured(const char *command)
    {
        char *out_text = nullptr;
        char *err_text = nullptr;
        result = system_capture(command, &out_text, &err_text);
        const switchcfg::Malloced<char> own_out{out_text};
        const switchcfg::Malloced<char> own_err{err_text};
        out = out_text != nullptr ? out_text : "(none)";
        err = err_text != nullptr ? err_text : "(none)";
    }
};

TEST(Capture, TextsAndStatus)
{
    const Captured both{"echo out; echo err 1>&2"};
    EXPECT_EQ(both.result, 0);
    EXPECT_EQ(both.out, "out\n");
    EXPECT_EQ(both.err, "err\n");
    const Captured silent{"exit 255"};
    EXPECT_EQ(silent.result, 255);
    EXPECT_EQ(silent.out, "");
    EXPECT_EQ(silent.err, "");
    const Captured killed{"echo before; kill -9 $$"};
    EXPECT_EQ(killed.result, -1);
    EXPECT_EQ(killed.out, "before\n");
    EXPECT_EQ(Captured{"/no/such/program 2>/dev/null"}.result, 127);
    EXPECT_EQ(system_capture("exit 4", nullptr, nullptr), 4);
}

TEST(Capture, OneOutputAloneLeavesTheOther)
{
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
        const Captured big{command};
        EXPECT_EQ(big.result, 0);
        EXPECT_TRUE(big.out == std::string(3000000, 'o')) << command;
        EXPECT_TRUE(big.err == std::string(2000000, 'e')) << command;
    }
}

TEST(Capture, SurvivesSignalsAndClosedStandardDescriptors)
{
    Peer bare{[](Link &) {
        for (int fd = 0; fd <= 2; ++fd) {
            ::close(fd);
        }
        const Captured both{"echo out; echo err 1>&2"};
        ::_exit(both.result == 0 && both.out == "out\n" && both.err == "err\n" ? 0 : 1);
    }};
    EXPECT_EQ(bare.join(), 0);
    struct sigaction action {};
    action.sa_handler = [](int) {};
    ::sigaction(SIGUSR1, &action, nullptr); // without restart
    const Captured interrupted{"for i in 1 2 3 4 5; do kill -USR1 $PPID; echo $i; done"};
    EXPECT_EQ(interrupted.out, "1\n2\n3\n4\n5\n");
}

TEST(Capture, WithoutDescriptorsOrProcessesItFails)
{
    Peer full{[](Link &) {
        while (::dup(0) >= 0) {
        }
        const Captured none{"echo out"};
        ::_exit(none.result == -1 && none.out == "(none)" && none.err == "(none)" ? 0 : 1);
    }};
    EXPECT_EQ(full.join(), 0);
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
    EXPECT_EQ(content("/proc/self/oom_score_adj"), "1000\n");
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
    for (const auto &[from, to] :
        {std::pair{0.0, 0.0}, {0.0, 1e-5}, {1e-6, 1e-6}, {-3.0, -2.0}, {1e-6, -1e30}, {0.0 / 1.0, -0.0}}) {
        EXPECT_EQ(sleep_random(from, to), 0);
    }
}

} // namespace
