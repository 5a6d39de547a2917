// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/files.h>

#include "support/error_of.h"
#include "support/file_text.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

using namespace switchcfg::testing;

constexpr char path[] = "/tmp/file_of_this_test";

TEST(Files, WrittenFileHasExactlyTheBuffer)
{
    ::umask(022);
    EXPECT_EQ(file_exists(path), 0);
    EXPECT_EQ(error_of(file_size(path)), ENOENT);
    ASSERT_EQ(file_write(path, "a longer text", 13), 0);
    EXPECT_EQ(file_exists(path), 1);
    EXPECT_EQ(file_size(path), 13);
    struct stat info {};
    ASSERT_EQ(::stat(path, &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0644U);
    ASSERT_EQ(file_write(path, "short", 5), 0);
    EXPECT_EQ(file_text(path), "short");
    const int fd = ::open(path, O_RDONLY);
    EXPECT_EQ(fd_size(fd), 5);
    EXPECT_EQ(file_write(path, nullptr, 0), 0);
    EXPECT_EQ(fd_size(fd), 0);
    constexpr std::int64_t large = (std::int64_t{3} << 30) + 1;
    ASSERT_EQ(::truncate(path, large), 0);
    EXPECT_EQ(fd_size(fd), large);
    ASSERT_EQ(::symlink(path, "/tmp/link_of_this_test"), 0);
    EXPECT_EQ(file_size("/tmp/link_of_this_test"), large);
    ::close(fd);
    EXPECT_EQ(fd_size(fd), -1);
    ::unlink(path);
    EXPECT_EQ(file_exists("/tmp/link_of_this_test"), 0);
    EXPECT_EQ(file_exists("/tmp"), 1);
}

TEST(Files, FailedWritesAreReported)
{
    for (const auto &[where, why] : {std::pair{"/tmp/no/such/folder", ENOENT}, {"/tmp", EISDIR}, {"/dev/full", ENOSPC},
             {static_cast<const char *>(nullptr), EFAULT}}) {
        EXPECT_EQ(error_of(file_write(where, "x", 1)), why);
    }
    EXPECT_EQ(file_exists(nullptr), 0);
    EXPECT_EQ(file_size(nullptr), -1);
    // A limit stands for a full disk: the first part fits, the rest does not.
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{4, RLIM_INFINITY};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    EXPECT_EQ(error_of(file_write(path, "12345678", 8)), EFBIG);
}

TEST(Files, WalkVisitsEachEntryAndStopsWhenTold)
{
    ASSERT_EQ(::mkdir("/tmp/walk", 0700), 0);
    for (const char *const name : {"/tmp/walk/a", "/tmp/walk/b", "/tmp/walk/.hidden"}) {
        ASSERT_EQ(file_write(name, nullptr, 0), 0);
    }
    std::vector<std::string> seen;
    const auto note = [](const char *name, void *list) {
        static_cast<std::vector<std::string> *>(list)->emplace_back(name);
        errno = EIO; // what a callback leaves behind is not the walk's failure
        return 0;
    };
    EXPECT_EQ(dir_iterate("/tmp/walk", note, &seen), 0);
    EXPECT_THAT(seen, ::testing::UnorderedElementsAre(".", "..", "a", "b", ".hidden"));

    int calls = 0;
    const auto stop = [](const char *, void *count) { return ++*static_cast<int *>(count) == 2 ? -7 : 0; };
    EXPECT_EQ(dir_iterate("/tmp/walk", stop, &calls), -7);
    EXPECT_EQ(calls, 2);
    for (const auto &[where, why] :
        {std::pair{"/tmp/walk/a", ENOTDIR}, {"/tmp/walk/none", ENOENT}, {static_cast<const char *>(nullptr), EFAULT}}) {
        EXPECT_EQ(error_of(dir_iterate(where, note, &seen)), why);
    }
}

} // namespace
