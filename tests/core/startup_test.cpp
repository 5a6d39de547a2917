// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/config_region.h>
#include <switchcfg/locks.h>
#include <switchcfg/startup.h>
#include <switchcfg/status.h>

#include "core/config_layout.h"
#include "core/status_layout.h"
#include "support/file_text.h"
#include "support/peer.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace switchcfg;
using switchcfg::testing::Link;
using switchcfg::testing::Peer;

struct sigaction disposition(int signo)
{
    struct sigaction now {};
    ::sigaction(signo, nullptr, &now);
    return now;
}

std::string link_of(int fd)
{
    return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(fd));
}

TEST(Startup, AttachesEverythingAndIsIdempotent)
{
    ASSERT_EQ(cfg_init(), 0);
    void *const running = cfg_get_cfg();
    EXPECT_NE(running, nullptr);
    EXPECT_NE(cfg_get_default_cfg(), nullptr);
    ASSERT_NE(get_status(), nullptr);
    EXPECT_EQ(load(static_cast<std::uint8_t *>(get_status()), status_layout::max_unit_count), 8);
    EXPECT_EQ(cfg_init(), 0);
    EXPECT_EQ(cfg_get_cfg(), running);

    EXPECT_EQ(disposition(SIGINT).sa_handler, SIG_IGN);
    EXPECT_EQ(disposition(SIGQUIT).sa_handler, SIG_IGN);
    for (const int signo : {SIGSEGV, SIGBUS, SIGABRT, SIGILL, SIGFPE, SIGRTMIN}) {
        EXPECT_EQ(
            disposition(signo).sa_flags & (SA_SIGINFO | SA_NODEFER | SA_RESTART | SA_ONSTACK), SA_SIGINFO | SA_NODEFER)
            << signo;
    }
    rlimit core{};
    ::getrlimit(RLIMIT_CORE, &core);
    EXPECT_EQ(core.rlim_cur, RLIM_INFINITY);
    EXPECT_EQ(core.rlim_max, RLIM_INFINITY);
}

TEST(Startup, LocksAreOpenedInTheirOrderAndClosedAgain)
{
    ASSERT_EQ(cfg_init(), 0);
    const cfg_lock_index order[] = {CFG_LOCK_CFG, CFG_LOCK_FW, CFG_LOCK_TRAPS, CFG_LOCK_DEBUGS, CFG_LOCK_EAPS,
        CFG_LOCK_PL, CFG_LOCK_CLI_REG, CFG_LOCK_SYNC};
    int previous = -1;
    for (const cfg_lock_index index : order) {
        EXPECT_EQ(link_of(cfg_lock_table[index].fd), cfg_lock_table[index].path);
        EXPECT_GT(cfg_lock_table[index].fd, previous);
        previous = cfg_lock_table[index].fd;
    }
    EXPECT_EQ(link_of(DCLockGetSetFileFD), "/tmp/dcGetSetLock");
    EXPECT_EQ(link_of(IpmcLockFileFD), "/tmp/ipmclock");
    EXPECT_GT(DCLockGetSetFileFD, previous);
    EXPECT_GT(IpmcLockFileFD, DCLockGetSetFileFD);

    const int command_lock = DCLockGetSetFileFD;
    EXPECT_EQ(cfg_exit(), 0);
    for (const cfg_lock &lock : cfg_lock_table) {
        EXPECT_EQ(lock.fd, -1);
    }
    EXPECT_EQ(DCLockGetSetFileFD, command_lock) << "the word keeps the closed number";
    EXPECT_EQ(::fcntl(command_lock, F_GETFD), -1);
    EXPECT_EQ(cfg_get_cfg(), nullptr);
    EXPECT_EQ(get_status(), nullptr);
    EXPECT_EQ(cfg_exit(), 0);
    EXPECT_EQ(cfg_init(), 0) << "a process may attach again";
}

TEST(Startup, ExitWithoutInitDoesNothing)
{
    cfg_lock_table[CFG_LOCK_CFG].fd = 12345;
    EXPECT_EQ(cfg_exit(), 0);
    EXPECT_EQ(cfg_lock_table[CFG_LOCK_CFG].fd, 12345);
}

TEST(Startup, KeepsAMaximumUnitCountThatIsSet)
{
    ASSERT_EQ(status_init(), 0);
    store(static_cast<std::uint8_t *>(get_status()), status_layout::max_unit_count, 3);
    ASSERT_EQ(cfg_init(), 0);
    EXPECT_EQ(load(static_cast<std::uint8_t *>(get_status()), status_layout::max_unit_count), 3);
}

TEST(Startup, FailsWithoutTheFolderAndHoldsWhatItGot)
{
    std::filesystem::remove_all("/var/run/cfg");
    EXPECT_EQ(cfg_init(), -1);
    EXPECT_GE(cfg_lock_table[CFG_LOCK_SYNC].fd, 0);
    EXPECT_NE(get_status(), nullptr);
    std::filesystem::create_directory("/var/run/cfg");
    EXPECT_EQ(cfg_init(), 0) << "a later call runs the whole sequence again";
}

TEST(Startup, AFailedSecondMappingLeavesTheFirstSoTheNextAttemptIsRefused)
{
    std::filesystem::create_directory(CFG_DEFAULT_PATH);
    EXPECT_EQ(cfg_init(), -1);
    EXPECT_NE(cfg_get_cfg(), nullptr);
    std::filesystem::remove(CFG_DEFAULT_PATH);
    EXPECT_EQ(cfg_init(), -1);
    cfg_data_cfg_unmap();
    EXPECT_EQ(cfg_init(), 0);
}

TEST(Startup, TenProcessesAtOnceAgreeOnMissingFiles)
{
    std::vector<std::unique_ptr<Peer>> peers;
    for (int i = 0; i < 10; ++i) {
        peers.push_back(std::make_unique<Peer>([i](Link &link) {
            link.wait();
            if (cfg_init() != 0) {
                ::_exit(1);
            }
            static_cast<volatile char *>(cfg_get_cfg())[i * 2000003] = static_cast<char>(i + 1);
            link.tell();
            link.wait();
            for (int other = 0; other < 10; ++other) {
                if (static_cast<volatile char *>(cfg_get_cfg())[other * 2000003] != other + 1) {
                    ::_exit(2);
                }
            }
        }));
    }
    for (const auto &peer : peers) {
        peer->go();
    }
    for (const auto &peer : peers) {
        ASSERT_TRUE(peer->await());
    }
    for (const auto &peer : peers) {
        peer->go();
    }
    for (const auto &peer : peers) {
        EXPECT_EQ(peer->join(), 0);
    }
    EXPECT_EQ(std::filesystem::file_size(CFG_RUNNING_PATH), 21707629U);
    EXPECT_EQ(std::filesystem::file_size("/var/status"), 11272288U);
}

TEST(Startup, AppliedMarkIsAFile)
{
    EXPECT_EQ(cfg_initial_apply_done(), 0);
    switchcfg::testing::write_file("/var/cfg_has_been_applied", "");
    EXPECT_EQ(cfg_initial_apply_done(), 1);
}

TEST(TimeZone, FollowsTheOffsetWithBothSigns)
{
    ::unsetenv("TZ");
    updateTZ();
    EXPECT_EQ(::getenv("TZ"), nullptr) << "nothing is mapped yet";
    ASSERT_EQ(cfg_data_cfg_map(), 0);
    const struct {
        int minutes;
        const char *zone;
    } cases[] = {{0, "STD0:0"}, {180, "STD-3:0"}, {-90, "STD1:30"}, {330, "STD-5:-30"}, {INT32_MIN, "STD35791394:8"}};
    for (const auto &[minutes, zone] : cases) {
        store(static_cast<std::uint8_t *>(cfg_get_cfg()), config_layout::utc_offset_minutes, minutes);
        updateTZ();
        EXPECT_STREQ(::getenv("TZ"), zone);
    }
    store(static_cast<std::uint8_t *>(cfg_get_cfg()), config_layout::utc_offset_minutes, 180);
    updateTZ();
    const time_t epoch = 0;
    EXPECT_EQ(::localtime(&epoch)->tm_hour, 3);
}

TEST(ProcessName, IsTheKernelsOwnOrUnknown)
{
    ::prctl(PR_SET_NAME, "a name (odd)");
    std::unique_ptr<char, decltype(&std::free)> name{cfg_get_pid_name(::getpid()), &std::free};
    EXPECT_STREQ(name.get(), "a name (odd)");
    name.reset(cfg_get_pid_name(0x7ffffff0));
    EXPECT_STREQ(name.get(), "unknown");
}

} // namespace
