// SPDX-License-Identifier: Apache-2.0
// What a shell offers, through the file that bash loads; the manual; the live screen.
#include "support/tool.h"

namespace {

using namespace switchcfg::testing;
using namespace ::testing;

TEST(Completion, FollowsTheGrammar)
{
    EXPECT_EQ(offered("tra"), "trap ");
    EXPECT_EQ(offered("trap \"\""), "disable drain enable list send watch ");
    EXPECT_EQ(offered("--json trap li"), "list "); // an option without a value in front
    EXPECT_EQ(offered("log send --level warn"), "warning ");
    EXPECT_EQ(offered("log send --level err --fac"), "--facility ");
    EXPECT_EQ(offered("stack provision 1 ETH24GX+2XX+S+M"), "ETH24GX+2XX+S+MPLS ");
    EXPECT_EQ(offered("config set time.utc_offset_minutes \"\""), " "); // a value can be anything
}

TEST(Completion, OffersWhatTheSwitchHasNow)
{
    EXPECT_EQ(offered("ports \"\""), " "); // no switch, no units, no complaint
    ASSERT_EQ(tool("init").status, 0);
    ASSERT_EQ(tool("stack populate 2,17").status, 0);
    EXPECT_EQ(offered("ports \"\""), "0 1 ");
    EXPECT_THAT(offered("port 1/4"), HasSubstr("1/49 "));
    EXPECT_THAT(offered("port 0/"), Not(HasSubstr("0/26 ")));
}

TEST(Manual, HasAPagePerFamilyThatTheFormatterTakes)
{
    ASSERT_EQ(tool("write-manual /tmp").status, 0);
    const auto page = run_command("cat /tmp/switchcfg-trap.1").out;
    EXPECT_THAT(page, HasSubstr("switchcfg trap send link_flap_detected"));
    EXPECT_THAT(page, HasSubstr(".SS switchcfg trap enable\nLet notifications be sent"));
    EXPECT_EQ(tool("write-manual /nowhere").status, 1);
}

TEST(Top, CountsWhatCameSinceTheLastSample)
{
    ASSERT_EQ(tool("init").status, 0);
    ASSERT_EQ(tool("stack populate 2").status, 0);
    ASSERT_EQ(tool("trap enable high_memory_usage_detected").status, 0);
    ASSERT_EQ(tool("trap send high_memory_usage_detected 91").status, 0);
    const auto run = run_command(
        "(" SWITCHCFG_TOOL " top --json --count 2 --interval 1; echo done) | (read -r first; " SWITCHCFG_TOOL
        " trap send high_memory_usage_detected 92 2>/dev/null; echo \"$first\"; cat)");
    const std::size_t second = run.out.find('\n') + 1;
    const json before = json::parse(run.out.substr(0, second));
    const json after = json::parse(run.out.substr(second, run.out.find('\n', second) - second));
    EXPECT_EQ(before["traps"]["queued"], 1);
    EXPECT_EQ(after["traps"]["queued"], 2);
    EXPECT_GT(after["traps"]["per_second"], 0.1);
    EXPECT_LT(after["traps"]["per_second"], 1.1); // the one that waited already is not counted again
    EXPECT_EQ(after["units"][0]["ports"], 26);
    EXPECT_EQ(after["processes"][0]["name"], "switchcfg");
}

} // namespace
