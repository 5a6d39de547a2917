// SPDX-License-Identifier: Apache-2.0
// Labs of whole units, made inside the lab that the test runs in.
#include "lab/lab_runner.h"
#include "support/comes.h"
#include "support/file_text.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <set>
#include <thread>
#include <unistd.h>

namespace switchcfg::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

Words with(Words words)
{
    words.insert(words.begin(), SWITCHLAB);
    return words;
}

Outcome switchlab(const Words &words)
{
    return run(with(words));
}

// Reads until a line with this text; false when there is none.
bool says(const Program &program, const std::string &text)
{
    std::string line;
    do {
        line = program.line();
    } while (!line.empty() && line.find(text) == std::string::npos);
    return !line.empty();
}

struct Stack {
    explicit Stack(int units, Words options = {})
    {
        options.insert(options.begin(), {"up", "-d", "--units", std::to_string(units)});
        const Outcome up = switchlab(options);
        EXPECT_EQ(up.status, 0) << up.output;
    }
    ~Stack() { (void)switchlab({"down"}); }
    Stack(const Stack &) = delete;
    Stack &operator=(const Stack &) = delete;
};

Outcome on(int unit, const std::string &script)
{
    return switchlab({"shell", std::to_string(unit), "--", "sh", "-c", script});
}

nlohmann::json status()
{
    return nlohmann::json::parse(switchlab({"status", "--json"}).output, nullptr, false);
}

// What a lab could leave behind in the lab that the test runs in.
struct Traces {
    std::set<int> processes;
    std::set<std::string> networks;
    std::string mounts = file_text("/proc/self/mounts");
    std::string doors;

    Traces()
    {
        std::error_code gone;
        for (const auto &entry : fs::directory_iterator("/proc")) {
            const int pid = std::atoi(entry.path().filename().c_str());
            const std::string state = pid > 0 ? file_text(entry.path() / "stat") : "";
            if (!state.empty() && state.find(") Z ") == std::string::npos) {
                processes.insert(pid);
                networks.insert(fs::read_symlink(entry.path() / "ns/net", gone).string());
            }
        }
        std::ifstream sockets{"/proc/net/unix"};
        for (std::string line; std::getline(sockets, line);) {
            doors += line.find("@switchlab/") != std::string::npos ? line : "";
        }
    }
    bool operator==(const Traces &) const = default;
};

TEST(LabStack, ComesUpAsUnitsThatSeeOneAnother)
{
    const Traces before;
    {
        const Stack stack{2, {"--models", "ETH24GX+S+L3,58"}};
        const nlohmann::json state = status();
        ASSERT_TRUE(state.is_object());
        ASSERT_EQ(state["units"].size(), 2U);
        EXPECT_EQ(state["units"][0]["model_name"], "ETH24GX+S+L3");
        const auto &daemon = state["units"][0]["daemons"][1];
        const std::string process = "/proc/" + daemon["host_pid"].dump() + "/cmdline";
        EXPECT_THAT(file_text(process), HasSubstr(daemon["program"].get<std::string>()));
        EXPECT_EQ(on(1, "hostname; test $$ != 1; exit 7"), (Outcome{7, "unit1\n"}));
        EXPECT_THAT(on(0, "switchcfg units").output, HasSubstr("ETH20GP+4GC+2XX+S+L3"));
        EXPECT_EQ(on(0, "touch /tmp/mine /var/mine /mnt/flash/mine").status, 0);
        EXPECT_EQ(on(1, "ls /tmp/mine /var/mine /mnt/flash/mine 2>/dev/null").output, "");
        EXPECT_EQ(on(0, "od -An -tx1 -j 4 -N 4 /dev/flash_env").output.find("ff ff ff ff"), std::string::npos);

        EXPECT_EQ(switchlab({"complete-words", "power", ""}).output, "0\n1\n");
        EXPECT_EQ(switchlab({"complete-words", "shell", "--name", "sw"}).output, "switch\n");
        EXPECT_THAT(switchlab({"up", "-d"}).output, HasSubstr("is up already"));
        EXPECT_THAT(on(2, "true").output, HasSubstr("no unit '2'"));
        EXPECT_THAT(switchlab({"up", "--units", "1", "--models", "1,2"}).output, HasSubstr("2 models for 1 units"));
        EXPECT_EQ(switchlab({"up", "--models", "no-such"}).status, 125);
        EXPECT_EQ(switchlab({"up", "--name", "a/b"}).status, 125);
    }
    EXPECT_TRUE(comes([&] { return Traces{} == before; }));
    EXPECT_THAT(switchlab({"status"}).output, HasSubstr("no lab 'switch' is up here"));
}

TEST(LabStack, EveryEndLeavesNothing)
{
    const Traces before;
    for (const int signal : {SIGINT, SIGHUP, SIGKILL}) {
        Program up{with({"up", "--units", "2"})};
        EXPECT_TRUE(says(up, "Ctrl-C"));
        EXPECT_GT(Traces{}.processes.size(), before.processes.size() + 8);
        up.send(signal);
        EXPECT_EQ(up.exit_status(), signal == SIGKILL ? 128 + SIGKILL : 0);
        EXPECT_TRUE(comes([&] { return Traces{} == before; })) << signal;
    }
    // In the background, and half-way up.
    EXPECT_EQ(switchlab({"up", "-d"}).status, 0);
    ::kill(status()["keeper_pid"].get<int>(), SIGKILL);
    EXPECT_TRUE(comes([&] { return Traces{} == before; }));
    Program up{with({"up", "-d", "--units", "8"})};
    (void)up.line();
    up.send(SIGKILL);
    (void)up.exit_status();
    EXPECT_TRUE(comes([&] { return Traces{} == before; }));
    // The first process of the lab is shot: its keeper says so and ends.
    Program shot{with({"up"})};
    EXPECT_TRUE(says(shot, "Ctrl-C"));
    ::kill(shot.pid() + 1, SIGKILL);
    EXPECT_EQ(shot.exit_status(), 125);
    EXPECT_TRUE(comes([&] { return Traces{} == before; }));
}

TEST(LabStack, TwoLabsStandSideBySide)
{
    const Stack first{1};
    EXPECT_EQ(switchlab({"up", "-d", "--name", "other"}).status, 0);
    EXPECT_EQ(on(0, "true").status, 125) << "which of the two was not said";
    EXPECT_EQ(switchlab({"shell", "--name", "other", "--", "touch", "/tmp/other"}).status, 0);
    EXPECT_EQ(switchlab({"shell", "--name", "switch", "--", "ls", "/tmp"}).output.find("other"), std::string::npos);
    EXPECT_EQ(switchlab({"down", "--name", "other"}).status, 0);
    EXPECT_EQ(on(0, "true").status, 0);
}

std::string checksum(int unit)
{
    return on(unit, "cat /var/run/cfg/running.cfg /var/run/cfg/default.cfg | sha256sum").output;
}

bool all_same(int units)
{
    const std::string first = checksum(0);
    for (int unit = 1; unit < units; ++unit) {
        if (checksum(unit) != first) {
            return false;
        }
    }
    return true;
}

TEST(LabStack, ConfigurationChangesReachAllUnitsFromAnyOfThem)
{
    const Stack stack{3};
    const auto offset = [](int unit) { return on(unit, "switchcfg config get time.utc_offset_minutes").output; };
    // The master's first: what another unit changes before they know of each other can be overruled.
    EXPECT_EQ(on(0, "switchcfg config set time.utc_offset_minutes 180").status, 0);
    EXPECT_TRUE(comes([&] { return offset(1) == "180\n" && offset(2) == "180\n"; }));
    EXPECT_EQ(on(2, "switchcfg config set time.utc_offset_minutes 90").status, 0);
    EXPECT_TRUE(comes([&] { return offset(0) == "90\n" && offset(1) == "90\n"; }));

    // All at once, over the same fields: whatever wins, wins everywhere.
    const std::string storm = "for i in 1 2 3 4 5 6 7 8; do switchcfg config set 'trap.enable['$(($$ % 50 + i))']' "
                              "$(($$ + i & 1)); switchcfg config set time.utc_offset_minutes $((i * $$ % 700)); done";
    std::thread one{[&] { (void)on(1, storm); }};
    std::thread two{[&] { (void)on(2, storm); }};
    (void)on(0, storm);
    one.join();
    two.join();
    EXPECT_TRUE(comes([] { return all_same(3); }));

    // The master goes and another takes its place; when it returns it has to learn, and to forget.
    EXPECT_EQ(switchlab({"power", "0", "off"}).status, 0);
    for (const int unit : {1, 2}) { // what is changed before a unit has noticed can be overruled
        EXPECT_TRUE(
            comes([&] { return on(unit, "switchcfg units").output.find("0     absent") != std::string::npos; }));
    }
    EXPECT_EQ(on(2, "switchcfg config set time.utc_offset_minutes -60").status, 0);
    EXPECT_TRUE(comes([&] { return offset(1) == "-60\n"; }));
    EXPECT_EQ(switchlab({"power", "0", "on"}).status, 0);
    EXPECT_TRUE(comes([&] { return offset(0) == "-60\n" && all_same(3); }));
}

TEST(LabStack, FlashOutlivesThePowerAndMemoryDoesNot)
{
    const Stack stack{1};
    EXPECT_EQ(on(0, "switchcfg env set bootdelay 9 && switchcfg env save && switchcfg env set serial 1").status, 0);
    EXPECT_EQ(on(0, "echo kept >/mnt/flash/note; touch /tmp/lost; sync").status, 0);
    EXPECT_EQ(switchlab({"power", "0", "cycle"}).output, "unit 0 is ready\n");
    EXPECT_EQ(
        on(0, "switchcfg env get bootdelay; switchcfg env get serial; cat /mnt/flash/note").output, "9\n4711\nkept\n");
    EXPECT_NE(on(0, "test -e /tmp/lost").status, 0);
    EXPECT_EQ(on(0, "switchcfg env check >/dev/null").status, 0);

    const int before = status()["units"][0]["host_pid"];
    if (on(0, "test -x /sbin/shutdown").status == 0) {
        (void)on(0, "/sbin/shutdown -r now; sleep 10");
        EXPECT_TRUE(comes([&] {
            const nlohmann::json state = status();
            return state["units"][0]["state"] == "ready" && state["units"][0]["host_pid"] != before;
        }));
    }
    // The manager that starts daemons again is started again itself.
    const int pid = status()["units"][0]["daemons"][0]["host_pid"];
    ::kill(pid, SIGKILL);
    EXPECT_TRUE(comes([&] {
        const nlohmann::json now = status()["units"][0]["daemons"][0];
        return now["running"].get<bool>() && now["host_pid"] != pid;
    }));
}

TEST(LabStack, TheStationHearsOfAUnitThatGoes)
{
    if (::access("/usr/sbin/snmptrapd", X_OK) != 0) {
        GTEST_SKIP() << "snmptrapd is not installed";
    }
    const Stack stack{2};
    EXPECT_EQ(on(0, "switchcfg trap enable stack_detach").status, 0);
    Program follow{with({"logs", "station", "-f"})};
    EXPECT_EQ(switchlab({"power", "1", "off"}).status, 0);
    EXPECT_TRUE(says(follow, "swStackDetachEvent| swUnitNumber.2 = 2"));
    EXPECT_THAT(switchlab({"logs"}).output, HasSubstr("unit0   | stackd: started"));
}

// Whoever is on the stacking link may say anything.
TEST(LabStack, NoiseOnTheStackingLinkHarmsNobody)
{
    const Stack stack{2};
    const std::string noise =
        "for i in 1 2 3 4; do head -c $((i * 13)) /dev/urandom >/dev/udp/fe80::54ff:fe51:5200%atp/61100;"
        "head -c 70000 /dev/urandom >/dev/tcp/fe80::54ff:fe51:5200%atp/61101; done 2>/dev/null;"
        "printf 'SWCF\\0\\0\\0\\1\\0\\0\\0\\0\\377\\377\\377\\360\\0\\0\\0\\20%032d' 0 "
        ">/dev/tcp/fe80::54ff:fe51:5200%atp/61101";
    const int pid = status()["units"][0]["daemons"][1]["host_pid"];
    (void)switchlab({"shell", "1", "--", "bash", "-c", noise});
    EXPECT_EQ(on(1, "switchcfg config set time.utc_offset_minutes 30").status, 0);
    EXPECT_TRUE(comes([] { return on(0, "switchcfg config get time.utc_offset_minutes").output == "30\n"; }));
    EXPECT_EQ(status()["units"][0]["daemons"][1]["host_pid"], pid);
}

TEST(LabStack, NeedsNoRights)
{
    if (!makes_user_namespaces()) {
        GTEST_SKIP() << "no user namespaces are to be had here, as below chroot()";
    }
    std::string user;
    for (const std::string &word :
        plain_user({SWITCHLAB, SWITCHLAB_PM, SWITCHLAB_STACKD, SWITCHLAB_LOGGERD, SWITCHCFG_TOOL, SWITCHLAB_PRELOAD})) {
        user += word + " ";
    }
    fs::copy(SWITCHCFG_LIBRARY, "/tmp/user/libswitchcfg.so.0");
    fs::copy(SWITCHCFG_EQUIPMENT, "/tmp/user/libswitchcfg-equipment.so.0");
    const std::string there = "cd /tmp/user && export LD_LIBRARY_PATH=/tmp/user && ";
    const Outcome outcome = run({"sh", "-c",
        there + user +
            "sh -c './switchlab up -d --units 2 && ./switchlab shell 1 -- switchcfg units --json && "
            "./switchlab logs 0 && ./switchlab status && ./switchlab down'"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, HasSubstr("ready  unit 1"));
    EXPECT_THAT(outcome.output, HasSubstr("loggerd: started"));
    EXPECT_THAT(outcome.output, HasSubstr("'switch' is down"));

    // A unit that cannot be made takes the whole lab back, with the reason.
    fs::remove("/tmp/user/libswitchlab-flash.so");
    if (run({"sh", "-c", user + "sh -c 'test -r /dev/fuse && test -w /dev/fuse'"}).status != 0) {
        const Outcome broken = run({"sh", "-c", there + user + "./switchlab up -d"});
        EXPECT_EQ(broken.status, 125);
        EXPECT_THAT(broken.output, HasSubstr("libswitchlab-flash.so: No such file"));
    }
}

} // namespace
} // namespace switchcfg::testing
