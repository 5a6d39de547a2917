// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/locks.h>

#include "support/error_of.h"
#include "support/peer.h"

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

using namespace switchcfg::testing;

constexpr char path[] = "/tmp/lock_of_this_test";

TEST(Locks, TableHasItsLabelsPathsAndClosedDescriptors)
{
    const char *const expected[][2] = {{"CFG", "/tmp/lock_cfg"}, {"FW", "/tmp/lock_fw"}, {"Traps", "/tmp/lock_trap"},
        {"EAPS", "/tmp/lock_eaps"}, {"PL", "/tmp/lock_fpga"}, {"Debugs", "/tmp/lock_debugs"},
        {"Cli_reg", "/tmp/lock_cli_reg"}, {"Sync", "/tmp/lock_sync"}};
    for (int i = 0; i < CFG_LOCK_COUNT; ++i) {
        EXPECT_STREQ(cfg_lock_table[i].name, expected[i][0]);
        EXPECT_STREQ(cfg_lock_table[i].path, expected[i][1]);
        EXPECT_EQ(cfg_lock_table[i].fd, -1);
    }
    EXPECT_EQ(DCLockGetSetFileFD, 0);
    EXPECT_EQ(IpmcLockFileFD, 0);
}

TEST(Locks, SharedHoldersShareAndExcludeTheExclusiveOne)
{
    const int fd = lock_create(path);
    Peer reader{[](Link &link) {
        const int mine = lock_create(path);
        lock_read(mine);
        link.tell();
        link.wait();
        lock_free(mine);
        link.tell();
        link.wait();
    }};
    ASSERT_TRUE(reader.await());
    EXPECT_EQ(lock_try_read(fd), 0);
    EXPECT_EQ(lock_try_write(fd), -1);
    EXPECT_TRUE(errno == EAGAIN || errno == EACCES);
    reader.go();
    ASSERT_TRUE(reader.await());
    EXPECT_EQ(lock_try_write(fd), 0);
    reader.go();
}

TEST(Locks, WaitingWriterIsGrantedWhenTheHolderIsKilled)
{
    const int fd = lock_create(path);
    Peer holder{[](Link &link) {
        lock_write(lock_create(path));
        link.tell();
        link.wait();
    }};
    ASSERT_TRUE(holder.await());
    EXPECT_EQ(lock_try_read(fd), -1);
    Peer waiter{[](Link &link) {
        const int mine = lock_create(path);
        link.tell();
        if (lock_write(mine) == 0) {
            link.tell();
        }
    }};
    ASSERT_TRUE(waiter.await());
    holder.kill9();
    EXPECT_TRUE(waiter.await());
}

TEST(Locks, CompleteOpensLocksAndReportsEachFailure)
{
    ::umask(0);
    int fd = 77;
    EXPECT_EQ(lock_try_complete(&fd, "/tmp/no/such/folder", 1), -1);
    EXPECT_LT(fd, 0);
    EXPECT_EQ(lock_try_complete(&fd, path, 2), -2);
    EXPECT_GE(fd, 0);
    EXPECT_EQ(::fcntl(fd, F_GETFD), -1) << "the descriptor is closed again";
    ASSERT_EQ(lock_try_complete(&fd, path, 1), 0);
    Peer other{[](Link &link) {
        if (lock_try_read(lock_create(path)) == -1) {
            link.tell();
        }
    }};
    EXPECT_TRUE(other.await());
    EXPECT_EQ(lock_try_unlock(fd), 0);
    EXPECT_EQ(::fcntl(fd, F_GETFD), -1);
    EXPECT_EQ(lock_try_unlock(fd), -1);

    struct stat info {};
    ASSERT_EQ(::stat(path, &info), 0) << "the file stays";
    EXPECT_EQ(info.st_mode & 07777, 0600U);
    EXPECT_EQ(lock_create(nullptr), -1);
    EXPECT_EQ(lock_destroy(lock_create(path)), 0);
    for (const auto call : {lock_try_read, lock_try_write, lock_read, lock_write, lock_free, lock_destroy}) {
        EXPECT_EQ(error_of(call(-1)), EBADF);
    }
}

} // namespace
