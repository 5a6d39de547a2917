// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/config_region.h>
#include <switchcfg/locks.h>
#include <switchcfg/startup.h>
#include <switchcfg/status.h>

#include "core/config_layout.h"
#include "core/status_layout.h"
#include "support/file_text.h"
#include "support/peer.h"
#include "util/owned.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace switchcfg;
using namespace switchcfg::testing;

std::int32_t max_unit_count()
{
    return load(static_cast<std::uint8_t *>(get_status()), status_layout::max_unit_count);
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
    EXPECT_EQ(max_unit_count(), 8);
    store(static_cast<std::uint8_t *>(get_status()), status_layout::max_unit_count, 3);
    EXPECT_EQ(cfg_init(), 0);
    EXPECT_EQ(cfg_get_cfg(), running);

    struct sigaction now {};
    for (const int signo : {SIGINT, SIGQUIT}) {
        ::sigaction(signo, nullptr, &now);
        EXPECT_EQ(now.sa_handler, SIG_IGN);
    }
    for (const int signo : {SIGSEGV, SIGBUS, SIGABRT, SIGILL, SIGFPE, SIGRTMIN}) {
        ::sigaction(signo, nullptr, &now);
        EXPECT_EQ(now.sa_flags & (SA_SIGINFO | SA_NODEFER | SA_RESTART | SA_ONSTACK), SA_SIGINFO | SA_NODEFER) << signo;
    }
    rlimit core{};
    ::getrlimit(RLIMIT_CORE, &core);
    EXPECT_EQ(core.rlim_cur, RLIM_INFINITY);
    EXPECT_EQ(core.rlim_max, RLIM_INFINITY);
    EXPECT_EQ(cfg_exit(), 0);
    EXPECT_EQ(cfg_init(), 0) << "a process may attach again";
    EXPECT_EQ(max_unit_count(), 3) << "a maximum that is set is kept";
}

TEST(Startup, LocksAreOpenedInTheirOrderAndClosedAgain)
{
    cfg_lock_table[CFG_LOCK_CFG].fd = 12345;
    EXPECT_EQ(cfg_exit(), 0);
    EXPECT_EQ(cfg_lock_table[CFG_LOCK_CFG].fd, 12345) << "not without a start";
    ASSERT_EQ(cfg_init(), 0);
    const cfg_lock_index order[] = {CFG_LOCK_CFG, CFG_LOCK_FW, CFG_LOCK_TRAPS, CFG_LOCK_DEBUGS, CFG_LOCK_EAPS,
        CFG_LOCK_PL, CFG_LOCK_CLI_REG, CFG_LOCK_SYNC};
    std::vector<int> opened;
    for (const cfg_lock_index index : order) {
        EXPECT_EQ(link_of(opened.emplace_back(cfg_lock_table[index].fd)), cfg_lock_table[index].path);
    }
    EXPECT_EQ(link_of(opened.emplace_back(DCLockGetSetFileFD)), "/tmp/dcGetSetLock");
    EXPECT_EQ(link_of(opened.emplace_back(IpmcLockFileFD)), "/tmp/ipmclock");
    EXPECT_TRUE(std::ranges::is_sorted(opened));

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
            auto *const region = static_cast<volatile char *>(cfg_get_cfg());
            region[i * 2000003] = static_cast<char>(i + 1);
            link.tell();
            link.wait();
            for (int other = 0; other < 10; ++other) {
                if (region[other * 2000003] != other + 1) {
                    ::_exit(2);
                }
            }
        }));
    }
    std::ranges::for_each(peers, [](const auto &peer) { peer->go(); });
    std::ranges::for_each(peers, [](const auto &peer) { EXPECT_TRUE(peer->await()); });
    std::ranges::for_each(peers, [](const auto &peer) { peer->go(); });
    std::ranges::for_each(peers, [](const auto &peer) { EXPECT_EQ(peer->join(), 0); });
    EXPECT_EQ(std::filesystem::file_size(CFG_RUNNING_PATH), 21707629U);
    EXPECT_EQ(std::filesystem::file_size("/var/status"), 11272288U);
}

TEST(Startup, AppliedMarkIsAFileAndTheProcessNameTheKernels)
{
    EXPECT_EQ(cfg_initial_apply_done(), 0);
    write_file("/var/cfg_has_been_applied", "");
    EXPECT_EQ(cfg_initial_apply_done(), 1);
    ::prctl(PR_SET_NAME, "a name (odd)");
    EXPECT_STREQ(Malloced<char>(cfg_get_pid_name(::getpid())).get(), "a name (odd)");
    EXPECT_STREQ(Malloced<char>(cfg_get_pid_name(0x7ffffff0)).get(), "unknown");
}

TEST(TimeZone, FollowsTheOffsetWithBothSigns)
{
    ::unsetenv("TZ");
    updateTZ();
    EXPECT_EQ(::getenv("TZ"), nullptr) << "nothing is mapped yet";
    ASSERT_EQ(cfg_data_cfg_map(), 0);
    for (const auto &[minutes, zone] : {std::pair{0, "STD0:0"}, {-90, "STD1:30"}, {330, "STD-5:-30"},
             {INT32_MIN, "STD35791394:8"}, {180, "STD-3:0"}}) {
        store(static_cast<std::uint8_t *>(cfg_get_cfg()), config_layout::utc_offset_minutes, minutes);
        updateTZ();
        EXPECT_STREQ(::getenv("TZ"), zone);
    }
    const time_t epoch = 0;
    EXPECT_EQ(::localtime(&epoch)->tm_hour, 3);
}

} // namespace
