// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/socket.h>

#include "support/descriptors.h"
#include "support/error_of.h"
#include "support/peer.h"

#include <array>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <linux/if_packet.h>
#include <net/ethernet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace switchcfg::testing;

// Below the ports that connections take for themselves: a refused one could else meet itself.
constexpr std::uint32_t port = 20001;
const std::uint32_t loopback = htonl(INADDR_LOOPBACK);
const std::uint8_t *const loopback6 = in6addr_loopback.s6_addr;

sockaddr_in bound_to(int fd)
{
    sockaddr_in address{};
    socklen_t size = sizeof address;
    EXPECT_EQ(::getsockname(fd, reinterpret_cast<sockaddr *>(&address), &size), 0);
    return address;
}

int option(int fd, int name)
{
    int value = -1;
    socklen_t size = sizeof value;
    EXPECT_EQ(::getsockopt(fd, SOL_SOCKET, name, &value, &size), 0);
    return value;
}

// A listener on `port` whose backlog is full: further connections are neither taken nor refused.
struct Deaf {
    Deaf()
    {
        EXPECT_EQ(::listen(socket_is6_create_any(port), 0), 0);
        sockaddr_in6 address{};
        address.sin6_family = AF_INET6;
        address.sin6_addr = in6addr_loopback;
        address.sin6_port = htons(port);
        pollfd waiting{-1, POLLOUT, 0};
        do { // one more than it admits, so that one hangs
            waiting.fd = ::socket(AF_INET6, SOCK_STREAM | SOCK_NONBLOCK, 0);
            EXPECT_EQ(::connect(waiting.fd, reinterpret_cast<sockaddr *>(&address), sizeof address), -1);
        } while (::poll(&waiting, 1, 200) == 1);
    }
};

TEST(Sockets, ListenersBindWhereTheyShould)
{
    const int any = socket_is_create(port);
    EXPECT_EQ(bound_to(any).sin_addr.s_addr, htonl(INADDR_ANY));
    EXPECT_EQ(bound_to(any).sin_port, htons(port));
    EXPECT_EQ(option(any, SO_REUSEADDR), 1);
    EXPECT_EQ(option(any, SO_ACCEPTCONN), 1);
    const int local = socket_is_create_local(0x10000 + port + 1); // only the low 16 bits count
    EXPECT_EQ(bound_to(local).sin_addr.s_addr, loopback);
    EXPECT_EQ(bound_to(local).sin_port, htons(port + 1));
    const int local6 = socket_is6_create_local(port + 2);
    EXPECT_GE(local6, 0);
    EXPECT_EQ(option(local6, SO_REUSEADDR), 1);
    const int any6 = socket_is6_create_any(port + 3);
    const int v4 = socket_is_connect(&loopback, port + 3);
    EXPECT_GE(v4, 0) << "IPV6_V6ONLY is not touched";
    for (const int fd : {any, local, local6, any6, v4}) {
        EXPECT_EQ(::fcntl(fd, F_GETFD), 0) << "inherited by what the caller executes";
        ::close(fd);
    }
    EXPECT_EQ(option(net_tcp_socket(), SO_TYPE), SOCK_STREAM);
    EXPECT_EQ(option(net_udp_socket(), SO_TYPE), SOCK_DGRAM);
}

TEST(Sockets, FailuresHaveTheCodesOfTheirFamily)
{
    ASSERT_GE(socket_is_create(port), 0);
    ASSERT_GE(socket_is6_create_any(port + 1), 0);
    const std::uint8_t not_ours[16] = {0x20, 0x01, 0x0d, 0xb8};
    const int before = open_descriptors();
    EXPECT_EQ(error_of(socket_is_create(port)), EADDRINUSE);
    EXPECT_EQ(socket_is6_create_any(port + 1), -1002);
    EXPECT_EQ(errno, EADDRINUSE);
    EXPECT_EQ(socket_is6_create(port + 2, not_ours), -1002);
    EXPECT_EQ(error_of(socket_is_connect(&loopback, port + 3)), ECONNREFUSED);
    EXPECT_EQ(socket_is6_connect(loopback6, port + 3), -1005);
    EXPECT_EQ(errno, ECONNREFUSED);
    EXPECT_EQ(socket_is_connect_timeout(&loopback, port + 3, 1), -1);
    EXPECT_EQ(socket_is6_connect_timeout(loopback6, port + 3, 1), -1) << "refused later than at once";
    EXPECT_EQ(socket_is6_connect_timeout(not_ours, port + 3, 1), -1005) << "no route";
    EXPECT_EQ(socket_is_connect(nullptr, port), -1);
    EXPECT_EQ(socket_is6_create(port, nullptr), -1);
    EXPECT_EQ(open_descriptors(), before);

    const NoMoreDescriptors none;
    EXPECT_EQ(socket_is_create(port), -1);
    EXPECT_EQ(socket_is_connect_timeout(&loopback, port, 1), -1);
    EXPECT_EQ(socket_is6_create_any(port), -1001);
    EXPECT_EQ(socket_is6_connect(loopback6, port), -1001);
    EXPECT_EQ(socket_is6_connect_timeout(loopback6, port, 1), -1001);
    EXPECT_EQ(errno, EMFILE);
}

TEST(Sockets, TimedConnectGivesABlockingDescriptorOrGivesUpInTime)
{
    {
        const int listener = socket_is6_create_any(port);
        for (const int fd :
            {socket_is_connect_timeout(&loopback, port, 0.5), socket_is6_connect_timeout(loopback6, port, 5.9)}) {
            ASSERT_GE(fd, 0);
            EXPECT_EQ(::fcntl(fd, F_GETFL) & O_NONBLOCK, 0);
            ::close(fd);
        }
        ::close(listener);
    }
    const Deaf deaf;
    EXPECT_GE(elapsed_ms([] { EXPECT_EQ(socket_is_connect_timeout(&loopback, port, 0.4), -1); }), 400);
    EXPECT_EQ(socket_is6_connect_timeout(loopback6, port, 0.99), -1) << "waits 0 seconds";
    EXPECT_GE(elapsed_ms([] { EXPECT_EQ(socket_is6_connect_timeout(loopback6, port, 1.5), -1); }), 1000);
    // A wait the kernel refuses is over, not lost: the pending socket comes back.
    EXPECT_GE(socket_is_connect_timeout(&loopback, port, -1), 0);
    EXPECT_GE(socket_is6_connect_timeout(loopback6, port, -HUGE_VAL), 0);
}

TEST(Sockets, UnixPathsAreCutAndStaleOnesReplaced)
{
    const std::string path = "/tmp/" + std::string(195, 'x');
    const std::string cut = path.substr(0, 107);
    const int first = socket_us_create(path.c_str());
    ASSERT_GE(first, 0);
    EXPECT_TRUE(std::filesystem::is_socket(cut));
    ::close(first);
    const int listener = socket_us_create(path.c_str()); // over the stale file
    ASSERT_GE(listener, 0);
    sockaddr_un address{};
    socklen_t size = sizeof address;
    ASSERT_EQ(::getsockname(listener, reinterpret_cast<sockaddr *>(&address), &size), 0);
    EXPECT_EQ(std::string(address.sun_path, ::strnlen(address.sun_path, sizeof address.sun_path)), cut);

    const int client = socket_us_connect(path.c_str());
    const int server = socket_us_accept(listener);
    EXPECT_EQ(socket_send(client, "hello", 6), 6);
    char text[6];
    EXPECT_EQ(socket_recv(server, text, 6), 6);
    EXPECT_STREQ(text, "hello");

    const int before = open_descriptors();
    EXPECT_EQ(socket_ud_connect(path.c_str()), -1) << "a stream, not datagrams";
    EXPECT_EQ(socket_us_connect("/tmp/nothing-here"), -1);
    EXPECT_EQ(socket_us_create("/no/such/folder/socket"), -1);
    EXPECT_EQ(socket_us_create(nullptr), -1);
    EXPECT_EQ(socket_us_accept(client), -1);
    EXPECT_EQ(open_descriptors(), before);
}

TEST(Sockets, SendHalvesDatagramsUntilTheyFit)
{
    const int receiver = socket_ud_create("/tmp/datagrams");
    const int sender = socket_ud_connect("/tmp/datagrams");
    const int limit = 40000;
    ASSERT_EQ(::setsockopt(sender, SOL_SOCKET, SO_SNDBUF, &limit, sizeof limit), 0); // doubled by the kernel
    const std::vector<char> data(100000, 'd');
    Peer drain{[&](Link &link) {
        std::vector<char> buffer(100001);
        if (::recv(receiver, buffer.data(), buffer.size(), 0) == 50000 &&
            ::recv(receiver, buffer.data(), buffer.size(), 0) == 50000) {
            link.tell();
        }
    }};
    EXPECT_EQ(socket_send(sender, data.data(), 100000), 100000);
    EXPECT_TRUE(drain.await());
    EXPECT_EQ(socket_send(sender, data.data(), 0), 0);
    EXPECT_EQ(socket_send(sender, data.data(), -5), 0);
}

TEST(Sockets, TransfersTellAClosedPeerFromAnError)
{
    int pair[2];
    std::array<char, 8> buffer{};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, pair), 0);
    EXPECT_EQ(socket_recv(pair[0], buffer.data(), 0), 0);
    EXPECT_EQ(socket_recv(pair[0], buffer.data(), -1), 0);
    EXPECT_NE(::fcntl(pair[0], F_GETFD), -1);
    EXPECT_EQ(socket_timeouts_set(pair[0], 1), 0);
    EXPECT_EQ(socket_recv(pair[0], buffer.data(), 8), -1) << "timed out";
    EXPECT_NE(::fcntl(pair[0], F_GETFD), -1) << "stays open after an error";

    ASSERT_EQ(socket_send(pair[1], "half", 4), 4);
    ::close(pair[1]);
    EXPECT_EQ(socket_recv(pair[0], buffer.data(), 8), 0);
    EXPECT_EQ(::fcntl(pair[0], F_GETFD), -1) << "closed for the caller";

    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, pair), 0);
    ::close(pair[1]);
    EXPECT_EQ(error_of(socket_send(pair[0], "text", 4)), EPIPE) << "and no signal";
    EXPECT_EQ(socket_timeouts_set(-1, 3), -1);
}

TEST(Sockets, RawFrameArrivesAtTheOtherEndOfTheLink)
{
    if (std::system("ip link add one type veth peer name other && ip link set one up && ip link set other up") != 0) {
        GTEST_SKIP() << "no virtual link can be made here";
    }
    const int capture = ::socket(AF_PACKET, SOCK_RAW, htons(ETH_P_ALL));
    ASSERT_GE(capture, 0);
    sockaddr_ll where{};
    where.sll_family = AF_PACKET;
    where.sll_protocol = htons(ETH_P_ALL);
    where.sll_ifindex = static_cast<int>(::if_nametoindex("other"));
    ASSERT_EQ(::bind(capture, reinterpret_cast<sockaddr *>(&where), sizeof where), 0);
    ASSERT_EQ(socket_timeouts_set(capture, 10), 0);

    std::array<std::uint8_t, 64> frame{0x01, 0x80, 0xc2, 0, 0, 0x0e, 2, 0, 0, 0, 0, 1, 0x88, 0xcc};
    for (std::size_t i = 14; i < frame.size(); ++i) {
        frame[i] = static_cast<std::uint8_t>(i);
    }
    const int before = open_descriptors();
    EXPECT_EQ(socket_raw_send(frame.data(), frame.size(), "one"), 0);
    std::array<std::uint8_t, 200> got{};
    do { // the link says a few words of its own
        ASSERT_GT(::recv(capture, got.data(), got.size(), MSG_PEEK), 0);
    } while (std::memcmp(got.data(), frame.data(), 14) != 0 && ::recv(capture, got.data(), got.size(), 0) > 0);
    EXPECT_EQ(::recv(capture, got.data(), got.size(), 0), 64);
    EXPECT_EQ(std::memcmp(got.data(), frame.data(), frame.size()), 0);

    EXPECT_EQ(socket_raw_send(frame.data(), 13, "one"), -1);
    EXPECT_EQ(socket_raw_send(frame.data(), frame.size(), "none"), -1);
    EXPECT_EQ(socket_raw_send(frame.data(), frame.size(), "one-whose-name-is-far-too-long"), -1);
    EXPECT_EQ(socket_raw_send(frame.data(), 9000, "one"), -1) << "longer than the link takes";
    EXPECT_EQ(open_descriptors(), before);
}

} // namespace
