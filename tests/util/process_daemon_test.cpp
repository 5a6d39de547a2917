// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/process.h>

#include "support/file_text.h"
#include "support/peer.h"
#include "support/terminal.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace switchcfg::testing;

constexpr char fifo[] = "/tmp/report";

std::string link_of(int fd)
{
    std::error_code missing;
    return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(fd), missing).string();
}

int count_descriptors()
{
    int count = 0;
    for (int fd = 0; fd < 4096; ++fd) {
        count += ::fcntl(fd, F_GETFD) != -1 ? 1 : 0;
    }
    return count;
}

// The daemon's report comes through a FIFO, as nothing else of it stays open.
TEST(Daemon, RunsInASessionOfItsOwnWithNothingOpen)
{
    ASSERT_EQ(::mkfifo(fifo, 0600), 0);
    Peer launcher{[](Link &) {
        for (int i = 0; i < 3000; ++i) {
            (void)!::dup(0);
        }
        const int result = daemonize();
        const bool alone = ::getsid(0) != ::getpid() && ::tcgetpgrp(0) == -1 && ::open("/dev/tty", O_RDWR) == -1;
        const int open = count_descriptors();
        const bool at_root = std::filesystem::current_path() == "/";
        bool null = true;
        for (int fd = 0; fd <= 2; ++fd) {
            null = null && link_of(fd) == "/dev/null" && (::fcntl(fd, F_GETFL) & O_ACCMODE) == O_RDWR;
        }
        const int report = ::open(fifo, O_WRONLY);
        ::dprintf(report, "%d %d %d %d %d", result, alone, at_root, open, null);
    }};
    EXPECT_EQ(file_text(fifo), "0 1 1 3 1") << "result, alone, at root, descriptors, on /dev/null";
    EXPECT_EQ(launcher.join(), 0) << "the parent ends with status 0";
}

TEST(Daemon, CloseAllLeavesTheStandardOnes)
{
    for (const bool proc : {true, false}) {
        Peer peer{[proc](Link &) {
            rlimit many{2500, 2500};
            ::setrlimit(RLIMIT_NOFILE, &many);
            while (::dup(0) >= 0) {
            }
            if (!proc && ::chroot("/tmp") != 0) {
                ::_exit(99);
            }
            ::close(1000); // the listing itself gets a number in the middle
            close_all();
            ::_exit(count_descriptors());
        }};
        EXPECT_EQ(WEXITSTATUS(peer.join()), 3) << proc;
    }
}

TEST(Daemon, StandardDescriptorsGoToNull)
{
    Peer peer{[](Link &) {
        ::close(0); // so that /dev/null itself is opened on a standard number
        const int before = count_descriptors();
        const int result = stdfds_close();
        const bool null = link_of(0) == "/dev/null" && link_of(1) == "/dev/null" && link_of(2) == "/dev/null";
        ::_exit(result == 0 && null && count_descriptors() == before + 1 ? 0 : 1);
    }};
    EXPECT_EQ(peer.join(), 0);
    Peer without_null{[](Link &) { ::_exit(::chroot("/tmp") == 0 && stdfds_close() == -1 ? 0 : 1); }};
    EXPECT_EQ(without_null.join(), 0);
}

TEST(Daemon, TerminalIsDroppedOnce)
{
    Terminal screen{5, 40, [] {
                        std::signal(SIGHUP, SIG_IGN); // sent to the session whose leader lets go
                        const bool had = ::open("/dev/tty", O_RDWR | O_CLOEXEC) >= 0;
                        const int dropped = ctty_drop();
                        const bool has = ::open("/dev/tty", O_RDWR) >= 0;
                        std::printf("%d %d %d %d", had, dropped, has, ctty_drop());
                    }};
    EXPECT_EQ(screen.rest(), "1 0 0 0");
    EXPECT_EQ(screen.join(), 0);
}

} // namespace
