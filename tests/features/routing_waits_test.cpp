// SPDX-License-Identifier: Apache-2.0
// How long the bridge waits and how often it tries, without waiting: this program's own nanosleep, select, send and
// debug_process stand before the real ones.
#include <switchcfg/debug.h>
#include <switchcfg/routing.h>

#include "support/peer.h"

#include <cstdarg>
#include <dlfcn.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/select.h>

namespace {

using namespace switchcfg::testing;
using namespace ::testing;

std::map<long, int> sleeps; // milliseconds, how often
std::vector<std::string> lines;
std::function<int(timeval *)> on_wait; // for waits that begin with more than a minute
bool long_wait = false;
int writes_to_fail = 0;
int writes = 0;
int accept_from = -1;
bool stalled = false;
std::vector<int> write_waits_ms;

template<typename Function>
Function *real(const char *name)
{
    return reinterpret_cast<Function *>(::dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" SWITCHCFG_API int nanosleep(const timespec *time, timespec * /*left*/)
{
    ++sleeps[time->tv_sec * 1000 + time->tv_nsec / 1000000];
    return 0;
}

extern "C" SWITCHCFG_API int select(int count, fd_set *in, fd_set *out, fd_set *bad, timeval *limit)
{
    long_wait = long_wait || (limit != nullptr && limit->tv_sec > 60);
    if (long_wait && on_wait && in != nullptr) {
        const auto now = on_wait; // which may put another in its place
        const int result = now(limit);
        if (result <= 0) {
            return result;
        }
        timeval plenty{30, 0};
        return real<decltype(::select)>("select")(count, in, out, bad, &plenty);
    }
    return real<decltype(::select)>("select")(count, in, out, bad, limit);
}

extern "C" SWITCHCFG_API ssize_t send(int fd, const void *bytes, size_t length, int flags)
{
    ++writes;
    if (writes_to_fail > 0) {
        --writes_to_fail;
        ::close(socket_us_accept(accept_from)); // makes room in the backlog
        errno = EPIPE;
        return -1;
    }
    return real<decltype(::send)>("send")(fd, bytes, length, flags);
}

// A peer that takes no more: nothing gets room within the time.
extern "C" SWITCHCFG_API int poll(pollfd *waits, nfds_t count, int limit_ms)
{
    if (!stalled) {
        return real<decltype(::poll)>("poll")(waits, count, limit_ms);
    }
    write_waits_ms.push_back(limit_ms);
    ::close(socket_us_accept(accept_from)); // makes room in the backlog
    return 0;
}

extern "C" void debug_process(int debug_class, const char *format, ...) noexcept
{
    char line[1024];
    va_list arguments;
    va_start(arguments, format);
    (void)std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    lines.push_back(std::to_string(debug_class) + " " + line);
}

namespace {

class RoutingWaits : public ::testing::Test {
  protected:
    RoutingWaits()
    {
        EXPECT_EQ(cfg_init(), 0);
        sleeps.clear();
    }
    ~RoutingWaits() override
    {
        on_wait = nullptr;
        EXPECT_EQ(dc_register_callback(nullptr, [](void *, void *) { return 0; }), 0);
    }
    static int send_command(std::uint32_t id)
    {
        EXPECT_EQ(dc_register_callback(nullptr, [](void *, void *) { return -1; }), 0);
        return dc_socket_send(id, "ab", 2, nullptr, nullptr);
    }
};

auto line(const std::string &function, const std::string &text)
{
    return MatchesRegex("27 " + function + "\\(\\):[0-9]+ \\| " + text);
}

const auto taken = line("dc_take_write_lock", "Command DC_CMD_RTM_GET_RIB has taken the LOCK DCL");
const auto given = line("dc_give_write_lock", "Command DC_CMD_RTM_GET_RIB has given the LOCK DCL");
const auto sending = line("dc_socket_send", "Send command: DC_CMD_RTM_GET_RIB \\(id=257, length=2, dcSock=[0-9]+\\)");

TEST_F(RoutingWaits, TheLockIsTriedElevenHundredAndOneTimes)
{
    const Peer holder{[](Link &link) {
        lock_write(DCLockGetSetFileFD);
        link.tell();
        link.wait();
    }};
    ASSERT_TRUE(holder.await());
    EXPECT_EQ(send_command(257), -140);
    EXPECT_EQ(sleeps, (std::map<long, int>{{100, 1100}}));
    EXPECT_THAT(lines,
        ElementsAre(line("dc_take_write_lock", "System is busy while trying to process command DC_CMD_RTM_GET_RIB")));
}

TEST_F(RoutingWaits, ADaemonThatIsNotThereIsTriedFiftyTimes)
{
    EXPECT_EQ(send_command(257), -37);
    EXPECT_EQ(sleeps, (std::map<long, int>{{1000, 49}}));
    EXPECT_THAT(
        lines, ElementsAre(taken, line("dc_socket_send", "Socket connection command DC_CMD_RTM_GET_RIB"), given));
}

TEST_F(RoutingWaits, ACommandIsWrittenSixTimesAtMost)
{
    accept_from = socket_is_create_local(DC_PORT);
    writes_to_fail = 5;
    EXPECT_EQ(send_command(6), 0);
    EXPECT_EQ(writes, 7) << "five that fail, then header and payload";
    cfg_dc_finish_connection();
    lines.clear();
    writes = 0;
    writes_to_fail = 7;
    EXPECT_EQ(send_command(257), -37);
    EXPECT_EQ(writes, 6);
    EXPECT_TRUE(sleeps.empty());
    EXPECT_THAT(lines, ElementsAre(taken, sending, line("dc_socket_send", "Socket writing error"), given));
    ::close(accept_from);
}

TEST_F(RoutingWaits, ADaemonThatStopsTakingTheCommandIsLeftAfterAMinuteEachTime)
{
    accept_from = socket_is_create_local(DC_PORT);
    stalled = true;
    const std::string payload(std::size_t{64} << 20, 'p');
    EXPECT_EQ(dc_socket_send(257, payload.data(), static_cast<std::uint32_t>(payload.size()), nullptr, nullptr), -37);
    stalled = false;
    EXPECT_THAT(write_waits_ms, AllOf(SizeIs(6), Each(AllOf(Gt(59000), Le(60000)))));
    ::close(accept_from);
}

// The daemon answers one byte each hundred seconds.
TEST_F(RoutingWaits, EachItemOfAReplyHasFourHundredSecondsInAll)
{
    struct Case {
        const char *error;
        std::string bytes; // all but the last one of an item
        std::vector<long> waits;
    };
    const Case cases[] = {
        {"Timeout during socket message read operation", std::string{"\0\0\3\xE8", 4}, {400, 300, 200, 100, 0}},
        {"Error reading socket message", std::string{"\0\0\3\xE8\0\0\0\7", 8} + "data",
            {400, 399, 398, 397, 396, 395, 394, 393, 400, 300, 200, 100, 0}},
        {"Invalid callback", std::string{"\0\0\3\xE8\0\0\0\1!\0\0\0\1\0\0\0\0", 17}, {}},
    };
    const int listener = socket_is_create_local(DC_PORT);
    for (const Case &slow : cases) {
        lines.clear();
        long_wait = false;
        int peer = -1;
        std::size_t at = 0;
        std::vector<long> waits;
        on_wait = [&](timeval *limit) {
            if (peer < 0) {
                peer = socket_us_accept(listener);
                int fd = -1;
                (void)std::sscanf(lines.back().c_str(), "%*[^=]=%*d, length=%*d, dcSock=%d", &fd);
                int no_delay = 0;
                socklen_t size = sizeof no_delay;
                EXPECT_EQ(::getsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &no_delay, &size), 0);
                EXPECT_NE(no_delay, 0);
                EXPECT_EQ(::fcntl(fd, F_GETFD), FD_CLOEXEC);
            }
            waits.push_back(limit->tv_sec);
            if (limit->tv_sec == 0 || at == slow.bytes.size()) {
                return 0;
            }
            EXPECT_EQ(socket_send(peer, &slow.bytes[at], 1), 1);
            const bool header_of_data = slow.bytes.size() > 8 && at < 8;
            limit->tv_sec -= header_of_data || slow.waits.empty() ? 1 : 100;
            ++at;
            return 1;
        };
        EXPECT_EQ(send_command(257), slow.waits.empty() ? 1 : -37);
        if (!slow.waits.empty()) {
            EXPECT_EQ(waits, slow.waits);
        }
        EXPECT_THAT(lines, ElementsAre(taken, sending, line("dc_socket_send", slow.error), given));
        ::close(peer);
    }
    ::close(listener);
}

TEST_F(RoutingWaits, OtherFailuresAreToldInTheirOwnWords)
{
    const std::tuple<const char *, std::string, int> cases[] = {
        {"Error in socket message response", std::string{"\0\0\3\xE9\0\0\0\0", 8}, -37},
        {"Malloc error to receive socket message", "\1\1\1\1\xFF\xFF\xFF\xFF", -2},
    };
    const int listener = socket_is_create_local(DC_PORT);
    for (const auto &[error, bytes, result] : cases) {
        lines.clear();
        int peer = -1;
        on_wait = [&](timeval *) {
            if (peer < 0) {
                peer = socket_us_accept(listener);
                EXPECT_EQ(socket_send(peer, bytes.data(), 8), 8);
            }
            return 1;
        };
        long_wait = false;
        EXPECT_EQ(send_command(257), result);
        EXPECT_THAT(lines, ElementsAre(taken, sending, line("dc_socket_send", error), given));
        ::close(peer);
    }
    // A connection that breaks while nobody looks is told with the next command.
    int peer = -1;
    on_wait = [&](timeval *) {
        peer = socket_us_accept(listener);
        EXPECT_EQ(socket_send(peer, "\0\0\0\1\0\0\0\0", 8), 8);
        on_wait = nullptr;
        return 1;
    };
    long_wait = false;
    EXPECT_EQ(send_command(257), 1);
    const linger reset{1, 0};
    EXPECT_EQ(::setsockopt(peer, SOL_SOCKET, SO_LINGER, &reset, sizeof reset), 0);
    ::close(peer);
    ::close(listener);
    lines.clear();
    EXPECT_EQ(send_command(257), -37);
    EXPECT_THAT(lines, Contains(line("dc_socket_send", "Socket closed due to error " + std::to_string(ECONNRESET) +
                                                           " processing function ID DC_CMD_RTM_GET_RIB")));
}

} // namespace
