// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/robust_io.h>

#include "support/error_of.h"
#include "support/guarded.h"
#include "support/peer.h"

#include <algorithm>
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

using namespace switchcfg::testing;

struct Pipe {
    Pipe() { EXPECT_EQ(::pipe(ends.data()), 0); }

    int read_end() const { return ends[0]; }
    int write_end() const { return ends[1]; }
    void put(std::string_view text) const
    {
        ASSERT_EQ(::write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    // Until not one byte more fits.
    std::size_t fill() const
    {
        EXPECT_EQ(fcntl_set(ends[1], O_NONBLOCK, 0), 0);
        std::size_t total = 0;
        while (::write(ends[1], "x", 1) == 1) {
            ++total;
        }
        EXPECT_EQ(fcntl_set(ends[1], 0, O_NONBLOCK), 0);
        return total;
    }

    std::array<int, 2> ends{-1, -1};
};

// A signal every few milliseconds that interrupts system calls; the one with the given number runs `act`.
struct Interruptions {
    explicit Interruptions(int number = 0, std::function<void()> act = {})
    {
        act_at = number;
        action = std::move(act);
        ticks = 0;
        struct sigaction handling {};
        handling.sa_handler = [](int) {
            ticks = ticks + 1;
            if (ticks == act_at) {
                action();
            }
        };
        ::sigaction(SIGALRM, &handling, nullptr);
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
    static inline int act_at;
    static inline std::function<void()> action;
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
}

TEST(RobustIo, LargeTransfersGoThroughInPieces)
{
    const Pipe there;
    const Pipe back;
    constexpr std::uint32_t size = 1000003;
    std::string sent(size, '\0');
    std::generate(sent.begin(), sent.end(), [i = 0]() mutable { return static_cast<char>(i++ / 255); });
    const auto echo = [&](auto read_all, auto write_all) {
        const Peer peer{[&](Link &) {
            std::string copy(size, '\0');
            read_all(there.read_end(), copy.data(), size);
            write_all(back.write_end(), copy.data(), size);
        }};
        EXPECT_EQ(write_all(there.write_end(), sent.data(), size), 0);
        std::string received(size, '\0');
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
    int slot = 77;
    const auto timed = [](int fd, void *to, std::uint32_t length) { return vx_read_timeout(fd, to, length, 50); };
    const auto told = [&](int fd, void *to, std::uint32_t length) {
        return vx_read_nointr_read_err(fd, to, length, &slot);
    };
    using Reader = std::function<int(int, void *, std::uint32_t)>;
    for (const Reader &read_all : {Reader{vx_read}, Reader{vx_read_nointr}, Reader{timed}, Reader{told}}) {
        const Pipe pipe;
        pipe.put("12345");
        ::close(pipe.write_end());
        errno = 0;
        EXPECT_EQ(read_all(pipe.read_end(), buffer.data(), 10), -1);
    }
    EXPECT_EQ(slot, 0);
    EXPECT_EQ(told(-1, buffer.data(), 10), -1);
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
        const Interruptions late{3, [&] { pipe.put("ghij"); }};
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
        const Interruptions signals;
        EXPECT_EQ(error_of(vx_read(pipe.read_end(), buffer.data(), 1)), EINTR);
        EXPECT_EQ(error_of(fd_has_data(100, pipe.read_end())), EINTR);
        const int clock = ticking_descriptor(60'000'000);
        EXPECT_EQ(vx_read_timeout(clock, buffer.data(), 8, 50), 0);
    }
    for (const bool spins_on_eagain : {false, true}) {
        fcntl_set(pipe.read_end(), spins_on_eagain ? O_NONBLOCK : 0, 0);
        const Interruptions late{4, [&] { pipe.put("z"); }};
        EXPECT_EQ(vx_read_nointr(pipe.read_end(), buffer.data(), 1), 1);
        EXPECT_GE(late.ticks, 4);
    }

    const std::size_t size = pipe.fill();
    {
        const Interruptions signals;
        EXPECT_EQ(error_of(vx_write(pipe.write_end(), "y", 1)), EINTR);
    }
    {
        std::string drained(size, '\0');
        const Interruptions late{4, [&] { (void)!::read(pipe.read_end(), drained.data(), size); }};
        EXPECT_EQ(vx_write_nointr(pipe.write_end(), "y", 1), 0);
    }
    pipe.fill();
    EXPECT_EQ(fcntl_set(pipe.write_end(), O_NONBLOCK, O_NONBLOCK), 0) << "cleared before it is set";
    EXPECT_EQ(fcntl_set(-1, 0, 0), -1);
    EXPECT_EQ(error_of(vx_write_nointr(pipe.write_end(), "y", 1)), EAGAIN);
}

TEST(RobustIo, TimeOutBoundsTheWholeTransfer)
{
    // Thirty pieces, each well within the second, together three: only a time-out that is renewed lets them all in.
    const int clock = ticking_descriptor(100'000'000);
    std::array<char, 240> buffer{};
    EXPECT_EQ(vx_read_timeout(clock, buffer.data(), sizeof buffer, 1), -1);

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
    EXPECT_EQ(vx_fwrite("x", 1, std::fopen("/tmp/robust_io_stream", "r")), -1);
    EXPECT_EQ(vx_fread(buffer.data(), 1, std::fopen("/tmp/robust_io_stream", "w")), -1);
    std::FILE *const full = std::fopen("/dev/full", "w");
    ASSERT_NE(full, nullptr);
    std::setvbuf(full, nullptr, _IONBF, 0);
    EXPECT_EQ(vx_fwrite("x", 1, full), -1);
}

TEST(RobustIo, ConfigurationLines)
{
    const std::string long_word(98, 'w');
    const std::string too_long = "name " + std::string(110, 'v');
    const struct {
        std::string file;
        const char *line;
    } cases[] = {{"   # note\n", ""}, {"# note", ""}, {"\n", ""}, {" \t \n", ""}, {" \t ", ""},
        {"name value\n", "name "}, {"name value \n", "name value "}, {"\t name\tvalue\n", "name\t"},
        {"name one two\n", "name one "}, {"name value", "name value"}, {"  word\n", ""}, {long_word + "\n", ""},
        {too_long + "\n", too_long.c_str()}};
    for (const auto &[file, expected] : cases) {
        std::FILE *const stream = std::tmpfile();
        ASSERT_EQ(vx_fwrite(file.data(), static_cast<std::uint32_t>(file.size()), stream), 0);
        std::rewind(stream);
        Guarded buffer{100};
        const char *const line = read_cfile_line(stream, buffer.data());
        ASSERT_NE(line, nullptr) << file;
        EXPECT_EQ(std::string{line}, std::string{expected}.substr(0, 99)) << file;
        EXPECT_TRUE(buffer.intact()) << file;
        if (file.size() < 100) {
            EXPECT_EQ(read_cfile_line(stream, buffer.data()), nullptr) << file;
        }
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
        EXPECT_EQ(error_of(fd_has_data(seconds, a.read_end())), EINVAL) << seconds;
    }
    EXPECT_EQ(error_of(fds_have_data(0, -1)), EINVAL);
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
    EXPECT_EQ(error_of(fds_have_data(0, 2, pipe.read_end(), FD_SETSIZE)), EINVAL);
    EXPECT_EQ(error_of(vx_read_timeout(FD_SETSIZE, &byte, 1, 0)), EINVAL);
    EXPECT_EQ(error_of(fd_has_data(0, -1)), EBADF);
    EXPECT_EQ(fd_has_data(0, FD_SETSIZE - 1), 1);
    EXPECT_EQ(vx_read_timeout(FD_SETSIZE - 1, &byte, 1, 0), 0);
}

TEST(RobustIo, ConnectedSocketBlocksAndARefusedOrIgnoredOneDoesNot)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto *const generic = reinterpret_cast<sockaddr *>(&address);
    socklen_t length = sizeof address;
    const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
    ASSERT_EQ(::bind(listener, generic, length), 0);
    ASSERT_EQ(::getsockname(listener, generic, &length), 0);
    // The result, and whether the socket blocks afterwards.
    const auto connect = [&](std::uint32_t seconds) {
        const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
        const int result = vx_connect_timeout(fd, generic, length, seconds);
        return std::pair{result, (::fcntl(fd, F_GETFL) & O_NONBLOCK) == 0};
    };
    EXPECT_EQ(connect(50), std::pair(-1, false)) << "refused";
    // A listener that never accepts and whose queue is full drops further connection requests without an answer.
    ASSERT_EQ(::listen(listener, 0), 0);
    EXPECT_EQ(connect(50), std::pair(0, true));
    EXPECT_EQ(connect(0), std::pair(-1, false));
    EXPECT_EQ(connect(1), std::pair(-1, false));
    const Interruptions signals;
    EXPECT_EQ(connect(50), std::pair(-1, false));
    EXPECT_EQ(errno, EINTR);
    EXPECT_EQ(error_of(vx_connect_timeout(-1, generic, length, 50)), EBADF);
}

} // namespace
