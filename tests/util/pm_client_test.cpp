// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/pm_client.h>
#include <switchcfg/request_channel.h>
#include <switchcfg/robust_io.h>

#include "support/peer.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace switchcfg::testing;

// The last line logged, behind its priority.
std::array<char, 256> logged{};

void remember(int priority, const char *format, ...)
{
    logged = {static_cast<char>('0' + priority), ' '};
    std::va_list arguments;
    va_start(arguments, format);
    (void)std::vsnprintf(logged.data() + 2, logged.size() - 2, format, arguments);
    va_end(arguments);
}

void set_up(std::uint16_t port, decltype(pm_client_settings::logger) logger = nullptr)
{
    const pm_client_settings settings{port, logger};
    pm_client_init(&settings);
}

// A process manager that listens when this returns.
Peer manager(int (*answer)(void *, int))
{
    return Peer{[answer](Link &link) {
        daemon_server server{PM_CLIENT_PORT, 100000, &link, nullptr, answer};
        server.timer = [](void *told) {
            static_cast<Link *>(told)->tell();
            return 0;
        };
        daemon_server_loop(&server);
    }};
}

// Answers with what it was asked: command, value and length of the name in one number.
int describe(void *, int fd)
{
    pm_request record{};
    if (vx_read(fd, &record, sizeof record) != 0) {
        return -1;
    }
    const std::string name = record.name;
    const bool padded =
        std::all_of(record.name + name.size(), record.name + sizeof record.name, [](char c) { return c == 0; });
    record.result = record.result == 0 && padded
                        ? static_cast<int>(record.command * 10000 + record.value * 100 + name.size())
                        : -99;
    return vx_write(fd, &record, sizeof record);
}

TEST(PmClient, EachRequestCarriesItsCommandNameAndValue)
{
    const Peer describing = manager(describe);
    ASSERT_TRUE(describing.await());
    set_up(PM_CLIENT_PORT);
    EXPECT_EQ(pm_client_start("sntpd"), 10005);
    EXPECT_EQ(pm_client_stop("sntpd"), 20005);
    EXPECT_EQ(pm_client_kill("sntpd"), 30005);
    EXPECT_EQ(pm_client_restart("sntpd"), 40005);
    EXPECT_EQ(pm_client_enable("sntpd"), 50005);
    EXPECT_EQ(pm_client_disable("sntpd"), 60005);
    EXPECT_EQ(pm_client_set_enabling("sntpd", 7), 70705);
    EXPECT_EQ(pm_client_start_all(), 80000);
    EXPECT_EQ(pm_client_show_all(), 90000);
    EXPECT_EQ(pm_client_start(std::string(40, 'x').c_str()), 10031);
    EXPECT_EQ(pm_client_start(nullptr), 10000);
    pm_client_finish();
    EXPECT_EQ(pm_client_start("sntpd"), 10005) << "finishing does nothing";
}

TEST(PmClient, WithoutAProcessManagerItFails)
{
    EXPECT_EQ(pm_client_start("sntpd"), -1) << "not set up";
    {
        const Peer describing = manager(describe);
        ASSERT_TRUE(describing.await());
        set_up(0);
        EXPECT_EQ(pm_client_start("sntpd"), -1);
        pm_client_init(nullptr);
        EXPECT_EQ(pm_client_start_all(), -1);
    }
    set_up(PM_CLIENT_PORT);
    EXPECT_EQ(pm_client_start("sntpd"), -1) << "refused";
    const Peer hasty = manager([](void *, int fd) {
        pm_request record{};
        return vx_read(fd, &record, sizeof record) == 0 ? vx_write(fd, &record, sizeof record - 1) : -1;
    });
    ASSERT_TRUE(hasty.await());
    EXPECT_EQ(pm_client_start("sntpd"), -1) << "the reply is short";
}

TEST(PmClient, KillsAllOfANameButNotItself)
{
    const auto sleeper = [](Link &link) {
        ::prctl(PR_SET_NAME, "victim of this");
        link.tell();
        link.wait();
    };
    Peer first{sleeper};
    Peer second{sleeper};
    ASSERT_TRUE(first.await() && second.await());
    ::prctl(PR_SET_NAME, "victim of this");
    set_up(0, remember);
    EXPECT_EQ(pm_client_kill_proc("victim of this", -1, SIGKILL), 2);
    EXPECT_STREQ(logged.data(), "4 Request from user to stop all processes 'victim of this' (forced)");
    EXPECT_EQ(WTERMSIG(first.join()), SIGKILL);
    EXPECT_EQ(WTERMSIG(second.join()), SIGKILL);
    EXPECT_EQ(pm_client_kill_proc("no such name", -1, SIGTERM), 0);
    EXPECT_STREQ(logged.data(), "4 Request from user to stop all processes 'no such name'");
}

TEST(PmClient, KillsOneOnlyUnderItsName)
{
    Peer victim{[](Link &link) {
        ::prctl(PR_SET_NAME, "victim");
        link.tell();
        link.wait();
        ::prctl(PR_SET_NAME, "two words");
        link.tell();
        link.wait();
    }};
    ASSERT_TRUE(victim.await());
    set_up(0, remember);
    for (const char *const name : {"victi", "victims", "", "Victim", static_cast<const char *>(nullptr)}) {
        EXPECT_EQ(pm_client_kill_proc(name, victim.pid(), SIGKILL), -6);
    }
    for (const int pid : {99999999, 0, -2}) {
        EXPECT_EQ(pm_client_kill_proc("victim", pid, SIGKILL), -6);
    }
    ::prctl(PR_SET_NAME, "myself");
    EXPECT_EQ(pm_client_kill_proc("myself", ::getpid(), SIGKILL), -7);
    EXPECT_STREQ(logged.data(), "");
    victim.go();
    ASSERT_TRUE(victim.await());
    EXPECT_EQ(pm_client_kill_proc("two words", victim.pid(), SIGKILL), -6);
    EXPECT_EQ(pm_client_kill_proc("two", victim.pid(), 12345), -1) << "no such signal";
    set_up(0);
    EXPECT_EQ(pm_client_kill_proc("two", victim.pid(), SIGTERM), 1);
    EXPECT_STREQ(logged.data(), "4 Request from user to stop process 'two'");
    EXPECT_EQ(WTERMSIG(victim.join()), SIGTERM);
}

} // namespace
