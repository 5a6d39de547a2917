// SPDX-License-Identifier: Apache-2.0
#include "support/peer.h"
#include "tests/log/trap_fixture.h"

namespace {

using namespace switchcfg::testing;

class TrapQueue : public switchcfg::testing::TrapTest {
  protected:
    static std::string text_of(int usage)
    {
        const std::string scalar = ".1.3.6.1.4.1.64711.3.5.201.1.14.2.";
        return scalar + "21.0 i 1 " + scalar + "22.0 i 1 " + scalar + "19.0 i " + std::to_string(usage);
    }
    static void queue(int first, int end)
    {
        for (int usage = first; usage < end; ++usage) {
            ASSERT_EQ(send_trap_high_memory_usage_detected(usage), 0);
        }
    }
    static Traps expected(int first, int end)
    {
        Traps traps;
        for (int usage = first; usage < end; ++usage) {
            traps.emplace_back(40, text_of(usage));
        }
        return traps;
    }
};

TEST_F(TrapQueue, KeepsOrderMovesRepeatsToTheBackAndStartsToTheHead)
{
    queue(0, 5);
    queue(1, 2);
    Traps traps = expected(0, 5);
    std::rotate(traps.begin() + 1, traps.begin() + 2, traps.end());
    EXPECT_EQ(count_word(), 5);
    EXPECT_EQ(drained(), traps);
    EXPECT_EQ(count_word(), 0);
    queue(0, 100);
    queue(0, 1);
    traps = expected(1, 101);
    traps.back().second = text_of(0);
    EXPECT_EQ(drained(), traps) << "a repeat in a full queue drops nothing";
}

TEST_F(TrapQueue, FullOneDropsTheOldestAndMarksIt)
{
    queue(0, 101);
    Traps traps = expected(1, 99);
    traps.emplace_back(40, text_of(100));
    traps.emplace_back(14, "");
    EXPECT_EQ(count_word(), 100);
    static trap_entry entries[100];
    ASSERT_EQ(trap_queue_peek(entries, 100), 100);
    EXPECT_EQ(entries[0].text, text_of(1));
    EXPECT_EQ(entries[99].id, 14U);
    queue(101, 103);
    traps.erase(traps.begin(), traps.begin() + 2);
    traps.insert(traps.end() - 1, {{40, text_of(101)}, {40, text_of(102)}});
    EXPECT_EQ(drained(), traps) << "the marker stays last";

    queue(0, 3);
    EXPECT_EQ(send_trap_cold_start(), 0);
    EXPECT_EQ(send_trap_warm_start(), 0);
    EXPECT_EQ(send_trap_warm_start(), 0) << "even twice";
    std::vector<std::uint32_t> ids;
    for (const auto &[id, text] : drained()) {
        ids.push_back(id);
    }
    EXPECT_THAT(ids, ::testing::ElementsAre(1, 1, 0, 40, 40, 40));
}

TEST_F(TrapQueue, AStartIntoAFullQueueRunsOverTheCount)
{
    queue(0, 99);
    const trap_link link{1, 1};
    ASSERT_EQ(send_trap_linkUp(0, 0, &link), 0);
    ASSERT_EQ(count_word(), 100);
    const std::string last = reinterpret_cast<char *>(status + entries_at + 99 * 516 + 4);
    EXPECT_EQ(send_trap_cold_start(), 0);
    EXPECT_EQ(count_word(), 4) << "the identifier of the last one, plus 1";
    EXPECT_EQ(reinterpret_cast<char *>(status + count_at + 4), last);
    Traps traps = drained();
    ASSERT_EQ(traps.size(), 4U);
    EXPECT_EQ(traps[0].first, 0U);
    traps.erase(traps.begin());
    EXPECT_EQ(traps, expected(0, 3));

    // A count past the entries is a full queue for everybody: nothing is read or written behind them.
    queue(0, 99);
    ASSERT_EQ(send_trap_vrrp_auth_failure("10.0.0.1", 1), 0);
    ASSERT_EQ(send_trap_warm_start(), 0);
    EXPECT_EQ(count_word(), 136);
    EXPECT_EQ(trap_queue_count(), 100);
    queue(200, 201);
    EXPECT_EQ(count_word(), 100);
    EXPECT_EQ(drained().size(), 100U);
}

TEST_F(TrapQueue, IsReadInParts)
{
    queue(0, 10);
    static trap_entry entries[100];
    EXPECT_EQ(trap_queue_drain(entries, 4), 4);
    EXPECT_EQ(entries[3].text, text_of(3));
    EXPECT_EQ(trap_queue_drain(entries, -1), -1);
    EXPECT_EQ(trap_queue_count(), 6);
    EXPECT_EQ(drained(), expected(4, 10));
    queue(0, 3);
    EXPECT_EQ(trap_queue_clear(), 0);
    EXPECT_EQ(trap_queue_count(), 0);
    for (const std::int32_t damaged : {-1, INT_MIN}) {
        set_word(count_at, damaged);
        EXPECT_EQ(trap_queue_count(), 0);
    }
    set_word(count_at, INT_MAX);
    std::memset(status + entries_at, 'x', 51600); // no end of any text
    EXPECT_EQ(trap_queue_peek(entries, 100), 100);
    EXPECT_EQ(std::strlen(entries[99].text), 511U);
}

TEST_F(TrapQueue, BindingsAreReadFromAnyText)
{
    trap_varbind binding{};
    const char *text = ".1.2 s two words \x03.1.3 i -5 1.4 a 10.0.0.1 .1.5 s cut off";
    ASSERT_EQ(trap_queue_next_varbind(&text, &binding), 1);
    EXPECT_STREQ(binding.value, "two words ");
    EXPECT_EQ(binding.cut, 0);
    ASSERT_EQ(trap_queue_next_varbind(&text, &binding), 1);
    EXPECT_EQ(std::string(binding.oid) + binding.type + binding.value, ".1.3i-5");
    ASSERT_EQ(trap_queue_next_varbind(&text, &binding), 1);
    EXPECT_EQ(std::string(binding.oid) + binding.type + binding.value, "1.4a10.0.0.1");
    ASSERT_EQ(trap_queue_next_varbind(&text, &binding), 1);
    EXPECT_STREQ(binding.value, "cut off");
    EXPECT_EQ(binding.cut, 1);
    EXPECT_EQ(trap_queue_next_varbind(&text, &binding), 0);

    const std::string oversize = ".1.2 s " + std::string(600, 'x');
    for (const char *garbage : {".1.2", ".1.2 ", ".1.2 i", ".1.2 i ", ".1.2 x 5", ".1.2 ii 5", "x i 5", ".1..2 i 5",
             "1. i 5", ". i 5", "\x03 i 5", oversize.c_str()}) {
        text = garbage;
        EXPECT_EQ(trap_queue_next_varbind(&text, &binding), -1) << garbage;
        EXPECT_EQ(text, garbage);
    }
}

TEST_F(TrapQueue, NeedsTheLockAndGivesItBack)
{
    Peer other{[](Link &link) {
        lock_write(cfg_lock_table[CFG_LOCK_TRAPS].fd);
        link.tell();
        link.wait();
        queue(0, 1); // drops the lock at its end
        link.tell();
        link.wait();
    }};
    ASSERT_TRUE(other.await());
    EXPECT_EQ(lock_try_write(cfg_lock_table[CFG_LOCK_TRAPS].fd), -1);
    other.go();
    ASSERT_TRUE(other.await());
    EXPECT_EQ(lock_try_write(cfg_lock_table[CFG_LOCK_TRAPS].fd), 0);
    EXPECT_EQ(lock_free(cfg_lock_table[CFG_LOCK_TRAPS].fd), 0);
    EXPECT_EQ(drained(), expected(0, 1));
    const std::int32_t fd = std::exchange(cfg_lock_table[CFG_LOCK_TRAPS].fd, -1);
    EXPECT_EQ(send_trap_config_change(), -1);
    EXPECT_EQ(send_trap_config_saved(0, "a", "b"), 0);
    EXPECT_EQ(trap_queue_clear(), -1);
    cfg_lock_table[CFG_LOCK_TRAPS].fd = fd;
    EXPECT_EQ(trap_queue_count(), 0);

    // A note of no move that could be is dropped.
    queue(0, 2);
    for (const std::int32_t garbage : {-1, 102, 101, 1}) {
        set_word(11269124, 77);
        set_word(11269120, garbage);
        EXPECT_EQ(trap_queue_count(), 2);
    }
}

TEST_F(TrapQueue, ThreadsOfOneProcessShareIt)
{
    const auto send = [](int unit) {
        for (int i = 0; i < 300; ++i) {
            send_trap_fan_fail(unit, unit, i);
        }
    };
    std::thread first{send, 0};
    std::thread second{send, 1};
    first.join();
    second.join();
    const Traps traps = drained();
    ASSERT_EQ(traps.size(), 100U);
    EXPECT_EQ(traps[99].first, 14U);
    EXPECT_EQ(std::count_if(traps.begin(), traps.end(), [](const auto &trap) { return trap.first == 13; }), 99);
}

} // namespace
