// SPDX-License-Identifier: Apache-2.0
// Many processes raise traps while an agent drains the queue and senders are killed. Every trap is accounted for: it
// was delivered, its sender died while queueing it, or the queue had the right to drop it. In CTest a short form; the
// full one: TRAP_STORM_TRAPS=1000 TRAP_STORM_KILL_MS=100, traps of each sender and time between two deaths.
#include "support/peer.h"
#include "tests/log/trap_fixture.h"

#include <sched.h>

namespace {

using namespace switchcfg::testing;

constexpr int senders = 32;

int parameter(const char *name, int otherwise)
{
    const char *value = std::getenv(name);
    return value == nullptr ? otherwise : std::atoi(value);
}

// Moments are counted on one clock for all processes: of two moments in different processes the greater is the later.
using Moment = std::uint32_t;

struct Shared {
    std::atomic<Moment> clock;
    std::atomic<Moment> gate; // senders wait when it has come
    std::atomic<int> refused; // traps that a sender was told are not queued
};

struct Sent {
    std::atomic<Moment> begun; // 0 before
    std::atomic<Moment> ended; // 0 before; for one whose sender died, its death
    std::atomic<bool> died;
    int batch; // that it came with; -1 for none
};

struct Batch {
    Moment begun = 0;
    Moment ended = 0;
    Moment first_ended = UINT_MAX; // the earliest end of what it holds
    bool lossy = false;            // it ends with the overflow marker
    bool victim = false;           // the trap that gave its place to the marker is known
};

class TrapStorm : public switchcfg::testing::TrapTest {
  protected:
    void SetUp() override
    {
        TrapTest::SetUp();
        const std::size_t size = sizeof(Shared) + sizeof(Sent) * senders * static_cast<std::size_t>(traps);
        void *memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        ASSERT_NE(memory, MAP_FAILED);
        shared = static_cast<Shared *>(memory);
        sent = reinterpret_cast<Sent *>(shared + 1);
        for (int i = 0; i < senders * traps; ++i) {
            sent[i].batch = -1;
        }
    }

    Moment now() const { return ++shared->clock; }
    Sent &trap(int sender, int number) const { return sent[sender * traps + number]; }
    static std::string text_of(int sender, int number)
    {
        const std::string column = ".1.3.6.1.4.1.64711.3.5.201.1.1.5.1.";
        const std::string scalar = ".1.3.6.1.4.1.64711.3.5.201.1.14.2.";
        const std::string unit = std::to_string(sender % 8 + 1);
        const std::string place = "." + unit + "." + std::to_string(sender) + " i ";
        return column + "1" + place + unit + " " + column + "2" + place + std::to_string(sender) + " " + scalar +
               "21.0 i 1 " + scalar + "22.0 i 1 " + column + "3" + place + std::to_string(number);
    }

    // Goes on where the one before it died.
    std::unique_ptr<Peer> start(int sender) const
    {
        return std::make_unique<Peer>([this, sender](Link &) {
            for (int number = 0; number < traps; ++number) {
                Sent &one = trap(sender, number);
                if (one.begun == 0) {
                    while (shared->clock >= shared->gate) {
                        ::sched_yield();
                    }
                    one.begun = now();
                    if (send_trap_fan_fail(sender % 8, sender, number) != 0) {
                        ++shared->refused;
                    }
                    one.ended = now();
                }
            }
        });
    }
    bool finished(int sender) const { return trap(sender, traps - 1).ended != 0; }

    void kill(std::unique_ptr<Peer> &peer, int sender) const
    {
        peer->kill9();
        for (int number = 0; number < traps; ++number) {
            Sent &one = trap(sender, number);
            if (one.begun != 0 && one.ended == 0) {
                one.died = true;
                one.ended = now();
            }
        }
    }

    void take()
    {
        Batch batch;
        batch.begun = now();
        switchcfg::testing::Traps taken = drained();
        batch.ended = now();
        batch.lossy = !taken.empty() && taken.back().first == TRAP_OVERFLOW;
        if (batch.lossy) {
            EXPECT_EQ(taken.size(), 100U);
            taken.pop_back();
        }
        Moment latest = 0;
        for (const auto &[id, text] : taken) {
            int sender = -1;
            int number = -1;
            (void)std::sscanf(text.c_str(), ".1.3.6.1.4.1.64711.3.5.201.1.1.5.1.1.%*d.%d", &sender);
            (void)std::sscanf(text.c_str() + text.rfind(' ') + 1, "%d", &number);
            const bool known = id == 13 && sender >= 0 && sender < senders && number >= 0 && number < traps;
            ASSERT_TRUE(known && text == text_of(sender, number)) << "torn: " << id << ' ' << text;
            Sent &one = trap(sender, number);
            EXPECT_EQ(one.batch, -1) << "twice";
            EXPECT_NE(one.begun, 0U);
            one.batch = static_cast<int>(batches.size());
            EXPECT_LT(newest[static_cast<std::size_t>(sender)], number) << "order within a process";
            newest[static_cast<std::size_t>(sender)] = number;
            const Moment ended = end_of(one);
            EXPECT_GT(ended, latest) << "order between processes";
            EXPECT_TRUE(batches.empty() || ended > batches.back().begun) << "late";
            latest = std::max<Moment>(latest, one.begun);
            batch.first_ended = std::min(batch.first_ended, ended);
        }
        batches.push_back(batch);
        delivered += taken.size();
    }
    static Moment end_of(const Sent &one) { return one.ended == 0 ? UINT_MAX : one.ended.load(); }

    // The batches in whose time the trap can have been queued and dropped.
    std::vector<Batch *> dropping(const Sent &one)
    {
        std::vector<Batch *> found;
        auto batch = std::upper_bound(batches.begin(), batches.end(), one.begun.load(),
            [](Moment begun, const Batch &other) { return begun < other.ended; });
        for (; batch != batches.end() && (batch == batches.begin() || batch[-1].begun < end_of(one)); ++batch) {
            if (batch->lossy) {
                found.push_back(&*batch);
            }
        }
        return found;
    }
    // Whether it can have been older than all that the batch holds.
    static bool older(const Sent &one, const Batch &batch) { return one.begun < batch.first_ended; }

    const int traps = parameter("TRAP_STORM_TRAPS", 300);
    Shared *shared = nullptr;
    Sent *sent = nullptr;
    std::vector<Batch> batches;
    std::vector<int> newest = std::vector<int>(senders, -1);
    std::size_t delivered = 0;
};

TEST_F(TrapStorm, LosesNothingButWhatTheRulesDrop)
{
    const std::chrono::milliseconds pause{parameter("TRAP_STORM_KILL_MS", 2)};
    std::mt19937 random{1}; // NOLINT(cert-msc51-cpp): any numbers do
    std::vector<std::unique_ptr<Peer>> peers;
    peers.reserve(senders);
    for (int sender = 0; sender < senders; ++sender) {
        peers.push_back(start(sender));
    }
    const auto running = [&] {
        std::vector<int> those;
        for (int sender = 0; sender < senders; ++sender) {
            if (!finished(sender)) {
                those.push_back(sender);
            }
        }
        return those;
    };
    auto next_death = std::chrono::steady_clock::now() + pause;
    int deaths = 0;
    for (std::vector<int> left = running(); !left.empty() && !HasFailure(); left = running()) {
        // Some windows fill the queue and some do not; the queue is drained while senders are at it.
        const auto window = static_cast<Moment>(random() % 300);
        const Moment middle = shared->clock + static_cast<Moment>(random() % (window + 1));
        shared->gate = shared->clock + window;
        while (shared->clock < middle && !running().empty() && std::chrono::steady_clock::now() < next_death) {
            ::sched_yield();
        }
        if (std::chrono::steady_clock::now() >= next_death) {
            const int sender = left[random() % left.size()];
            kill(peers[static_cast<std::size_t>(sender)], sender);
            peers[static_cast<std::size_t>(sender)] = start(sender);
            ++deaths;
            // From now on: where starting a process takes long, senders shall get on all the same.
            next_death = std::chrono::steady_clock::now() + pause;
        }
        take();
    }
    take();
    ASSERT_FALSE(HasFailure());
    EXPECT_EQ(trap_queue_count(), 0);
    EXPECT_EQ(shared->refused, 0);

    std::size_t gone = 0; // dropped, or died with their senders
    std::size_t noticed = 0;
    std::size_t whole = 0;
    for (int i = 0; i < senders * traps; ++i) {
        const Sent &one = sent[i];
        const std::vector<Batch *> candidates = dropping(one);
        if (one.batch >= 0) { // had it been lost, would that be seen?
            if (!batches[static_cast<std::size_t>(one.batch)].lossy) {
                ++whole;
                noticed += candidates.empty();
            }
            continue;
        }
        ++gone;
        if (!one.died && std::ranges::none_of(candidates, [&](const Batch *batch) { return older(one, *batch); })) {
            const auto place = std::ranges::find(candidates, false, &Batch::victim);
            ASSERT_NE(place, candidates.end()) << "sender " << i / traps << " trap " << i % traps << " is lost";
            (*place)->victim = true;
        }
    }
    const auto lossy = static_cast<std::size_t>(std::ranges::count(batches, true, &Batch::lossy));
    std::printf("%d traps: %zu delivered in %zu batches, %zu overflows, %d deaths\n", senders * traps, delivered,
        batches.size(), lossy, deaths);
    EXPECT_EQ(delivered + gone, static_cast<std::size_t>(senders * traps));
    EXPECT_GE(gone, 2 * lossy) << "the first overflow takes two";
    EXPECT_GT(deaths, 0);
    EXPECT_GT(lossy, 0U);
    EXPECT_GT(noticed * 2, whole) << "a loss is seen more often than not";
}

} // namespace
