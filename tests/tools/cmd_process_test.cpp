// SPDX-License-Identifier: Apache-2.0
#include "support/daemon.h"
#include "support/output.h"
#include "support/spawned.h"
#include "support/tool.h"

namespace {

using namespace switchcfg::testing;
using ::testing::HasSubstr;

TEST(CmdPs, ShowsWhoMatches)
{
    const Spawned first{"sleep", "1001"};
    const Spawned rude{"sh", "-c", "sleep 1010; :", "\033[2J"};
    const Spawned second{"sleep", "1002"};
    const json found = json::parse(tool("ps --regex '^sleep 1001' --json").out);
    ASSERT_EQ(found.size(), 1U) << "and not the tool itself";
    EXPECT_EQ(
        found[0], (json{{"pid", first.pid()}, {"ppid", ::getpid()}, {"name", "sleep"}, {"command", "sleep 1001"}}));
    EXPECT_GE(json::parse(tool("ps sleep --json").out).size(), 2U);
    EXPECT_GE(json::parse(tool("ps --json").out).size(), 3U);
    EXPECT_THAT(tool("ps --regex '^sh -c sleep 1010; :'").out, HasSubstr("sleep 1010; : ?[2J\n"))
        << "nothing that drives a terminal";
    expect_refused("ps sleeping", "no process has the name 'sleeping'");
}

TEST(CmdKill, SignalsWhoMatches)
{
    Spawned sleeper{"sleep", "1003"};
    EXPECT_EQ(tool("kill --regex '^sleep 1003' -s SIGUSR1 --json").out, "{\n  \"signalled\": 1\n}\n");
    EXPECT_EQ(WTERMSIG(sleeper.join()), SIGUSR1);
    Spawned other{"sleep", "1004"};
    EXPECT_EQ(tool("kill sleep -s 9").out, "1 signalled\n");
    EXPECT_EQ(WTERMSIG(other.join()), SIGKILL);
    EXPECT_EQ(tool("kill sleep").status, 1);
    EXPECT_EQ(tool("kill").status, 2);
    EXPECT_EQ(tool("kill --regex x -s NONE").err, "switchcfg: 'NONE' is no signal: a number, or a name such as TERM\n");

    Spawned named{"sleep", "1006"};
    const std::string pid = std::to_string(named.pid());
    expect_refused("pm kill-proc sleepy --pid " + pid, "process " + pid + " does not exist or is not named 'sleepy'");
    const Outcome killed = tool("pm kill-proc sleep -s KILL");
    EXPECT_EQ(killed.out, "1 signalled\n");
    EXPECT_EQ(killed.err, "Request from user to stop all processes 'sleep' (forced)\n");
    EXPECT_EQ(WTERMSIG(named.join()), SIGKILL);
}

TEST(CmdOpenFiles, FollowsLinksToTheFile)
{
    const int fd = ::open("/tmp/held", O_CREAT | O_RDWR, 0600);
    ASSERT_EQ(::symlink("held", "/tmp/link"), 0);
    const json found = json::parse(tool("open-files /tmp/link --json").out);
    EXPECT_EQ(found[0]["pid"], ::getpid());
    ::close(fd);
    EXPECT_EQ(tool("open-files /tmp/link").status, 1);
    expect_refused("open-files /tmp/missing", "/tmp/missing: No such file or directory");
}

TEST(CmdPm, DrivesTheProcessManager)
{
    expect_refused("pm start worker", "worker: no answer from a process manager on port 61032");
    std::ofstream{"/tmp/list"} << "worker disabled sleep 1005\n";
    const std::string printed = output_of([] {
        const ServingDaemon manager{SWITCHLAB_PM, {"/tmp/list"}};
        expect_refused("pm start worker", "worker: the process manager refuses, with result -3");
        EXPECT_EQ(tool("pm enable worker").status, 0);
        while (tool("ps sleep").status != 0) { // its name appears a moment after it is started
        }
        EXPECT_EQ(json::parse(tool("ps sleep --json").out)[0]["ppid"], manager.pid());
        EXPECT_EQ(tool("pm restart worker --json").out, "{\n  \"result\": 0\n}\n");
        EXPECT_EQ(tool("pm show").status, 0);
        EXPECT_EQ(tool("pm disable worker").status, 0);
        EXPECT_EQ(tool("ps sleep").status, 1);
        EXPECT_EQ(tool("pm start-all").status, 0);
        EXPECT_EQ(tool("pm stop nobody").status, 1);
    });
    EXPECT_THAT(printed, HasSubstr("worker                           running"));
}

TEST(CmdAddress, AnswersAsTheSwitchWould)
{
    struct {
        const char *arguments;
        int status;
        const char *out;
    } const cases[] = {
        {"ip check 010.1.1.1", 0, "yes\n"},
        {"ip check 10.1.1.1/33 --json", 1, "{\n  \"valid\": false\n}\n"},
        {"ip normalize 010.1.1.1/08", 0, "10.1.1.1/8\n"},
        {"ip normalize x", 1, ""},
        {"ip mask 20", 0, "255.255.240.0\n"},
        {"ip mask 33", 1, ""},
        {"ip prefix 255.255.240.0", 0, "20\n"},
        {"ip host 10.0.0.1/24", 0, "yes\n"},
        {"ip host 10.0.0.255 255.255.255.0", 1, "no\n"},
        {"mac parse 0_1b_2_3_4_5 --separator _", 0, "00:1B:02:03:04:05\n"},
        {"mac parse 0:1:2", 1, ""},
        {"uri parse 'tcp://[::1%lo]:80'", 0, "ADDRESS  SCOPE  PORT\n::1      1      80\n"},
        {"uri parse tcp://::1:80", 1, ""},
        {"ip", 2, ""},
    };
    for (const auto &[arguments, status, out] : cases) {
        const Outcome outcome = tool(arguments);
        EXPECT_EQ(outcome.status, status) << arguments;
        EXPECT_EQ(outcome.out, out) << arguments;
        EXPECT_EQ(outcome.err.empty(), *out != '\0') << arguments << outcome.err;
    }
}

} // namespace
