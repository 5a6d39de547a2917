// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/request_channel.h>
#include <switchcfg/robust_io.h>
#include <switchcfg/socket.h>

#include "support/descriptors.h"
#include "support/peer.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace {

using namespace switchcfg::testing;

constexpr std::uint16_t port = 20101;
const std::uint8_t *const loopback6 = in6addr_loopback.s6_addr;
constexpr std::uint64_t an_hour = 360000;

struct Record {
    std::uint32_t question;
    std::uint32_t ticks;
};

// A daemon: answers a question with the next number and the ticks so far.
struct Daemon {
    daemon_server server{port, an_hour, this, tick, answer};
    Link *link = nullptr;
    std::uint32_t ticks = 0;
    std::uint32_t tell_at = 1; // the first tick says that the port is open
    std::uint64_t period_from_first_tick = an_hour;

    static int tick(void *argument)
    {
        auto *self = static_cast<Daemon *>(argument);
        self->server.period = self->period_from_first_tick;
        if (++self->ticks == self->tell_at) {
            self->link->tell();
        }
        return -1; // ignored, as the other result
    }
    static int answer(void *argument, int fd)
    {
        const auto *self = static_cast<Daemon *>(argument);
        Record record{};
        if (vx_read_timeout(fd, &record, sizeof record, 5) == 0) {
            record = {record.question + 1, self->ticks};
            socket_send(fd, &record, sizeof record);
        }
        return -1;
    }
};

Peer serve(int (*loop)(const daemon_server *), const std::function<void(Daemon &)> &adjust = {})
{
    return Peer{[&](Link &link) {
        ::alarm(60);
        std::signal(SIGUSR1, [](int) {});
        Daemon daemon;
        daemon.link = &link;
        if (adjust) {
            adjust(daemon);
        }
        loop(&daemon.server);
    }};
}

// A peer that takes one connection after the other and does with it what a daemon never would.
Peer misbehave(const std::function<void(int fd)> &with)
{
    return Peer{[&](Link &link) {
        ::alarm(60);
        std::signal(SIGPIPE, SIG_IGN);
        const int listener = socket_is_create_local(port);
        link.tell();
        for (;;) {
            const int fd = ::accept(listener, nullptr, nullptr);
            with(fd);
            ::close(fd);
        }
    }};
}

TEST(RequestChannel, ExchangesOverBothFamilies)
{
    const Peer four = serve(daemon_server_loop);
    const Peer six = serve(daemon_server_loop6, [](Daemon &daemon) { ++daemon.server.port; });
    ASSERT_TRUE(four.await() && six.await()) << "first tick before any connection";
    const int before = open_descriptors();
    Record record{41, 0};
    EXPECT_EQ(daemon_client_req(0x10000 + port, 5, &record, sizeof record), 0);
    EXPECT_EQ(record.question, 42U);
    EXPECT_EQ(record.ticks, 1U);
    EXPECT_EQ(daemon_client_req_ipv6(port, loopback6, 0, 5, &record, sizeof record), -1) << "IPv4 loopback only";
    EXPECT_EQ(daemon_server_loop(nullptr), -1);
    const daemon_server same{port, 1, nullptr, nullptr, nullptr};
    EXPECT_EQ(daemon_server_loop(&same), -1) << "port in use";
    EXPECT_EQ(daemon_server_loop_conn_close(&same, 0), -1);

    EXPECT_EQ(daemon_client_req_ipv6(0x20000 + port + 1, loopback6, 0, 5, &record, sizeof record), 0);
    EXPECT_EQ(record.question, 43U);
    EXPECT_EQ(daemon_client_req(port + 1, 5, &record, sizeof record), 0) << "every address, mapped ones too";
    EXPECT_EQ(record.question, 44U);
    EXPECT_EQ(daemon_client_req_ipv6(port + 1, nullptr, 0, 5, &record, sizeof record), -1);
    EXPECT_EQ(daemon_client_req(port + 2, 5, &record, sizeof record), -1);
    EXPECT_EQ(daemon_client_req_ipv6(port + 2, loopback6, 0, 5, &record, sizeof record), -1);
    EXPECT_EQ(open_descriptors(), before);
}

TEST(RequestChannel, NewPeriodTakesEffectOneRoundLaterAndSignalsDoNotCount)
{
    const Peer daemon = serve(daemon_server_loop, [](Daemon &it) {
        it.server.period = 0; // read once more after the first tick has changed it
        it.tell_at = 2;
    });
    ASSERT_TRUE(daemon.await());
    for (std::uint32_t i = 0; i < 50; ++i) {
        ::kill(daemon.pid(), SIGUSR1);
        Record record{i, 0};
        ASSERT_EQ(daemon_client_req(port, 5, &record, sizeof record), 0);
        EXPECT_EQ(record.ticks, 2U) << "the third tick is an hour away";
    }
}

TEST(RequestChannel, PeriodZeroTicksWithoutPause)
{
    const Peer daemon = serve(daemon_server_loop6, [](Daemon &it) {
        it.server.period = 0;
        it.period_from_first_tick = 0;
        it.tell_at = 1000;
    });
    ASSERT_TRUE(daemon.await());
    Record record{1, 0};
    ASSERT_EQ(daemon_client_req_ipv6(port, loopback6, 0, 5, &record, sizeof record), 0);
    EXPECT_GE(record.ticks, 1000U);
}

TEST(RequestChannel, CallbacksMayBeNull)
{
    const Peer daemon = serve(daemon_server_loop, [](Daemon &it) { it.server.connection = nullptr; });
    ASSERT_TRUE(daemon.await());
    Record record{1, 0};
    EXPECT_EQ(daemon_client_req(port, 20, &record, sizeof record), -1) << "accepted and closed";
}

TEST(RequestChannel, CallbackKeepsTheConnectionWhenAskedTo)
{
    for (const auto loop : {daemon_server_loop_conn_close, daemon_server_loop_conn_close6}) {
        static auto conn_close = loop;
        conn_close = loop;
        const auto keep_open = [](const daemon_server *server) { return conn_close(server, 0); };
        const Peer daemon = serve(keep_open, [](Daemon &it) {
            it.server.connection = [](void *, int fd) { // answers the connection before this one
                static int kept = -1;
                if (kept >= 0) {
                    socket_send(kept, "late", 4);
                    ::close(kept);
                }
                kept = fd;
                return 0;
            };
        });
        ASSERT_TRUE(daemon.await());
        const int first = daemon_client_req_connect(port);
        const int second = daemon_client_req_connect(port);
        char reply[4];
        EXPECT_EQ(vx_read_timeout(first, reply, 4, 20), 0);
        EXPECT_EQ(std::memcmp(reply, "late", 4), 0);
        EXPECT_EQ(fd_has_data(0, second), 0) << "still open";
        ::close(first);
        ::close(second);
    }
}

TEST(RequestChannel, ClientSurvivesHostilePeers)
{
    const int before = open_descriptors();
    std::vector<char> record(1000, 'r');
    const auto ask = [&](std::uint32_t seconds) {
        return daemon_client_req(port, seconds, record.data(), static_cast<std::uint32_t>(record.size()));
    };
    const auto closes_at_once = [](int fd) {
        const linger reset{1, 0};
        ::setsockopt(fd, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
    };
    const auto replies_in_part = [](int fd) {
        char buffer[1000];
        vx_read_timeout(fd, buffer, sizeof buffer, 20);
        socket_send(fd, buffer, 999);
    };
    const auto drips = [](int fd) {
        while (socket_send(fd, "x", 1) == 1) {
            ::usleep(20000); // would take 20 seconds
        }
    };
    using Behaviour = void (*)(int);
    for (const auto &[behaviour, asked, seconds] : {std::tuple{Behaviour{closes_at_once}, 200, 20U},
             {Behaviour{replies_in_part}, 1, 20U}, {Behaviour{drips}, 1, 1U}}) {
        const Peer hostile = misbehave(behaviour);
        ASSERT_TRUE(hostile.await());
        for (int i = 0; i < asked; ++i) {
            ASSERT_EQ(ask(seconds), -1);
        }
    }
    {
        const Peer never_reads = misbehave([](int) { ::pause(); });
        ASSERT_TRUE(never_reads.await());
        EXPECT_EQ(ask(0), -1);
        EXPECT_GE(elapsed_ms([&] { EXPECT_EQ(ask(1), -1); }), 1000);
        record.resize(32U << 20); // more than the socket takes
        EXPECT_EQ(ask(1), -1);
    }
    EXPECT_EQ(open_descriptors(), before);
}

TEST(RequestChannel, LargeRecordGoesThroughWhole)
{
    constexpr std::int32_t size = 16 << 20;
    const Peer echo = misbehave([](int fd) {
        std::vector<char> buffer(size);
        if (socket_recv(fd, buffer.data(), size) == size) {
            buffer[0] = 'R';
            socket_send(fd, buffer.data(), size);
        }
    });
    ASSERT_TRUE(echo.await());
    std::vector<char> record(size);
    std::generate(record.begin(), record.end(), [i = 0]() mutable { return static_cast<char>(i++ / 255); });
    std::vector<char> expected = record;
    expected[0] = 'R';
    EXPECT_EQ(daemon_client_req(port, 30, record.data(), size), 0);
    EXPECT_TRUE(record == expected);
}

TEST(RequestChannel, SendOwnsTheSocketOnlyWhenItFails)
{
    const Peer daemon = serve(daemon_server_loop);
    ASSERT_TRUE(daemon.await());
    const int fd = daemon_client_req_connect(port);
    EXPECT_EQ(daemon_client_req_send(fd, 5, nullptr, 8), -1);
    Record record{1, 0};
    EXPECT_EQ(daemon_client_req_send(fd, 5, &record, sizeof record), 0);
    EXPECT_NE(::fcntl(fd, F_GETFD), -1) << "the caller's to close";
    EXPECT_EQ(daemon_client_req_send(fd, 5, &record, sizeof record), -1) << "the daemon has closed";
    EXPECT_EQ(::fcntl(fd, F_GETFD), -1) << "closed after a failure";
}

} // namespace
