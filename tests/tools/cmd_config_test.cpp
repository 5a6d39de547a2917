// SPDX-License-Identifier: Apache-2.0
#include "support/tool.h"

namespace {

using namespace switchcfg::testing;
using ::testing::HasSubstr;

TEST(CmdInit, MakesTheFilesAndReportsThem)
{
    std::filesystem::remove_all("/var/run/cfg");
    const json first = json::parse(tool("init --json").out);
    ASSERT_EQ(first.size(), 3U);
    EXPECT_EQ(first[0]["file"], "/var/run/cfg/running.cfg");
    EXPECT_EQ(first[0]["bytes"], 21707629);
    EXPECT_EQ(first[2]["bytes"], 11272288);
    EXPECT_EQ(first[2]["state"], "created");
    EXPECT_EQ(json::parse(tool("init --json").out)[2]["state"], "present");
}

TEST(CmdConfig, SetIsSeenByGetListAndDiff)
{
    EXPECT_EQ(tool("config diff").out, "");
    EXPECT_EQ(tool("config set time.utc_offset_minutes -90").status, 0);
    EXPECT_EQ(tool("config get time.utc_offset_minutes").out, "-90\n");
    EXPECT_EQ(tool("config --default get time.utc_offset_minutes").out, "0\n");
    EXPECT_EQ(tool("config set sntp.key.value[1] secret").status, 0);
    EXPECT_EQ(tool("config set sntp.server[2] 7f000001000000000000000000000000:04").status, 0);
    EXPECT_EQ(tool("config set 'trap.enable[135]' 0xff").status, 0);

    const json values = json::parse(tool("config list --json").out);
    EXPECT_EQ(values["time.utc_offset_minutes"], -90);
    EXPECT_EQ(values["sntp.key.value[1]"], "secret");
    EXPECT_EQ(values["trap.enable[135]"], 255);
    EXPECT_EQ(values["sntp.server[2]"], "7f00000100000000000000000000000004");
    EXPECT_FALSE(values.contains("trap.enable[0]")) << "unset elements are left out";
    EXPECT_TRUE(json::parse(tool("config list trap.enable --all --json").out).contains("trap.enable[0]"));

    EXPECT_EQ(tool("config set --offset 21707628 --type u8 7").status, 0);
    const json diff = json::parse(tool("config diff --json").out);
    ASSERT_EQ(diff.size(), 5U);
    EXPECT_EQ(diff[4], json({{"field", "offset 21707628"}, {"running", "07"}, {"default", "00"}}));
}

TEST(CmdConfig, RawAccessAgreesWithTheFieldAndStaysInside)
{
    EXPECT_EQ(tool("config set time.utc_offset_minutes 180").status, 0);
    EXPECT_EQ(tool("config get --offset 10547940 --type i32").out, "180\n");
    expect_refused("config get --offset 21707626 --type u32", "outside the configuration");
    expect_refused("config get --offset 21707629 --type u8", "outside the configuration");
    expect_refused("config set --offset 21707620 --type 'bytes[10]' 00", "outside the configuration");
    expect_refused("config get --offset -1 --type u8", "offset", 2);
    expect_refused("config get --offset 0 --type u128", "unknown type 'u128'");
    expect_refused("config get --offset 0 --type 'bytes[0]'", "unknown type");
    expect_refused("config get --offset 0 --type 'bytes[99999999999]'", "unknown type");
}

TEST(CmdConfig, BadNamesAndValuesAreRefusedAndChangeNothing)
{
    expect_refused("config get no.such.field", "no field is named 'no.such.field'");
    expect_refused("config get 'trap.enable[136]'", "'trap.enable[136]' is no element of trap.enable[0..135]");
    expect_refused("config get 'sntp.interval[0]'", "is no element of sntp.interval");
    expect_refused("config get", "name a field");
    expect_refused("config set trap.enable 1", "has 136 elements");
    expect_refused("config set sntp.enable 256", "'256' is not a number from 0 to 255");
    expect_refused("config set sntp.enable 1x", "is not a number");
    expect_refused("config set 'sntp.key.value[0]' ninechars", "takes at most 8 characters, got 9");
    expect_refused("config set 'sntp.server[0]' 00", "takes 17 bytes, got 1");
    expect_refused("config set 'sntp.server[0]' 0g", "hexadecimal");
    EXPECT_EQ(tool("config diff").out, "");
    expect_refused("nonsense", "", 2);
    expect_refused("", "", 2);
    std::filesystem::remove_all("/var/run/cfg");
    expect_refused("config list", "/var/run/cfg/running.cfg: cannot map the configuration: No such file or directory");
}

} // namespace
