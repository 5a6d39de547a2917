// SPDX-License-Identifier: Apache-2.0
// switchcfg routing against the routing stack of the lab.
#include "support/daemon.h"
#include "support/tool.h"

namespace {

using namespace switchcfg::testing;
using ::testing::EndsWith;

TEST(CmdRouting, AddsListsAndDeletesRoutes)
{
    const ServingDaemon daemon{SWITCHLAB_ROUTING, {"--routes", "100"}};
    EXPECT_EQ(tool("routing add 10.1.0.0/16 192.0.2.1 --distance 7").status, 0);
    for (int i = 0; i < 99; ++i) {
        ASSERT_EQ(tool("routing add 10.2." + std::to_string(i) + ".0/24 192.0.2.2").status, 0);
    }
    expect_refused("routing add 10.3.0.0/16 192.0.2.1", "answers 5: Insufficient resources (-2)");
    const json routes = json::parse(tool("routing routes --json").out); // in two parts
    ASSERT_EQ(routes.size(), 100U);
    EXPECT_EQ(routes[0], (json{{"prefix", "10.1.0.0/16"}, {"next_hop", "192.0.2.1"}, {"distance", 7}}));
    EXPECT_EQ(routes[99]["prefix"], "10.2.98.0/24");
    const std::string text = tool("routing routes --files").out;
    EXPECT_EQ(lines_of(text).size(), 100U);
    EXPECT_THAT(text, EndsWith("10.2.98.0/24 via 192.0.2.2 distance 1\n"));
    EXPECT_EQ(json::parse(tool("routing send 258 --payload 0a01ffff --json").out)["data"],
        "0a01000000000010c000020100000007");
    EXPECT_EQ(tool("routing del 10.1.0.0/16 192.0.2.1 --distance 7").status, 0);
    expect_refused("routing del 10.1.0.0/16 192.0.2.1 --distance 7", "answers 6: Not found (-8)");
    expect_refused("routing add 10.1.0.1/16 192.0.2.1", "answers 4: Invalid parameter (-7)");
    expect_refused("routing add 10.1.0.0/33 192.0.2.1", "'10.1.0.0/33' is no prefix");
    expect_refused("routing add 10.1.0.0/16 here", "'here' is no IPv4 address");
}

TEST(CmdRouting, SendsAnyCommandAndShowsFailures)
{
    const ServingDaemon daemon{SWITCHLAB_ROUTING, {"--fault", "endless 1"}};
    expect_refused("routing send 1", "DC_CMD_ADD_STATIC_ROUTE (1): Insufficient resources (-2)");
    expect_refused("routing send DC_CMD_ADD_STATIC_ROUTE --payload 00", "answers 3: Invalid parameter (-7)");
    expect_refused("routing send 12345", "Unknown (12345): the routing stack answers 2: Internal operation error (-1)");
    for (const char *fault : {"70726f746f636f6c2d6572726f722031", "636c6f7365", "68616c66"}) { // as the lab writes it
        EXPECT_EQ(tool(std::string{"routing send 224 --payload "} + fault).status, 0);
        expect_refused("routing routes", "DC_CMD_RTM_GET_RIB (257): Internal communication error (-37)");
    }
    expect_refused("routing send 224 --payload 41", "answers 3");
    expect_refused("routing send NOTHING", "'NOTHING' is no command");
    EXPECT_EQ(tool("routing send 257").out, "result 1\n");
    EXPECT_EQ(json::parse(tool("routing commands --json").out).size(), 319U);
    EXPECT_EQ(tool("routing commands VXLBI").out, "id   name\n392  DC_VXLBI_GET_XC\n");
    // Not waited for, so nothing may follow that depends on when it is served.
    EXPECT_EQ(tool("routing send DC_CMD_RTM_CTRL_NED_DELAY").status, 0);
}

} // namespace
