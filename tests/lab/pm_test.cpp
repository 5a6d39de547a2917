// SPDX-License-Identifier: Apache-2.0
// The process manager of the lab, driven by the library's client.
#include <switchcfg/pm_client.h>
#include <switchcfg/process.h>
#include <switchcfg/request_channel.h>

#include "support/daemon.h"
#include "support/output.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <sched.h>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace switchcfg::testing;

constexpr char list_path[] = "/tmp/processes";
constexpr int no_such_process = -2;
constexpr int is_disabled = -3;
constexpr int no_such_command = -4;

// Each process tells its PID through a FIFO when it starts.
class Pm : public ::testing::Test {
  protected:
    Pm()
    {
        ::mkfifo("/tmp/started", 0600);
        started_ = ::fdopen(::open("/tmp/started", O_RDWR), "r");
        const pm_client_settings settings{PM_CLIENT_PORT, nullptr};
        pm_client_init(&settings);
        std::ofstream{list_path} << "# name   state    command\n\n"
                                    "worker   enabled  sh -c 'echo $$ >/tmp/started; exec sleep 1000'\n"
                                    "\t spare   disabled sh -c 'echo $$ >/tmp/started; exec sleep 2000'  \r\n"
                                    "stubborn disabled sh -c 'trap \"\" TERM; echo $$ >/tmp/started; exec sleep 3000'\n"
                                    "hopeless disabled sh -c 'echo $$ >/tmp/started; exit 1'\n";
    }
    ~Pm() override { (void)std::fclose(started_); }

    int next_started()
    {
        char line[32];
        return std::fgets(line, sizeof line, started_) != nullptr ? std::atoi(line) : -1;
    }

  private:
    std::FILE *started_ = nullptr;
};

const std::vector<std::string> arguments{list_path, "--grace", "20", "--back-off", "1"};

TEST_F(Pm, ObeysEveryCommand)
{
    const Daemon manager{SWITCHLAB_PM, arguments};
    ASSERT_TRUE(manager.ready());
    const auto expect_end = [this](auto call) {
        const int pid = next_started();
        EXPECT_EQ(call("worker"), 0);
        EXPECT_EQ(pid_exists(pid), 0) << "the answer comes when it is done";
    };
    expect_end(pm_client_restart);
    EXPECT_EQ(pm_client_start("worker"), 0) << "runs already";
    expect_end(pm_client_stop);
    EXPECT_EQ(pm_client_stop("worker"), 0);
    EXPECT_EQ(pm_client_start_all(), 0);
    expect_end(pm_client_kill);
    EXPECT_EQ(pm_client_start("worker"), 0);
    expect_end(pm_client_disable);
    EXPECT_EQ(pm_client_start("worker"), is_disabled);
    EXPECT_EQ(pm_client_restart("worker"), is_disabled);
    EXPECT_EQ(pm_client_enable("spare"), 0);
    const int pid = next_started();
    EXPECT_EQ(pm_client_set_enabling("spare", 0), 0);
    EXPECT_EQ(pid_exists(pid), 0);
    EXPECT_EQ(pm_client_set_enabling("spare", 1), 0);
    EXPECT_EQ(pid_exists(next_started()), 1);
    EXPECT_EQ(pm_client_start("nobody"), no_such_process);
    EXPECT_EQ(pm_client_start(""), no_such_process);
}

TEST_F(Pm, PrintsItsTableBacksOffAndKillsWhatIgnoresTheRequestToEnd)
{
    const std::string printed = output_of([&] {
        const Daemon manager{SWITCHLAB_PM, arguments};
        ASSERT_TRUE(manager.ready());
        const int worker = next_started();
        EXPECT_EQ(pm_client_enable("stubborn"), 0);
        const int stubborn = next_started();
        EXPECT_EQ(pm_client_restart("stubborn"), 0);
        EXPECT_EQ(pid_exists(stubborn), 0);
        next_started();
        EXPECT_EQ(pm_client_enable("hopeless"), 0);
        for (int start = 0; start < 3; ++start) {
            next_started();
        }
        ::kill(manager.pid(), SIGTERM);
        EXPECT_EQ(pm_client_show_all(), 0);
        EXPECT_EQ(manager.exit_status(), 0);
        EXPECT_EQ(pid_exists(worker), 0);
    });
    for (const char *const part : {"worker                           running  ",
             "spare                            disabled       -        0  sh -c", "stubborn: does not end, is killed\n",
             "hopeless: exited with status 1, starting again in 10 ms\n",
             "hopeless: exited with status 1, starting again in 20 ms\n"}) {
        EXPECT_NE(printed.find(part), std::string::npos) << printed;
    }
}

TEST_F(Pm, KeepsWhatIsEnabledRunningAndLeavesNothingBehind)
{
    int pid = 0;
    {
        const Daemon manager{SWITCHLAB_PM, arguments};
        ASSERT_TRUE(manager.ready());
        pid = next_started();
        for (int round = 0; round < 3; ++round) {
            EXPECT_EQ(::kill(pid, SIGKILL), 0);
            const int next = next_started();
            EXPECT_NE(next, pid);
            EXPECT_EQ(pid_exists(pid), 0);
            pid = next;
        }
        EXPECT_EQ(get_parent_pid(pid), manager.pid());
    } // killed
    while (pid_exists(pid) == 1) {
        ::sched_yield();
    }
}

TEST_F(Pm, SurvivesWhateverItIsSent)
{
    const Daemon manager{SWITCHLAB_PM, arguments};
    ASSERT_TRUE(manager.ready());
    next_started();
    std::mt19937 random{7}; // NOLINT(cert-msc32-c,cert-msc51-cpp): the same every time
    for (int i = 0; i < 300; ++i) {
        unsigned char bytes[64];
        for (unsigned char &byte : bytes) {
            byte = static_cast<unsigned char>(random());
        }
        if (i % 3 == 0) { // a known command, with a name that does not end
            const std::uint32_t command = 1 + static_cast<std::uint32_t>(i) % 9;
            std::memcpy(bytes, &command, sizeof command);
            std::memset(bytes + 12, 'w', 32);
        }
        const int fd = daemon_client_req_connect(PM_CLIENT_PORT);
        ASSERT_GE(fd, 0);
        ASSERT_GE(::send(fd, bytes, random() % (sizeof bytes + 1), MSG_NOSIGNAL), 0);
        ::shutdown(fd, SHUT_WR);
        while (::read(fd, bytes, sizeof bytes) > 0) { // until the manager has closed it
        }
        ::close(fd);
    }
    pm_request record{};
    record.command = 77;
    std::strcpy(record.name, "worker");
    ASSERT_EQ(daemon_client_req(PM_CLIENT_PORT, 10, &record, sizeof record), 0);
    EXPECT_EQ(record.result, no_such_command);
    EXPECT_STREQ(record.name, "worker") << "the rest of the record comes back as it was";
    EXPECT_EQ(pm_client_restart("worker"), 0);
    EXPECT_EQ(pid_exists(next_started()), 1);
}

TEST(PmList, IsRefusedWithItsLine)
{
    for (const auto &[text, reason] : {std::pair{"a enabled\n", ":1: process 'a' has no command"},
             {"# x\n\na on true\n", ":3: 'enabled' or 'disabled' expected, not 'on'"},
             {"a enabled true\na disabled true", ":2: process 'a' is listed twice"},
             {"a", ":1: 'enabled' or 'disabled' expected, not ''"},
             {"a2345678901234567890123456789012 enabled true",
                 ":1: name 'a2345678901234567890123456789012' has more"}}) {
        std::ofstream{list_path} << text;
        char *said = nullptr;
        EXPECT_EQ(system_capture(SWITCHLAB_PM " /tmp/processes", nullptr, &said), 1);
        EXPECT_TRUE(std::string{said}.starts_with(std::string{"switchlab-pm: /tmp/processes"} + reason)) << said;
        std::free(said);
    }
    EXPECT_EQ(system_capture(SWITCHLAB_PM " /no/such/file 2>/dev/null", nullptr, nullptr), 1);
}

} // namespace
