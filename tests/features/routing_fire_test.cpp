// SPDX-License-Identifier: Apache-2.0
// The bridge under fire: sixteen processes send commands while the routing stack restarts, stalls, closes in the middle
// of replies, talks garbage and sends 64 MiB. ROUTING_FIRE_SECONDS says for how long, ROUTING_FIRE_SEED what happens.
#include <switchcfg/routing.h>

#include "lab/stand-ins/routing/route.h"
#include "support/daemon.h"
#include "support/descriptors.h"
#include "support/peer.h"

namespace {

using namespace switchlab::routing;
using namespace switchcfg::testing;
using Clock = std::chrono::steady_clock;

constexpr int processes = 16;
constexpr std::size_t huge = std::size_t{64} << 20;

enum Outcome { answered, failed, no_communication, wrong, outcomes };

struct Shared {
    std::array<std::array<std::atomic<int>, outcomes>, processes> counts;
    std::array<std::atomic<int>, processes> leaked;
    std::atomic<bool> stop;
};

unsigned parameter(const char *name, unsigned usual)
{
    const char *text = std::getenv(name);
    return text == nullptr ? usual : static_cast<unsigned>(std::atoi(text));
}

// A huge answer is this command's own and whole.
bool is_huge(std::uint32_t id, const char *data, std::uint32_t length)
{
    if (length != huge || word_at(data) != id) {
        return false;
    }
    for (std::uint32_t i = 1; i < huge / 4; ++i) {
        if (word_at(data + std::size_t{4} * i) != i) {
            return false;
        }
    }
    return true;
}

Outcome send_one(std::uint32_t id, const std::string &payload, const std::string &expected)
{
    void *reply = nullptr;
    std::uint32_t length = 0;
    const int result = dc_socket_send(id, payload.data(), static_cast<std::uint32_t>(payload.size()), &reply, &length);
    const char *data = static_cast<const char *>(reply);
    Outcome outcome = wrong;
    if (result == DC_RESULT_OK) {
        const bool right =
            length == expected.size() && (length == 0 || std::memcmp(data, expected.data(), length) == 0);
        outcome = right || (data != nullptr && is_huge(id, data, length)) ? answered : wrong;
    } else if (result == -37) {
        outcome = no_communication;
    } else if (result == -2 || (result == DC_RESULT_NOT_FOUND && id == get_route)) {
        outcome = failed; // for the routes too: a restart has taken them along
    }
    if (result < 0 && (reply != nullptr || length != 0)) {
        outcome = wrong;
    }
    std::free(reply);
    return outcome;
}

Route route_of(std::uint32_t process, std::uint32_t number)
{
    return {0x0A000000U | process << 16 | number << 8, 24, 0xC0000201U + process, 1 + number % 200};
}

void send_many(Shared &shared, std::size_t self)
{
    const int descriptors = open_descriptors();
    // Polling does not give everyone a turn soon, but everyone gets one.
    for (std::uint32_t i = 0; !shared.stop || shared.counts[self][answered] == 0; ++i) {
        const Route route = route_of(static_cast<std::uint32_t>(self), i / 2 % 256);
        const Outcome outcome = i % 2 == 0 ? send_one(add_static_route, route.to_wire(), "")
                                           : send_one(get_route, word_of(route.address + 7), route.to_wire());
        ++shared.counts[self][outcome];
        (void)::usleep(2000); // or the lock would be the same process's most of the time
    }
    cfg_dc_finish_connection();
    shared.leaked[self] = open_descriptors() - descriptors;
}

TEST(RoutingFire, SixteenProcessesGetTheirOwnAnswersOrAnError)
{
    ASSERT_EQ(cfg_init(), 0);
    const unsigned seconds = parameter("ROUTING_FIRE_SECONDS", 6);
    unsigned seed = parameter("ROUTING_FIRE_SEED", 1);
    auto *memory = ::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    auto &shared = *new (memory) Shared{};
    std::vector<std::unique_ptr<Peer>> senders;
    for (std::size_t self = 0; self < processes; ++self) {
        senders.push_back(std::make_unique<Peer>([&shared, self](Link &link) {
            link.wait();
            send_many(shared, self);
            link.tell();
        }));
    }
    const auto start_daemon = [&] {
        auto daemon = std::make_unique<Daemon>(
            std::string{SWITCHLAB_ROUTING}, std::vector<std::string>{"--chaos", "2", "--seed", std::to_string(seed++)});
        EXPECT_TRUE(daemon->ready());
        return daemon;
    };
    auto daemon = start_daemon();
    for (const auto &sender : senders) {
        sender->go();
    }
    for (const auto end = Clock::now() + std::chrono::seconds{seconds}; Clock::now() < end;) {
        std::this_thread::sleep_for(std::chrono::milliseconds{1200}); // the pace of the restarts
        daemon.reset();
        daemon = start_daemon();
    }
    shared.stop = true;
    for (const auto &sender : senders) {
        EXPECT_TRUE(sender->await());
    }
    int unreached = 0;
    for (std::size_t self = 0; self < processes; ++self) {
        EXPECT_EQ(shared.leaked[self], 0) << "descriptors of process " << self;
        EXPECT_EQ(shared.counts[self][wrong], 0) << "process " << self << ", -140 of one kept out for 110 s among them";
        unreached += shared.counts[self][no_communication];
    }
    EXPECT_GT(unreached, 0) << "no fire";
    EXPECT_EQ(lock_try_write(DCLockGetSetFileFD), 0) << "the lock was not given back";
}

} // namespace
