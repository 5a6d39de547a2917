// SPDX-License-Identifier: Apache-2.0
// A process that dies in the midst of queueing or draining, at any instruction: who comes next finds the queue as it
// was before, or as it was to be. The process is run instruction by instruction, and what it leaves behind after each
// is kept; and some of them are really killed there.
#include "tests/log/trap_fixture.h"

#include <sys/ptrace.h>
#include <tuple>

namespace {

using switchcfg::testing::Traps;
using Action = std::function<void()>;

class Stepped {
  public:
    explicit Stepped(const Action &action) : child_(::fork())
    {
        if (child_ == 0) {
            (void)trap_queue_count(); // what is bound at the first call is bound
            if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0) {
                (void)std::raise(SIGSTOP);
                action();
            }
            ::_exit(0);
        }
        wait();
    }
    ~Stepped()
    {
        if (stopped_) {
            ::kill(child_, SIGKILL);
            wait();
        }
    }
    Stepped(const Stepped &) = delete;
    Stepped &operator=(const Stepped &) = delete;

    // Whether it stopped after one more instruction, and did not end.
    bool step() { return stopped_ && ::ptrace(PTRACE_SINGLESTEP, child_, nullptr, nullptr) == 0 && wait(); }
    bool can_be_traced() const { return stopped_; }

  private:
    bool wait()
    {
        int status = 0;
        return stopped_ = ::waitpid(child_, &status, 0) == child_ && WIFSTOPPED(status);
    }

    pid_t child_;
    bool stopped_ = false;
};

class TrapDeath : public switchcfg::testing::TrapTest {
  protected:
    // The bytes of the status region that queueing may write: the entries with what a start runs over, and the notes
    // about a move.
    struct Part {
        std::size_t at;
        std::size_t size;
    };
    static constexpr Part parts[] = {{entries_at, 51600 + 516}, {11269120, 532}};
    using Image = std::vector<std::uint8_t>;
    struct Change {
        std::size_t at; // in the image
        Image bytes;
    };

    Image image() const
    {
        Image all;
        for (const Part &part : parts) {
            all.insert(all.end(), status + part.at, status + part.at + part.size);
        }
        return all;
    }
    void restore(const Image &all) const
    {
        std::memcpy(status + parts[0].at, all.data(), parts[0].size);
        std::memcpy(status + parts[1].at, all.data() + parts[0].size, parts[1].size);
    }
    // Notes what differs from `known`, and makes `known` the same.
    void note_changes(Image &known, std::vector<Change> &changes) const
    {
        std::size_t base = 0;
        for (const Part &part : parts) {
            const std::uint8_t *there = status + part.at;
            if (std::memcmp(there, known.data() + base, part.size) != 0) {
                std::size_t first = 0;
                std::size_t end = part.size;
                while (there[first] == known[base + first]) {
                    ++first;
                }
                while (there[end - 1] == known[base + end - 1]) {
                    --end;
                }
                changes.push_back({base + first, {there + first, there + end}});
                std::memcpy(known.data() + base + first, there + first, end - first);
            }
            base += part.size;
        }
    }

    // What the next process finds: the count, and the traps. It may be a sender.
    using Found = std::pair<std::int32_t, Traps>;
    Found found(bool by_sender) const
    {
        EXPECT_EQ(by_sender ? send_trap_config_change() : trap_queue_count() >= 0 ? 0 : -1, 0);
        const std::int32_t count = count_word();
        return {count, drained()};
    }
    Found found_from(const Image &all, bool by_sender) const
    {
        restore(all);
        return found(by_sender);
    }

    // Texts of many lengths, with no byte the same in the same place.
    static void send(int number)
    {
        const std::string text(static_cast<std::size_t>(number * 37 % 300), static_cast<char>('A' + number % 50));
        ASSERT_EQ(send_trap_vrrp_auth_failure(text.c_str(), number), 0);
    }
    static void queue(int traps)
    {
        for (int number = 0; number < traps; ++number) {
            send(number);
        }
    }
};

TEST_F(TrapDeath, AtAnyInstructionLeavesTheQueueBeforeOrAfter)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP()
        << "ten times the instructions, most of them the sanitizer's; the development build takes each of its own";
#endif
    const trap_link up{1, 1};
    const std::tuple<const char *, Action, Action> cases[] = {
        {"one more", [] { queue(5); }, [] { send(5); }},
        {"a repeat", [] { queue(100); }, [] { send(40); }},
        {"the last again", [] { queue(5); }, [] { send(4); }},
        {"the first overflow", [] { queue(100); }, [] { send(100); }},
        {"the next overflow", [] { queue(101); }, [] { send(101); }},
        {"a start", [] { queue(50); }, [] { send_trap_cold_start(); }},
        {"a start into nothing", [] {}, [] { send_trap_warm_start(); }},
        {"a start into a full queue",
            [&] {
                queue(99);
                send_trap_linkUp(0, 0, &up);
            },
            [] { send_trap_cold_start(); }},
        {"some taken", [] { queue(60); },
            [] {
                static trap_entry taken[10];
                (void)trap_queue_drain(taken, 10);
            }},
        {"all taken", [] { queue(100); }, [] { (void)trap_queue_clear(); }},
    };
    for (const auto &[name, prepare, action] : cases) {
        SCOPED_TRACE(name);
        ASSERT_EQ(trap_queue_clear(), 0);
        prepare();
        const Image start = image();
        Found before[2];
        Found after[2];
        for (const bool by_sender : {false, true}) {
            before[by_sender] = found_from(start, by_sender);
            restore(start);
            action();
            after[by_sender] = found(by_sender);
        }
        ASSERT_EQ(before[0] == after[0], name == std::string_view{"the last again"});

        restore(start);
        std::vector<Change> changes;
        std::size_t steps = 0;
        {
            Stepped child{action};
            if (!child.can_be_traced()) {
                GTEST_SKIP() << "a process cannot be run step by step here";
            }
            for (Image known = start; child.step(); ++steps) {
                note_changes(known, changes);
            }
        }
        ASSERT_GT(changes.size(), 0U);
        Image left = start;
        bool done = false;
        for (const Change &change : changes) {
            std::ranges::copy(change.bytes, left.begin() + static_cast<std::ptrdiff_t>(change.at));
            const Found now = found_from(left, false);
            ASSERT_TRUE(now == after[0] || (!done && now == before[0])) << "after change " << &change - changes.data();
            done = now == after[0];
            if (before[0] != Found()) {
                restore(left); // and an agent that took all by setting the count gets none of them again
                set_word(count_at, 0);
                ASSERT_EQ(found(false), Found()) << "after change " << &change - changes.data();
            }
        }
        EXPECT_TRUE(done);

        for (std::size_t death = 1; death <= 6; ++death) {
            restore(start);
            {
                Stepped child{action};
                for (std::size_t i = 0; i < steps * death / 7; ++i) {
                    ASSERT_TRUE(child.step());
                }
            } // killed
            const bool by_sender = death % 2 == 0;
            const Found now = found(by_sender);
            ASSERT_TRUE(now == after[by_sender] || now == before[by_sender])
                << "killed after step " << steps * death / 7;
        }
        std::printf("%s: %zu instructions, %zu changes\n", name, steps, changes.size());
    }
}

} // namespace
