// SPDX-License-Identifier: Apache-2.0
// Peers that speak the transport's own protocol well enough to be let in, and then misbehave.
#include "rpc/frame.h"
#include "rpc_fixture.h"

#include <arpa/inet.h>
#include <linux/tcp.h>
#include <sys/time.h>

using namespace switchcfg::testing;
namespace rpc = switchcfg::rpc;
using namespace std::string_literals;

namespace {

constexpr std::uint16_t request_port = 62050;
constexpr std::uint16_t keep_alive_port = 62060;

// The start of the transport's protocol for a peer without security: its greeting and that it is a dealer.
const std::string greeting = "\xff\0\0\0\0\0\0\0\x01\x7f\x03\0NULL"s + std::string(48, '\0');
const std::string ready = "\x04\x1c\x05READY\x0bSocket-Type\0\0\0\x06"s + "DEALER";

std::string frame_head(std::uint64_t size, bool more)
{
    std::string head(1, more ? '\x03' : '\x02');
    for (int shift = 56; shift >= 0; shift -= 8) {
        head += static_cast<char>(size >> shift & 0xFF);
    }
    return head;
}

class Attacker {
  public:
    explicit Attacker(std::uint16_t port) : fd_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        const timeval limit{5, 0};
        ::setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        ::setsockopt(fd_, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(port);
        (void)::connect(fd_, reinterpret_cast<const sockaddr *>(&address), sizeof address);
    }
    Attacker(Attacker &&other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Attacker &operator=(Attacker &&) = delete;
    ~Attacker() { fd_ == -1 ? 0 : ::close(fd_); }

    bool send(const std::string &bytes) const
    {
        std::size_t done = 0;
        while (done < bytes.size()) {
            const auto sent = ::send(fd_, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
            if (sent <= 0) {
                return false;
            }
            done += static_cast<std::size_t>(sent);
        }
        return true;
    }
    bool shake_hands() const
    {
        std::array<char, 64> theirs{};
        std::array<char, 256> its_ready{};
        return send(greeting) && ::recv(fd_, theirs.data(), theirs.size(), MSG_WAITALL) == 64 && send(ready) &&
               ::recv(fd_, its_ready.data(), its_ready.size(), 0) > 8 && its_ready[0] == '\x04';
    }
    // Whether the server ends the connection within five seconds.
    bool is_shut() const
    {
        std::array<char, 4096> theirs{};
        ssize_t got = 0;
        while ((got = ::recv(fd_, theirs.data(), theirs.size(), 0)) > 0) {
        }
        return got == 0 || errno == ECONNRESET;
    }
    bool tells_bytes_received() const
    {
        tcp_info info{};
        socklen_t length = sizeof info;
        return ::getsockopt(fd_, IPPROTO_TCP, TCP_INFO, &info, &length) == 0 &&
               length > offsetof(tcp_info, tcpi_bytes_received);
    }

  private:
    int fd_;
};

long resident_mib(pid_t pid)
{
    std::ifstream statm{"/proc/" + std::to_string(pid) + "/statm"};
    long total = 0;
    long resident = 0;
    statm >> total >> resident;
    return resident * ::sysconf(_SC_PAGESIZE) >> 20;
}

long descriptors_of(pid_t pid)
{
    return std::distance(std::filesystem::directory_iterator{"/proc/" + std::to_string(pid) + "/fd"}, {});
}

class RpcHostile : public testing::Test {
  protected:
    RpcHostile() { EXPECT_EQ(client.echoed("before"), "before"); }

    const std::unique_ptr<Peer> daemon = start_daemon();
    KeptAlive client;
};

TEST_F(RpcHostile, RandomBytesHalfMessagesAndGreatFrames)
{
    const long before = resident_mib(daemon->pid());
    std::mt19937 random{20240607};
    std::vector<Attacker> idle;
    for (const std::uint16_t port : {request_port, keep_alive_port}) {
        for (int i = 0; i < 40; ++i) {
            std::string noise(random() % 5000 + 1, '\0');
            for (char &byte : noise) {
                byte = static_cast<char>(random());
            }
            const Attacker raw{port};
            raw.send(noise);
            const Attacker polite{port};
            ASSERT_TRUE(polite.shake_hands());
            polite.send(frame_head(noise.size(), i % 2 == 0) + noise);
            idle.emplace_back(port);
            ASSERT_TRUE(idle.back().shake_hands());
            idle.back().send(frame_head(200000, false) + noise); // the rest never comes
        }
        for (const std::uint64_t size : {std::uint64_t{100'000'000}, ~std::uint64_t{0}}) {
            const Attacker great{port};
            ASSERT_TRUE(great.shake_hands());
            great.send(frame_head(size, false) + std::string(1000, 'x'));
            EXPECT_TRUE(great.is_shut()) << size;
        }
    }
    EXPECT_EQ(client.echoed("after"), "after");
    EXPECT_LT(resident_mib(daemon->pid()) - before, 60);
}

TEST_F(RpcHostile, AMessageThatNeverEndsIsCutOff)
{
    for (const std::uint16_t port : {request_port, keep_alive_port}) {
        const Attacker endless{port};
        if (!endless.tells_bytes_received()) {
            GTEST_SKIP() << "this kernel does not tell how much a connection received";
        }
        ASSERT_TRUE(endless.shake_hands());
        const std::size_t size = port == request_port ? std::size_t{1} << 20 : 1000;
        const std::string part = frame_head(size, true) + std::string(size, 'x');
        std::size_t sent = 0;
        while (sent < std::size_t{4} << 30 && endless.send(part)) {
            sent += size;
        }
        EXPECT_LT(sent, std::size_t{2} << 30);
        EXPECT_EQ(client.echoed("after"), "after");
    }
}

TEST_F(RpcHostile, ConnectionsAreCounted)
{
    std::vector<Attacker> crowd;
    for (int i = 0; i < 600; ++i) {
        crowd.emplace_back(request_port);
        crowd.back().shake_hands(); // or be shut out; one after the other
    }
    // What is shut out is closed by and by.
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds{5};
    while (descriptors_of(daemon->pid()) > 300 && std::chrono::steady_clock::now() < limit) {
        std::this_thread::yield();
    }
    EXPECT_LE(descriptors_of(daemon->pid()), 300);
    EXPECT_EQ(client.echoed("who was there first stays"), "who was there first stays");
    crowd.clear();
    KeptAlive next;
    EXPECT_EQ(next.echoed("and there is room again"), "and there is room again");
}

TEST_F(RpcHostile, RequestsOfPeersThatComeAndGoDoNotPileUpBehindALongFunction)
{
    if (sanitized) {
        GTEST_SKIP() << "the sanitizer keeps freed memory";
    }
    std::thread caller{[] {
        KeptAlive busy;
        busy.call(own, "", nullptr, 60);
    }};
    ASSERT_TRUE(daemon->await());
    const long before = resident_mib(daemon->pid());
    std::string request(rpc::request_head + 4 + (1 << 20), '\0');
    rpc::write_request_head(reinterpret_cast<std::uint8_t *>(request.data()), {echo, 1, 0, 0, "TEST", {}});
    long most = 0;
    for (int i = 0; i < 300; ++i) {
        const Attacker passing{request_port};
        ASSERT_TRUE(passing.shake_hands());
        passing.send(frame_head(request.size(), false) + request);
        most = std::max(most, resident_mib(daemon->pid()) - before);
    }
    EXPECT_LT(most, 200);
    daemon->kill9();
    caller.join();
}

} // namespace
