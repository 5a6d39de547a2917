// SPDX-License-Identifier: Apache-2.0
#include "support/tool.h"

namespace {

using namespace switchcfg::testing;
using ::testing::HasSubstr;

Outcome error(const std::string &arguments)
{
    return tool("error " + arguments);
}

TEST(CmdError, ExplainsCodesAndNamesTheUnknownOnes)
{
    EXPECT_EQ(error("-8 0 -133").out, "CODE  MESSAGE\n-8    Not found\n0     (success)\n-133\n");
    EXPECT_THAT(error("-255").out, HasSubstr("current one.\\r\\n All NETs")) << "one line of the table each";
    EXPECT_EQ(json::parse(error("-422 --json").out)[0]["message"],
        "Storm Control action not supported in this mode.\r\nChange mode to PPS before proceeding.");

    const Outcome partly = error("-56 -8 -2147483648");
    EXPECT_EQ(partly.status, 1);
    EXPECT_EQ(partly.out, "CODE  MESSAGE\n-8    Not found\n");
    EXPECT_EQ(partly.err, "switchcfg: not assigned to any error: -56, -2147483648\n");
}

TEST(CmdError, TranslatesAndListsNumberings)
{
    EXPECT_EQ(error("--bcm -15 -99").out,
        "THEIRS  CODE  MESSAGE\n-15     -42   Invalid configuration\n-99     -10   Error configuring hardware\n");
    EXPECT_EQ(json::parse(error("--stp 32 --json").out),
        json::array({{{"theirs", 32}, {"code", -91}, {"message", "STP: No action"}}}));
    EXPECT_EQ(json::parse(error("--psm --json -1004").out)[0]["code"], -8);

    const json all = json::parse(error("--list --json").out);
    EXPECT_EQ(all.size(), 423U);
    EXPECT_EQ(all.front()["code"], -1);
    EXPECT_EQ(all.back()["code"], -486);
    EXPECT_EQ(json::parse(error("--list --stp --json").out).size(), 33U);
}

TEST(CmdError, WrongUseIsRefused)
{
    for (const char *arguments : {"", "x", "-8x", "99999999999", "--list -8", "--bcm --stp 1"}) {
        expect_refused(std::string{"error "} + arguments, "", 2);
    }
}

} // namespace
