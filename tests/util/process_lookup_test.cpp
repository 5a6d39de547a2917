// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/process.h>

#include "support/peer.h"
#include "support/spawned.h"
#include "util/owned.h"

#include <csignal>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using switchcfg::Malloced;
using namespace switchcfg::testing;
using ::testing::ElementsAre;

// The entries up to and including the terminator; empty for null.
std::vector<int> entries(std::int32_t *list)
{
    const Malloced<std::int32_t> owned{list};
    std::vector<int> found;
    while (list != nullptr && (found.empty() || found.back() > 0)) {
        found.push_back(list[found.size()]);
    }
    return found;
}

std::string text(char *taken)
{
    const Malloced<char> owned{taken};
    return taken != nullptr ? taken : "(null)";
}

struct Named : Peer {
    explicit Named(const char *name)
        : Peer{[name](Link &link) {
              ::prctl(PR_SET_NAME, name);
              link.tell();
              link.wait();
          }}
    {
        EXPECT_TRUE(await());
    }
};

TEST(ProcessLookup, NamesAreExactWhateverIsInThem)
{
    for (const char *const name : {"plain", "with blank", "a) S 1 (b", "((", "tab\there", "123456789012345"}) {
        const Named peer{name};
        EXPECT_EQ(text(pid_name(peer.pid())), name);
        EXPECT_THAT(entries(pid_by_name(name)), ElementsAre(peer.pid(), 0)) << name;
        EXPECT_THAT(entries(find_pid_by_name(name)), ElementsAre(peer.pid(), 0));
        EXPECT_EQ(process_is_running(name), 1);
        EXPECT_EQ(killall(name, 0), 1);
        EXPECT_EQ(process_is_running((std::string{name} + "6").c_str()), 0);
    }
    const Named peer{"01234567890123456789"};
    EXPECT_EQ(text(pid_name(peer.pid())), "012345678901234");
    EXPECT_TRUE(entries(pid_by_name("01234567890123456789")).empty()) << "the kernel keeps 15 characters";
}

TEST(ProcessLookup, NobodyOfThatName)
{
    EXPECT_EQ(pid_by_name("no such name"), nullptr);
    EXPECT_THAT(entries(find_pid_by_name("no such name")), ElementsAre(-1));
    EXPECT_THAT(entries(find_pid_by_name(nullptr)), ElementsAre(-1));
    EXPECT_EQ(process_is_running("no such name"), 0);
    EXPECT_EQ(killall("no such name", SIGKILL), 0);
    EXPECT_EQ(kill_list(nullptr, 0), 0);
    const std::int32_t list[] = {0, ::getpid(), 99999999, ::getpid(), -1, ::getpid(), 0};
    EXPECT_EQ(kill_list(list, SIGKILL), 0) << "it ends at the first entry that is no process";
    EXPECT_EQ(kill_list(list + 1, 0), 2) << "the one in the middle does not exist";
    EXPECT_EQ(text(pid_name(99999999)), "(null)");
    EXPECT_EQ(text(pid_cmdline(99999999)), "(null)");
    EXPECT_EQ(pid_exists(99999999), 0);
    EXPECT_EQ(pid_exists(-1), 0);
    EXPECT_EQ(pid_exists(::getpid()), 1);
}

TEST(ProcessLookup, ParentBehindTheName)
{
    EXPECT_EQ(get_parent_pid(::getpid()), ::getppid());
    for (const auto &[name, known] : {std::pair{"plain", true}, {"(x)", true}, {")", true}, {"two words", false},
             {"a 1 7", false}, {"a) S 7 (", false}, {"a) S 7", false}}) {
        const Named peer{name};
        EXPECT_EQ(get_parent_pid(peer.pid()), known ? ::getpid() : -1) << name;
    }
    EXPECT_EQ(get_parent_pid(99999999), -1);
}

TEST(ProcessLookup, CommandLineIsJoinedAndCut)
{
    const Spawned sleeper{"sleep", "100"};
    EXPECT_EQ(text(pid_cmdline(sleeper.pid())), "sleep 100");
    const Spawned empty_argument{"sh", "-c", "sleep 100; :", "", "last"};
    EXPECT_EQ(text(pid_cmdline(empty_argument.pid())), "sh -c sleep 100; :  last");
    const std::string longest(300, '1');
    const Spawned cut{"sh", "-c", "sleep 100; :", longest};
    EXPECT_EQ(text(pid_cmdline(cut.pid())), ("sh -c sleep 100; : " + longest).substr(0, 256));
}

TEST(ProcessLookup, ZombieHasANameButNoCommandLine)
{
    Peer zombie{[](Link &) { ::prctl(PR_SET_NAME, "late process"); }};
    siginfo_t info{};
    ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(zombie.pid()), &info, WEXITED | WNOWAIT), 0);
    EXPECT_EQ(text(pid_cmdline(zombie.pid())), "(null)");
    EXPECT_EQ(text(pid_name(zombie.pid())), "late process");
    EXPECT_THAT(entries(pid_by_name("late process")), ElementsAre(zombie.pid(), 0));
    EXPECT_EQ(pid_exists(zombie.pid()), 1);
    EXPECT_EQ(regex_is_running("late"), 0);
    EXPECT_EQ(pid_has_file_open(zombie.pid(), "/dev/null"), 0);
    zombie.join();
}

TEST(ProcessLookup, ExpressionsMatchAnywhereInTheCommandLine)
{
    Spawned first{"sleep", "10101"};
    Spawned second{"sleep", "10102"};
    EXPECT_THAT(
        entries(pid_by_regex("^sleep 1010[12]$")), ::testing::UnorderedElementsAre(first.pid(), second.pid(), 0));
    EXPECT_EQ(entries(pid_by_regex("ep (x|10102)")).front(), second.pid());
    EXPECT_EQ(regex_is_running("sleep 1010[2-9]"), 1);
    EXPECT_EQ(regex_is_running("sleep 1010[3-9]"), 0);
    for (const char *const wrong : {"sleep 1010[3-9]", "(", static_cast<const char *>(nullptr)}) {
        EXPECT_EQ(pid_by_regex(wrong), nullptr);
        EXPECT_EQ(kill_regex(wrong, SIGKILL), 0) << "matches nothing, or is not well formed";
    }
    EXPECT_EQ(kill_regex("^sleep 1010[12]$", SIGTERM), 2);
    EXPECT_TRUE(WIFSIGNALED(first.join()));
    EXPECT_TRUE(WIFSIGNALED(second.join()));
}

TEST(ProcessLookup, FiveHundredProcessesWhileOthersComeAndGo)
{
    Peer churn{[](Link &link) {
        link.tell();
        for (;;) {
            if (const pid_t child = ::fork(); child == 0) {
                ::_exit(0);
            } else if (child > 0) {
                ::waitpid(child, nullptr, 0);
            }
        }
    }};
    ASSERT_TRUE(churn.await());
    int told[2];
    ASSERT_EQ(::pipe(told), 0);
    std::vector<int> expected{0};
    for (int i = 0; i < 500; ++i) {
        const pid_t child = ::fork();
        if (child == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            ::prctl(PR_SET_NAME, "one of many");
            ::_exit(::write(told[1], "", 1) == 1 ? ::pause() : 1);
        }
        char byte = 0;
        ASSERT_EQ(::read(told[0], &byte, 1), 1);
        expected.push_back(child);
    }
    for (int round = 0; round < 5; ++round) {
        EXPECT_THAT(entries(pid_by_name("one of many")), ::testing::UnorderedElementsAreArray(expected));
        EXPECT_EQ(file_is_open("/tmp/nobody has this open"), 0);
    }
    EXPECT_EQ(killall("one of many", SIGKILL), 500);
}

TEST(OpenFiles, AreFoundByTheNameTheKernelShows)
{
    constexpr char path[] = "/tmp/a file";
    const int fd = ::open(path, O_RDWR | O_CREAT, 0600);
    ASSERT_EQ(::symlink(path, "/tmp/link"), 0);
    const int self = ::getpid();
    EXPECT_EQ(pid_has_file_open(self, path), 1);
    EXPECT_EQ(file_is_open(path), self);
    EXPECT_EQ(file_is_open_by_other(path), 0);
    EXPECT_EQ(pid_has_file_open(self, "/tmp/link"), 0);
    EXPECT_EQ(pid_has_file_open(self, "/tmp/./a file"), 0);
    EXPECT_EQ(pid_has_file_open(self, nullptr), 0);
    EXPECT_EQ(pid_has_file_open(99999999, path), -1);
    const Peer other{[](Link &link) {
        link.tell();
        link.wait();
    }};
    ASSERT_TRUE(other.await());
    EXPECT_EQ(file_is_open_by_other(path), other.pid());
    ::close(fd);
    EXPECT_EQ(file_is_open(path), other.pid());
}

TEST(OpenFiles, NamesAreLookedAtUpTo256Bytes)
{
    std::string folder = "/tmp/";
    for (int i = 0; i < 2; ++i) {
        folder += std::string(120, static_cast<char>('a' + i)) + "/";
        ASSERT_EQ(::mkdir(folder.c_str(), 0700), 0);
    }
    const std::string fits = folder + std::string(256 - folder.size(), 'f');
    const std::string longer = folder + std::string(257 - folder.size(), 'g');
    ASSERT_GE(::open(fits.c_str(), O_CREAT | O_RDWR, 0600), 0);
    ASSERT_GE(::open(longer.c_str(), O_CREAT | O_RDWR, 0600), 0);
    EXPECT_EQ(pid_has_file_open(::getpid(), fits.c_str()), 1);
    EXPECT_EQ(pid_has_file_open(::getpid(), longer.c_str()), 0);
}

} // namespace
