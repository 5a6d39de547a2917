// SPDX-License-Identifier: Apache-2.0
#include "support/tool.h"

namespace {

using namespace switchcfg::testing;
using ::testing::HasSubstr;

Outcome trap(const std::string &arguments)
{
    return tool("trap " + arguments);
}

TEST(CmdTrap, QueuesWhatIsEnabledAndDrainsIt)
{
    EXPECT_EQ(trap("send link_flap_detected 0 4").status, 0);
    EXPECT_EQ(trap("list").out, "") << "not enabled";
    EXPECT_EQ(trap("enable all").status, 0);
    EXPECT_EQ(trap("send link_flap_detected 0 4").status, 0);
    EXPECT_EQ(trap("list").out, "") << "not enabled for the port";
    EXPECT_EQ(trap("enable link_flap_detected --port 1/5").status, 0);
    EXPECT_EQ(trap("send link_flap_detected --unit 0 --port 4").status, 0);
    EXPECT_EQ(trap("send login_failed 'two words' nobody").status, 0);
    EXPECT_EQ(trap("disable login_failed").status, 0);
    EXPECT_EQ(trap("send login_failed other nobody").status, 0);
    EXPECT_EQ(trap("list").out, trap("list").out);
    const json traps = json::parse(trap("drain --json").out);
    ASSERT_EQ(traps.size(), 2U);
    EXPECT_EQ(traps[0]["name"], "link_flap_detected");
    EXPECT_EQ(traps[0]["bindings"][0]["value"], "5");
    EXPECT_EQ(traps[1]["bindings"][2]["value"], "two words");
    EXPECT_EQ(trap("list").out, "");
    EXPECT_EQ(trap("enable sfp_changed --port 513").status, 0);
    EXPECT_EQ(trap("send sfp_changed 512 1").status, 0);
    EXPECT_EQ(trap("send sfp_changed 513 1").status, 0);
    EXPECT_EQ(json::parse(trap("drain --json").out).size(), 1U) << "the other port-channel's is off";
    EXPECT_EQ(trap("send cold_start").status, 0);
    EXPECT_EQ(json::parse(trap("watch --count 1 --json").out)["id"], 0);
}

TEST(CmdTrap, RefusesWhatItCannotDo)
{
    for (const auto &[arguments, reason] : std::initializer_list<std::pair<const char *, const char *>>{
             {"enable no_such", "'no_such' is no trap"}, {"enable link_flap_detected --port 9/1", "'9/1' is no port"},
             {"enable cold_start --port 1/1", "has no flag by port"}, {"enable all --port 640", "'640' is no port"},
             {"enable linkUp --port 512", "has no flag by port-channel"},
             {"send link_flap_detected 0 4x", "'4x' is no number that fits"},
             {"send mac_move_detected 00:11", "'00:11' is no MAC address"},
             {"send cfm_fault_notification a b 1 0 1", "(-13)"}}) {
        expect_refused(std::string{"trap "} + arguments, reason);
    }
    EXPECT_EQ(trap("send link_flap_detected 0").status, 2);
    EXPECT_EQ(trap("send no_such").status, 2);
    EXPECT_THAT(trap("send fan_fail --help").out, HasSubstr("fan NUMBER REQUIRED"));
}

} // namespace
