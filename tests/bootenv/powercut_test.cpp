// SPDX-License-Identifier: Apache-2.0
// Cuts the power after every single operation of a save and of the decision at boot, starts again, and looks at what is
// left. Where the order of steps leaves nothing whole, the test holds the exact extent of that window.
#include "bootenv/boot.h"
#include "bootenv/operations.h"
#include "bootenv/restart.h"
#include "support/peer.h"
#include "support/power_cut.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <map>
#include <switchcfg/bootenv.h>
#include <sys/wait.h>

namespace switchcfg::testing {
namespace {

struct Trial {
    std::function<void()> prepare;
    std::function<int()> act; // in a process of its own, which may end in the middle of it
};

void start_with(const Image &in_flash, const Image &in_backup) // none when it is empty
{
    fill_flash(in_flash);
    remove_backup();
    if (!in_backup.empty()) {
        make_backup(in_backup);
    }
    start_switch();
}

// The places to stop a write at: everywhere near its ends, coarsely between.
std::vector<std::size_t> stops_of_write(std::size_t length)
{
    std::vector<std::size_t> stops;
    for (std::size_t bytes = 0; bytes < length; ++bytes) {
        if (bytes < 160 || bytes % 2048 == 0 || length - bytes < 5) {
            stops.push_back(bytes);
        }
    }
    stops.push_back(length);
    return stops;
}

// How much farther into the flash operations the next cut comes. Forking takes ten times as long with a sanitizer,
// which looks at the first of them and at every seventh of the pages that follow.
unsigned next_flash_cut(unsigned after)
{
#ifdef __SANITIZE_ADDRESS__
    return after < 6 ? after + 1 : after + 7;
#else
    return after + 1;
#endif
}

// Asks `judge` after each cut, with the power back and nothing started yet, what it did. Prints and gives the answers.
std::map<std::string, int> for_each_cut(
    const char *what, const Trial &trial, const std::function<std::string(const std::string &where)> &judge)
{
    std::map<std::string, int> results;
    // After each call on the device or a file, and at every stop within a write.
    trial.prepare();
    watch_operations();
    trial.act();
    const std::vector<Operation> operations = stop_watching();
    for (std::size_t i = 0; i < operations.size(); ++i) {
        for (const std::size_t bytes : stops_of_write(operations[i].bytes)) {
            trial.prepare();
            Peer process{[&](Link &) {
                watch_operations(Cut{i, bytes});
                trial.act();
            }};
            EXPECT_EQ(WEXITSTATUS(process.join()), cut_status);
            ++results[judge("operation " + std::to_string(i) + ", " + operations[i].name + ", after " +
                            std::to_string(bytes) + " bytes")];
        }
    }
    // Before each operation of the flash itself, the erase of a block or the programming of a page, and in its middle.
    for (const CutAt at : {CutAt::operation, CutAt::half_operation}) {
        for (unsigned after = 0;; after = next_flash_cut(after)) {
            trial.prepare();
            if (!run_and_cut(flash(), at, after, trial.act).cut) {
                break;
            }
            ++results[judge(
                std::to_string(after) + (at == CutAt::operation ? "" : " and a half") + " flash operations")];
        }
    }
    int points = 0;
    for (const auto &[result, count] : results) {
        points += count;
    }
    std::printf("%s: %d cut points", what, points);
    for (const auto &[result, count] : results) {
        std::printf(", %d %s", count, result.c_str());
    }
    std::printf("\n");
    return results;
}

// Starts until the switch stays up; gives the number of restarts.
int settle()
{
    for (int restarts = 0; restarts < 4; ++restarts) {
        start_switch();
        if (bootenv_backup() != -1) {
            EXPECT_TRUE(take_commands().empty());
            start_switch();
            return restarts;
        }
        EXPECT_EQ(take_commands().back(), "/sbin/shutdown -r now");
    }
    ADD_FAILURE() << "the switch restarts for ever";
    return -1;
}

bool both_copies_whole()
{
    const Image content = flash().copy();
    return checksum_holds(content) && backup_content() == content;
}

// The variables are there up to their end, but not all zeros behind them: every process reads them, and the CRC fails.
bool only_padding_missing(const Environment &environment)
{
    const Image whole = image_of(environment);
    const Image content = flash().copy();
    std::size_t end = 4 + 2;
    for (const std::string &text : environment) {
        end += text.size() + 1;
    }
    return content != whole &&
           std::equal(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(end), content.begin());
}

Environment filled(Environment environment, std::size_t bytes)
{
    for (int i = 0; bytes > 0; ++i) {
        const std::size_t now = std::min<std::size_t>(bytes, 500);
        environment.push_back("fill" + std::to_string(i) + "=" + std::string(now, 'f'));
        bytes -= now;
    }
    return environment;
}

// A save that changes one variable, on a switch whose flash and backup are in step.
Trial save_of(const Environment &old_one)
{
    return {[=] { start_with(image_of(old_one), image_of(old_one)); },
        [] {
            bootenv_set("bootdelay", "7");
            return bootenv_grava();
        }};
}

void check_save(const char *what, const Environment &kept)
{
    Environment old_one = kept;
    old_one.insert(old_one.begin() + 1, "bootdelay=3");
    Environment new_one = kept;
    new_one.push_back("bootdelay=7");

    auto results = for_each_cut(what, save_of(old_one), [&](const std::string &where) {
        const bool window = only_padding_missing(new_one);
        settle();
        const Environment left = environment();
        EXPECT_TRUE(left == old_one || left == new_one) << where;
        EXPECT_EQ(both_copies_whole(), !window) << where;
        if (!window) {
            return left == old_one ? "leave the old environment" : "leave the new one";
        }
        EXPECT_EQ(left, new_one) << where;
        EXPECT_EQ(bootenv_grava(), 0) << "the next save mends both copies";
        EXPECT_TRUE(both_copies_whole()) << where;
        return "leave the new one with a CRC that fails";
    });
    EXPECT_GT(results["leave the old environment"], 0);
    EXPECT_GT(results["leave the new one"], 0);
}

TEST(PowerCut, SaveLeavesTheOldOrTheNewEnvironment)
{
    check_save("save of a small environment", {"HV=0", "FBMP=5", "bootcmd=bootm 0xe8000000"});
}

TEST(PowerCut, SaveOfAnEnvironmentOverSeveralBlocksLeavesTheOldOrTheNewOne)
{
    check_save("save of an environment over several erase blocks", filled({"HV=0", "FBMP=5"}, 40000));
}

// The decision at boot trusts an environment with "HV". When "HV" lies beyond the first erase block, there is a moment
// when the blocks in front of it are erased and it is still there.
TEST(PowerCut, EraseUpToTheMarkIsTakenForTheOwnEnvironment)
{
    Environment old_one = filled({"FBMP=5"}, 40000);
    old_one.push_back("HV=0");
    const Image image = image_of(old_one);
    constexpr std::string_view mark = "HV=0";
    const auto mark_place =
        static_cast<std::size_t>(std::search(image.begin(), image.end(), mark.begin(), mark.end()) - image.begin());
    const Trial trial = save_of(old_one);

    int lost = 0;
    const std::uint32_t block = flash().geometry().block;
    const unsigned blocks = flash().geometry().size / block;
    for (unsigned halves = 0; halves <= 2 * blocks; ++halves) {
        trial.prepare();
        const CutAt at = halves % 2 == 0 ? CutAt::operation : CutAt::half_operation;
        ASSERT_TRUE(run_and_cut(flash(), at, halves / 2, trial.act).cut);
        settle();
        const std::size_t erased = halves * block / 2;
        const bool mark_is_left = erased > 0 && erased <= mark_place;
        EXPECT_EQ(environment() == old_one, !mark_is_left) << erased << " bytes erased";
        EXPECT_EQ(both_copies_whole(), !mark_is_left) << erased << " bytes erased";
        lost += mark_is_left ? 1 : 0;
    }
    std::printf("erase with the mark at byte %zu: %d cut points lose what lies in front of it\n", mark_place, lost);
    EXPECT_GT(lost, 0);
}

TEST(PowerCut, RestoreStartsOverUntilItIsDone)
{
    const Environment kept{"HV=0", "FBMP=5", "bootcmd=bootm 0xe8000000"};
    const Trial restore{[&] { start_with({}, image_of(kept)); }, bootenv_backup};
    auto results = for_each_cut("restore from the backup", restore, [&](const std::string &where) {
        const bool window = only_padding_missing(kept);
        settle();
        EXPECT_EQ(environment(), kept) << where;
        EXPECT_EQ(both_copies_whole(), !window) << where;
        return window ? "leave it with a CRC that fails" : "leave the environment of the backup";
    });
    EXPECT_GT(results["leave the environment of the backup"], 0);
}

TEST(PowerCut, RefreshOfTheBackupNeverHarmsTheEnvironment)
{
    const Environment kept{"HV=0", "FBMP=5"};
    const Trial refresh{[&] { start_with(image_of(kept), image_of({"HV=0", "FBMP=1"})); }, bootenv_backup};
    for_each_cut("refresh of the backup", refresh, [&](const std::string &where) {
        EXPECT_EQ(settle(), 0) << where;
        EXPECT_EQ(environment(), kept) << where;
        EXPECT_TRUE(both_copies_whole()) << where;
        return "leave the environment";
    });
}

// Nothing protects an environment that has no backup yet: its first save, by the first decision at boot, is one erase
// away from losing it.
TEST(PowerCut, FirstStartCanLoseAnEnvironmentWithoutABackup)
{
    const Environment factory{"bootcmd=bootm 0xe8000000", "serial=4711"};
    Environment marked = factory;
    marked.push_back("HV=0");
    const Trial first_start{[&] { start_with(image_of(factory), {}); }, bootenv_backup};
    auto results = for_each_cut("first start, no backup", first_start, [&](const std::string &where) {
        const Image content = flash().copy();
        const bool intact = content == image_of(factory) || content == image_of(marked);
        const bool window = only_padding_missing(marked);
        EXPECT_EQ(settle(), 0) << where;
        EXPECT_EQ(environment(), intact || window ? marked : Environment{"HV=0"}) << where;
        EXPECT_EQ(both_copies_whole(), !window) << where;
        return intact ? "leave the environment" : window ? "leave it with a CRC that fails" : "lose it";
    });
    EXPECT_GT(results["lose it"], 0);
}

} // namespace
} // namespace switchcfg::testing
