// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/debug.h>
#include <switchcfg/locks.h>

#include "support/error_of.h"
#include "support/file_text.h"
#include "support/peer.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <string>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace {

using namespace switchcfg::testing;

constexpr char list_path[] = "/var/run/debug_terminals";

// A pseudo-terminal that shows what was written to it.
class Terminal {
  public:
    Terminal()
    {
        termios raw{};
        ::cfmakeraw(&raw);
        EXPECT_EQ(::openpty(&master_, &slave_, path_.data(), &raw, nullptr), 0) << "no pseudo-terminal";
    }

    const char *path() const { return path_.data(); }
    std::string shown() const
    {
        std::string all;
        std::array<char, 4096> piece;
        pollfd ready{master_, POLLIN, 0};
        while (::poll(&ready, 1, 0) == 1) {
            const ssize_t count = ::read(master_, piece.data(), piece.size());
            if (count <= 0) {
                break;
            }
            all.append(piece.data(), static_cast<std::size_t>(count));
        }
        return all;
    }
    void hang_up() const
    {
        ::close(slave_);
        ::close(master_);
    }

  private:
    std::array<char, 64> path_{};
    int master_ = -1;
    int slave_ = -1;
};

class DebugLines : public ::testing::Test {
  protected:
    DebugLines() { cfg_lock_table[CFG_LOCK_DEBUGS].fd = lock_create(cfg_lock_table[CFG_LOCK_DEBUGS].path); }
    ~DebugLines() override { lock_destroy(std::exchange(cfg_lock_table[CFG_LOCK_DEBUGS].fd, -1)); }
};

TEST_F(DebugLines, ReachTheTerminalsThatEnabledTheirClass)
{
    const Terminal one;
    const Terminal two;
    debug_process(27, "nobody listens");
    ASSERT_EQ(debug_terminal_enable(one.path(), 27), 0);
    ASSERT_EQ(debug_terminal_enable(one.path(), 5), 0);
    ASSERT_EQ(debug_terminal_enable(two.path(), 27), 0);
    debug_process(27, "%s():%d | both", "f", 12);
    debug_process(5, "one\n");
    debug_process(2, "no class begins like another");
    debug_process(-1, "no class");
    EXPECT_EQ(one.shown(), "f():12 | both\r\none\r\n");
    EXPECT_EQ(two.shown(), "f():12 | both\r\n");

    ASSERT_EQ(debug_terminal_disable(one.path(), 27), 0);
    debug_process(27, "two");
    debug_process(5, "one");
    EXPECT_EQ(one.shown(), "one\r\n");
    EXPECT_EQ(two.shown(), "two\r\n");
}

TEST_F(DebugLines, ListIsTextAndGoesWithItsLastTerminal)
{
    const Terminal one;
    std::ofstream{list_path} << "# kept\n/dev/pts/9999 1,x,2";
    EXPECT_EQ(debug_terminal_enable(one.path(), 3), 0);
    EXPECT_EQ(debug_terminal_enable(one.path(), 2147483647), 0);
    EXPECT_EQ(debug_terminal_enable(one.path(), 3), 0);
    EXPECT_EQ(file_text(list_path), std::string{"# kept\n/dev/pts/9999 1,x,2\n"} + one.path() + " 2147483647,3\n");
    EXPECT_EQ(debug_terminal_disable("/dev/pts/9999", 2), 0);
    EXPECT_EQ(debug_terminal_disable(one.path(), DEBUG_CLASS_ALL), 0);
    EXPECT_EQ(file_text(list_path), "# kept\n/dev/pts/9999 1\n");

    std::ofstream{list_path} << one.path() << " 3\n";
    EXPECT_EQ(debug_terminal_disable(one.path(), 3), 0);
    EXPECT_EQ(::access(list_path, F_OK), -1);
    EXPECT_EQ(debug_terminal_disable(one.path(), 3), 0);
}

TEST_F(DebugLines, WrongTerminalsAndFullListsAreRefused)
{
    const Terminal one;
    const std::string too_long = '/' + std::string(255, 'x');
    for (const auto &[path, why] : {std::pair{"", EINVAL}, {"dev/pts/1", EINVAL}, {"/dev/pts 1", EINVAL},
             {"/dev/\n/x", EINVAL}, {too_long.c_str(), EINVAL}, {"/dev/null", ENOTTY}, {"/dev/pts/9999", ENOENT}}) {
        EXPECT_EQ(error_of(debug_terminal_enable(path, 1)), why) << path;
    }
    EXPECT_EQ(debug_terminal_enable(nullptr, 1), -1);
    EXPECT_EQ(debug_terminal_enable(one.path(), -1), -1);
    EXPECT_EQ(debug_terminal_disable(one.path(), -2), -1);

    int classes = 0;
    while (classes < 10000 && debug_terminal_enable(one.path(), 100000 + classes) == 0) {
        ++classes;
    }
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_EQ(classes, (4095 - static_cast<int>(std::strlen(one.path())) - 1) / 7);
    debug_process(100000, "first");
    debug_process(100000 + classes - 1, "last");
    EXPECT_EQ(one.shown(), "first\r\nlast\r\n");

    std::ofstream{list_path, std::ios::app} << std::string(100, '#') << '\n';
    EXPECT_EQ(error_of(debug_terminal_disable(one.path(), 100000)), ENOSPC) << "what does not fit must not be lost";
    debug_process(100000, "still");
    EXPECT_EQ(one.shown(), "still\r\n");
}

TEST_F(DebugLines, NothingElseThanALivingTerminalIsWrittenTo)
{
    Terminal gone;
    const Terminal stays;
    ASSERT_EQ(debug_terminal_enable(gone.path(), 1), 0);
    std::ofstream{"/tmp/precious"} << "precious";
    std::ofstream{list_path, std::ios::app} << "/tmp/precious 1\n/ 1\n/dev/null\n/dev/null \n\n1\n/"
                                            << std::string(300, 'x') << " 1\n"
                                            << stays.path() << " ,1";
    gone.hang_up();
    errno = ENOTBLK;
    debug_process(1, "line");
    EXPECT_EQ(errno, ENOTBLK);
    EXPECT_EQ(stays.shown(), "line\r\n");
    EXPECT_EQ(file_text("/tmp/precious"), "precious");
}

TEST_F(DebugLines, TerminalThatTakesNoMoreIsPassedOver)
{
    const Terminal stuck;
    const Terminal reads;
    ASSERT_EQ(debug_terminal_enable(stuck.path(), 1), 0);
    ASSERT_EQ(debug_terminal_enable(reads.path(), 1), 0);
    const std::string line(2000, 'x');
    for (int i = 0; i < 200; ++i) {
        debug_process(1, "%s", line.c_str());
        EXPECT_EQ(reads.shown(), line.substr(0, 1022) + "\r\n");
    }
    EXPECT_LT(stuck.shown().size(), 200U * 1024U);
}

TEST_F(DebugLines, BackgroundProcessIsNotStoppedByItsTerminal)
{
    const Terminal own;
    ASSERT_EQ(debug_terminal_enable(own.path(), 1), 0);
    Peer leader{[&](Link &link) {
        ::setsid();
        const int fd = ::open(own.path(), O_RDWR);
        termios settings{};
        if (fd < 0 || ::tcgetattr(fd, &settings) != 0) {
            return;
        }
        settings.c_lflag |= TOSTOP;
        ::tcsetattr(fd, TCSANOW, &settings);
        const pid_t background = ::fork();
        if (background == 0) {
            ::setpgid(0, 0);
            debug_process(1, "from behind");
            ::_exit(0);
        }
        int status = 0;
        if (::waitpid(background, &status, WUNTRACED) == background && WIFEXITED(status)) {
            link.tell();
        }
        link.wait();
    }};
    EXPECT_TRUE(leader.await());
    EXPECT_EQ(own.shown(), "from behind\r\n");
}

TEST_F(DebugLines, ListIsReadUnderTheSharedLock)
{
    const Terminal one;
    ASSERT_EQ(debug_terminal_enable(one.path(), 1), 0);
    const auto while_held_elsewhere = [&](int (*take)(int)) {
        Peer holder{[&](Link &link) {
            if (take(cfg_lock_table[CFG_LOCK_DEBUGS].fd) == 0) {
                link.tell();
            }
            link.wait();
        }};
        EXPECT_TRUE(holder.await());
        debug_process(1, "line");
        std::string shown = one.shown();
        holder.go();
        return shown;
    };
    EXPECT_EQ(while_held_elsewhere(lock_read), "line\r\n");
    EXPECT_EQ(while_held_elsewhere(lock_write), "") << "and the call came back";

    Peer other{[](Link &link) {
        if (lock_try_write(cfg_lock_table[CFG_LOCK_DEBUGS].fd) == 0) {
            link.tell();
        }
    }};
    EXPECT_TRUE(other.await()) << "the lock was given back";

    const int fd = std::exchange(cfg_lock_table[CFG_LOCK_DEBUGS].fd, -1);
    debug_process(1, "no lock");
    EXPECT_EQ(one.shown(), "");
    EXPECT_EQ(error_of(debug_terminal_enable(one.path(), 2)), EBADF);
    cfg_lock_table[CFG_LOCK_DEBUGS].fd = fd;
}

TEST_F(DebugLines, ConcurrentEditorsLoseNothing)
{
    const Terminal one;
    const auto edit = [&](int first) {
        return Peer{[&one, first](Link &) {
            for (int i = 0; i < 50; ++i) {
                EXPECT_EQ(debug_terminal_enable(one.path(), first + i), 0);
            }
            ::_exit(HasFailure() ? 1 : 0);
        }};
    };
    Peer low = edit(0);
    Peer high = edit(100);
    EXPECT_EQ(low.join(), 0);
    EXPECT_EQ(high.join(), 0);
    for (const int debug_class : {0, 49, 100, 149}) {
        debug_process(debug_class, "x");
    }
    EXPECT_EQ(one.shown(), "x\r\nx\r\nx\r\nx\r\n");
}

} // namespace
