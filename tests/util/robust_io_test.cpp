// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/robust_io.h>

#include "support/peer.h"

#include <array>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <netinet/in.h>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/timerfd.h>
#include <unistd.h>
#include <utility>

namespace {

using switchcfg::testing::Link;
using switchcfg::testing::Peer;

struct Pipe {
    Pipe() { EXPECT_EQ(::pipe(ends.data()), 0); }
    ~Pipe()
    {
        close_read();
        close_write();
    }
    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;

    int read_end() const { return ends[0]; }
    int write_end() const { return ends[1]; }
    void close_read() { ::close(std::exchange(ends[0], -1)); }
    void close_write() { ::close(std::exchange(ends[1], -1)); }
    void put(std::string_view text) const
    {
        ASSERT_EQ(::write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    // Until not one byte more fits.
    std::size_t fill() const
    {
        EXPECT_EQ(fcntl_set(ends[1], O_NONBLOCK, 0), 0);
        std::size_t total = 0;
        for (const std::size_t piece : {std::size_t{4096}, std::size_t{1}}) {
            const std::string bytes(piece, 'x');
            for (ssize_t count = 0; count >= 0; total += static_cast<std::size_t>(count > 0 ? count : 0)) {
                count = ::write(ends[1], bytes.data(), piece);
            }
        }
        EXPECT_EQ(fcntl_set(ends[1], 0, O_NONBLOCK), 0);
        return total;
    }

    std::array<int, 2> ends{-1, -1};
};

// A signal every few milliseconds that interrupts system calls; each one runs `on_tick` with its number.
struct Interruptions {
    explicit Interruptions(std::function<void(int)> tick)
    {
        on_tick = std::move(tick);
        ticks = 0;
        struct sigaction action {};
        action.sa_handler = [](int) {
            ticks = ticks + 1;
            on_tick(ticks);
        };
        ::sigaction(SIGALRM, &action, nullptr);
        set(3000);
    }
    ~Interruptions()
    {
        set(0);
        ::signal(SIGALRM, SIG_IGN);
    }
    static void set(suseconds_t interval)
    {
        const itimerval timer{{0, interval}, {0, interval}};
        ::setitimer(ITIMER_REAL, &timer, nullptr);
    }
    static inline std::function<void(int)> on_tick;
    static inline volatile std::sig_atomic_t ticks;
};

// Readable for 8 bytes at a time, once per period.
int ticking_descriptor(long period_ns)
{
    const int fd = ::timerfd_create(CLOCK_MONOTONIC, 0);
    const itimerspec spec{{0, period_ns}, {0, period_ns}};
    ::timerfd_settime(fd, 0, &spec, nullptr);
    return fd;
}

TEST(RobustIo, ZeroLengthsDifferByFunction)
{
    const Pipe pipe;
    char byte = 0;
    int slot = 77;
    EXPECT_EQ(vx_write(pipe.write_end(), &byte, 0), -1);
    EXPECT_EQ(vx_write_nointr(pipe.write_end(), &byte, 0), 0);
    EXPECT_EQ(vx_read(pipe.read_end(), &byte, 0), -1);
    EXPECT_EQ(vx_read_timeout(pipe.read_end(), &byte, 0, 100), 0);
    EXPECT_EQ(vx_read_timeout(-1, &byte, 0, 100), 0);
    for (const int stale : {EINTR, EAGAIN}) {
        errno = stale;
        EXPECT_EQ(vx_read_nointr_read_err(pipe.read_end(), &byte, 0, &slot), 0);
        EXPECT_EQ(slot, 77);
    }
    errno = 0;
    EXPECT_EQ(vx_read_nointr_read_err(pipe.read_end(), &byte, 0, &slot), -1);
    EXPECT_EQ(slot, 0);

    std::FILE *const stream = std::tmpfile();
    EXPECT_EQ(vx_fwrite(&byte, 0, stream), -1);
    EXPECT_EQ(vx_fread(&byte, 0, stream), -1);
    EXPECT_EQ(vx_fread(&byte, 1, stream), 0);
    EXPECT_EQ(vx_fread(&byte, 0, stream), 0) << "at its end the stream satisfies every length";
    (void)std::fclose(stream);
}

TEST(RobustIo, LargeTransfersGoThroughInPieces)
{
    const Pipe there;
    const Pipe back;
    std::string sent(1000003, '\0');
    for (std::size_t i = 0; i < sent.size(); ++i) {
        sent[i] = static_cast<char>(i * 7 + i / 251);
    }
    const auto size = static_cast<std::uint32_t>(sent.size());
    const auto echo = [&](auto read_all, auto write_all) {
        Peer peer{[&](Link &link) {
            std::string copy(sent.size(), '\0');
            if (read_all(there.read_end(), copy.data(), size) != -1) {
                link.tell();
                write_all(back.write_end(), copy.data(), size);
            }
        }};
        EXPECT_EQ(write_all(there.write_end(), sent.data(), size), 0);
        EXPECT_TRUE(peer.await());
        std::string received(sent.size(), '\0');
        EXPECT_NE(read_all(back.read_end(), received.data(), size), -1);
        EXPECT_TRUE(received == sent);
    };
    echo(vx_read, vx_write);
    echo(vx_read_nointr, vx_write_nointr);
    echo([](int fd, void *buffer, std::uint32_t length) { return vx_read_timeout(fd, buffer, length, 50); }, vx_write);
}

TEST(RobustIo, EndOfFileFailsEveryDescriptorReader)
{
    std::array<char, 10> buffer{};
    const auto at_half = [&](auto read_all) {
        Pipe pipe;
        pipe.put("12345");
        pipe.close_write();
        errno = 0;
        return read_all(pipe.read_end(), buffer.data(), 10U);
    };
    EXPECT_EQ(at_half(vx_read), -1);
    EXPECT_EQ(at_half(vx_read_nointr), -1);
    EXPECT_EQ(at_half([](int fd, char *to, std::uint32_t length) { return vx_read_timeout(fd, to, length, 50); }), -1);
    int slot = 77;
    EXPECT_EQ(
        at_half([&](int fd, char *to, std::uint32_t length) { return vx_read_nointr_read_err(fd, to, length, &slot); }),
        -1);
    EXPECT_EQ(slot, 0);
    EXPECT_EQ(vx_read_nointr_read_err(-1, buffer.data(), 10, &slot), -1);
    EXPECT_EQ(slot, -1);
}

TEST(RobustIo, LastReadsCountIsTheResult)
{
    std::array<char, 11> buffer{};
    int slot = 77;
    const Pipe pipe;
    pipe.put("0123456789");
    EXPECT_EQ(vx_read_nointr_read_err(pipe.read_end(), buffer.data(), 10, &slot), 10);

    // Six bytes are there; the other four come while the call waits, out of the signal's handler.
    pipe.put("abcdef");
    {
        const Interruptions late{[&](int tick) {
            if (tick == 3) {
                pipe.put("ghij");
            }
        }};
        EXPECT_EQ(vx_read_nointr(pipe.read_end(), buffer.data(), 10), 4);
    }
    EXPECT_STREQ(buffer.data(), "abcdefghij");
    EXPECT_EQ(slot, 77);
}

TEST(RobustIo, OnlyTheNointrFunctionsOutliveSignals)
{
    const Pipe pipe;
    std::array<char, 8> buffer{};
    {
        const Interruptions signals{[](int) {}};
        EXPECT_EQ(vx_read(pipe.read_end(), buffer.data(), 1), -1);
        EXPECT_EQ(errno, EINTR);
        EXPECT_EQ(fd_has_data(100, pipe.read_end()), -1);
        EXPECT_EQ(errno, EINTR);
        const int clock = ticking_descriptor(60'000'000);
        EXPECT_EQ(vx_read_timeout(clock, buffer.data(), 8, 50), 0);
        ::close(clock);
    }
    for (const bool spins_on_eagain : {false, true}) {
        fcntl_set(pipe.read_end(), spins_on_eagain ? O_NONBLOCK : 0, 0);
        const Interruptions late{[&](int tick) {
            if (tick == 4) {
                pipe.put("z");
            }
        }};
        EXPECT_EQ(vx_read_nointr(pipe.read_end(), buffer.data(), 1), 1);
        EXPECT_GE(late.ticks, 4);
    }

    const std::size_t size = pipe.fill();
    {
        const Interruptions signals{[](int) {}};
        EXPECT_EQ(vx_write(pipe.write_end(), "y", 1), -1);
        EXPECT_EQ(errno, EINTR);
    }
    {
        const Interruptions late{[&](int tick) {
            if (tick == 4) {
                std::string drained(size, '\0');
                ASSERT_EQ(::read(pipe.read_end(), drained.data(), size), static_cast<ssize_t>(size));
            }
        }};
        EXPECT_EQ(vx_write_nointr(pipe.write_end(), "y", 1), 0);
    }
    pipe.fill();
    fcntl_set(pipe.write_end(), O_NONBLOCK, 0);
    EXPECT_EQ(vx_write_nointr(pipe.write_end(), "y", 1), -1);
    EXPECT_EQ(errno, EAGAIN);
}

TEST(RobustIo, StaleErrnoKeepsTheReaderAtEndOfFile)
{
    Pipe pipe;
    pipe.close_write();
    const Interruptions clears{[](int tick) {
        if (tick == 3) {
            errno = 0;
        }
    }};
    char byte = 0;
    int slot = 77;
    errno = EAGAIN;
    EXPECT_EQ(vx_read_nointr_read_err(pipe.read_end(), &byte, 1, &slot), -1);
    EXPECT_EQ(slot, 0);
    EXPECT_EQ(clears.ticks, 3);
}

TEST(RobustIo, TimeOutBoundsTheWholeTransfer)
{
    // Thirty pieces, each well within the second, together three: only a time-out that is renewed lets them all in.
    const int clock = ticking_descriptor(100'000'000);
    std::array<char, 240> buffer{};
    EXPECT_EQ(vx_read_timeout(clock, buffer.data(), sizeof buffer, 1), -1);
    ::close(clock);

    const Pipe pipe;
    pipe.put("abc");
    EXPECT_EQ(vx_read_timeout(pipe.read_end(), buffer.data(), 3, 0), 0);
    EXPECT_EQ(vx_read_timeout(pipe.read_end(), buffer.data(), 1, 0), -1);
    pipe.put("abc");
    EXPECT_EQ(vx_read_timeout(pipe.read_end(), buffer.data(), 3, std::numeric_limits<std::uint32_t>::max()), 0);
}

TEST(RobustIo, StreamsTreatShortFilesAsSuccessAndErrorsAsFailure)
{
    std::FILE *const stream = std::fopen("/tmp/robust_io_stream", "w+");
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(vx_fwrite("0123456789", 10, stream), 0);
    std::rewind(stream);
    std::array<char, 21> buffer{};
    EXPECT_EQ(vx_fread(buffer.data(), 4, stream), 0);
    EXPECT_STREQ(buffer.data(), "0123");
    EXPECT_EQ(vx_fread(buffer.data(), 20, stream), 0);
    EXPECT_STREQ(buffer.data(), "456789");
    (void)std::fclose(stream);

    std::FILE *const read_only = std::fopen("/tmp/robust_io_stream", "r");
    EXPECT_EQ(vx_fwrite("x", 1, read_only), -1);
    (void)std::fclose(read_only);
    std::FILE *const write_only = std::fopen("/tmp/robust_io_stream", "w");
    EXPECT_EQ(vx_fread(buffer.data(), 1, write_only), -1);
    (void)std::fclose(write_only);
    std::FILE *const full = std::fopen("/dev/full", "w");
    ASSERT_NE(full, nullptr);
    std::setvbuf(full, nullptr, _IONBF, 0);
    EXPECT_EQ(vx_fwrite("x", 1, full), -1);
    (void)std::fclose(full);
}

TEST(RobustIo, ConfigurationLines)
{
    const std::string long_word(98, 'w');
    const std::string too_long = "name " + std::string(110, 'v');
    const struct {
        std::string file;
        const char *line;
    } cases[] = {
        {"   # note\n", ""},
        {"# note", ""},
        {"\n", ""},
        {" \t \n", ""},
        {" \t ", ""},
        {"name value\n", "name "},
        {"name value \n", "name value "},
        {"\t name\tvalue\n", "name\t"},
        {"name one two\n", "name one "},
        {"name value", "name value"},
        {"word\n", ""},
        {"  word\n", ""},
        {long_word + "\n", ""},
        {too_long + "\n", too_long.c_str()},
    };
    for (const auto &[file, expected] : cases) {
        std::FILE *const stream = std::tmpfile();
        ASSERT_EQ(vx_fwrite(file.data(), static_cast<std::uint32_t>(file.size()), stream), 0);
        std::rewind(stream);
        std::array<char, 102> guarded;
        guarded.fill('!');
        const char *const line = read_cfile_line(stream, guarded.data() + 1);
        ASSERT_NE(line, nullptr) << file;
        EXPECT_EQ(std::string{line}, std::string{expected}.substr(0, 99)) << file;
        EXPECT_EQ(guarded.front(), '!') << file;
        EXPECT_EQ(guarded.back(), '!') << file;
        if (file.size() < 100) {
            EXPECT_EQ(read_cfile_line(stream, guarded.data() + 1), nullptr) << file;
        }
        (void)std::fclose(stream);
    }
}

TEST(RobustIo, WaitsForAnyOfSeveralDescriptors)
{
    const Pipe a;
    const Pipe b;
    EXPECT_EQ(fds_have_data(1e9, 0), 0);
    EXPECT_EQ(fds_have_data(0.002, 2, a.read_end(), b.read_end()), 0);
    a.put("x");
    EXPECT_EQ(fds_have_data(1e300, 2, a.read_end(), b.read_end()), 1);
    b.put("x");
    EXPECT_EQ(fds_have_data(0.5, 2, a.read_end(), b.read_end()), 2);
    EXPECT_EQ(fd_has_data(0, b.read_end()), 1);
    for (const double seconds : {-1.0, -0.5, -1e300, std::nan("")}) {
        EXPECT_EQ(fd_has_data(seconds, a.read_end()), -1) << seconds;
        EXPECT_EQ(errno, EINVAL);
    }
    EXPECT_EQ(fds_have_data(0, -1), -1);
    EXPECT_EQ(errno, EINVAL);
}

TEST(RobustIo, DescriptorsOutsideTheSetAreRefused)
{
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    if (limit.rlim_max <= FD_SETSIZE) {
        GTEST_SKIP() << "at most " << limit.rlim_max << " descriptors are allowed here";
    }
    limit.rlim_cur = FD_SETSIZE + 1;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
    const Pipe pipe;
    pipe.put("x");
    ASSERT_EQ(::dup2(pipe.read_end(), FD_SETSIZE), FD_SETSIZE);
    ASSERT_EQ(::dup2(pipe.read_end(), FD_SETSIZE - 1), FD_SETSIZE - 1);
    char byte = 0;
    EXPECT_EQ(fds_have_data(0, 2, pipe.read_end(), FD_SETSIZE), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(vx_read_timeout(FD_SETSIZE, &byte, 1, 0), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(fd_has_data(0, -1), -1);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(fd_has_data(0, FD_SETSIZE - 1), 1);
    EXPECT_EQ(vx_read_timeout(FD_SETSIZE - 1, &byte, 1, 0), 0);
}

class RobustConnect : public ::testing::Test {
  protected:
    RobustConnect()
    {
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        EXPECT_EQ(::bind(listener, generic(), length), 0);
        EXPECT_EQ(::getsockname(listener, generic(), &length), 0);
    }
    ~RobustConnect() override { ::close(listener); }
    sockaddr *generic() { return reinterpret_cast<sockaddr *>(&address); }
    int connect(int fd, std::uint32_t seconds) { return vx_connect_timeout(fd, generic(), sizeof address, seconds); }

    sockaddr_in address{};
    int listener = ::socket(AF_INET, SOCK_STREAM, 0);
};

TEST_F(RobustConnect, SuccessLeavesTheSocketBlocking)
{
    ASSERT_EQ(::listen(listener, 1), 0);
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
    EXPECT_EQ(connect(fd, 50), 0);
    EXPECT_EQ(::fcntl(fd, F_GETFL) & O_NONBLOCK, 0);
    ::close(fd);
    EXPECT_EQ(connect(-1, 50), -1);
    EXPECT_EQ(errno, EBADF);
}

TEST_F(RobustConnect, RefusalAndSilenceFailAndLeaveItNonBlocking)
{
    int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    EXPECT_EQ(connect(fd, 50), -1);
    EXPECT_NE(::fcntl(fd, F_GETFL) & O_NONBLOCK, 0);
    ::close(fd);

    // A listener that never accepts and whose queue is full drops further connection requests without an answer.
    ASSERT_EQ(::listen(listener, 0), 0);
    const int queued = ::socket(AF_INET, SOCK_STREAM, 0);
    ASSERT_EQ(connect(queued, 50), 0);
    fd = ::socket(AF_INET, SOCK_STREAM, 0);
    EXPECT_EQ(connect(fd, 0), -1);
    EXPECT_NE(::fcntl(fd, F_GETFL) & O_NONBLOCK, 0);
    ::close(fd);
    fd = ::socket(AF_INET, SOCK_STREAM, 0);
    EXPECT_EQ(connect(fd, 1), -1);
    ::close(fd);
    fd = ::socket(AF_INET, SOCK_STREAM, 0);
    {
        const Interruptions signals{[](int) {}};
        EXPECT_EQ(connect(fd, 50), -1);
        EXPECT_EQ(errno, EINTR);
    }
    ::close(fd);
    ::close(queued);
}

TEST(RobustIo, FlagsAreClearedBeforeTheyAreSet)
{
    const Pipe pipe;
    const int fd = pipe.read_end();
    EXPECT_EQ(fcntl_set(fd, O_NONBLOCK, 0), 0);
    EXPECT_NE(::fcntl(fd, F_GETFL) & O_NONBLOCK, 0);
    EXPECT_EQ(fcntl_set(fd, 0, O_NONBLOCK), 0);
    EXPECT_EQ(::fcntl(fd, F_GETFL) & O_NONBLOCK, 0);
    EXPECT_EQ(fcntl_set(fd, O_NONBLOCK, O_NONBLOCK), 0);
    EXPECT_NE(::fcntl(fd, F_GETFL) & O_NONBLOCK, 0);
    EXPECT_EQ(fcntl_set(-1, 0, 0), -1);
    EXPECT_EQ(errno, EBADF);
}

} // namespace
