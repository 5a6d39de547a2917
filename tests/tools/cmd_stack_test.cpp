// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/equip.h>
#include <switchcfg/ports.h>
#include <switchcfg/provision.h>

#include "support/tool.h"

namespace {

using namespace switchcfg::testing;
using namespace ::testing;

class CmdStack : public ::testing::Test {
  protected:
    CmdStack() { EXPECT_EQ(tool("init").status, 0); }
    ~CmdStack() override { cfg_exit(); }

    static json data(const std::string &arguments) { return json::parse(tool(arguments + " --json").out); }
};

// What the tool writes is what the library's look-ups and conversions go by.
TEST_F(CmdStack, PopulatedUnitsAnswerEveryQuestion)
{
    ASSERT_EQ(tool("stack populate 9,eth44gp+4gc+4xs+l3,1 --plugged").status, 0);
    ASSERT_EQ(cfg_init(), 0);
    EXPECT_EQ(status_get_num_units(), 3);
    EXPECT_EQ(status_get_last_connected_unit(), 2);
    EXPECT_EQ(status_get_hw_model_num(1), 76);
    EXPECT_STREQ(status_get_hw_model(0), "ETH20GT+4GC+2XX+S+L2");
    EXPECT_STREQ(cfg_equip_get_hostname(), "TQ5200");
    EXPECT_EQ(cfg_equip_get_is_standalone_tq5200(), 0);
    const std::uint8_t mac[] = {2, 0, 0x54, 0x51, 0x52, 2};
    EXPECT_EQ(status_mac_to_unit(mac), 2);
    for (int unit = 0; unit < 3; ++unit) {
        EXPECT_EQ(status_get_cpu_port(unit, 0), 0);
        int modid = -1;
        int port = -1;
        ASSERT_EQ(status_phys_unit_port_to_modid_port(unit, 53, &modid, &port), 0);
        EXPECT_EQ(status_modid_to_unit(modid), unit);
        for (const int user :
            {int{CFG_PORT_CPU}, 0, cfg_equip_get_user_eth_ports(static_cast<std::uint32_t>(unit)) - 1}) {
            int chip_port = -1;
            int back_unit = -1;
            int back = -1;
            ASSERT_EQ(cfg_equip_user_to_phys_port_tq5200(unit, user, &modid, &chip_port), 0);
            ASSERT_EQ(cfg_equip_phys_to_user_port_tq5200(modid, chip_port, &back_unit, &back), 0) << user;
            EXPECT_TRUE(back_unit == unit && back == user) << user;
        }
    }
    EXPECT_EQ(cfg_get_port_type_tq5200_up(1, 44), CFG_PORT_TYPE_FIBRE) << "plugged";

    ASSERT_EQ(tool("stack populate 1").status, 0) << "the others leave";
    EXPECT_EQ(status_get_num_units(), 1);
    EXPECT_EQ(status_get_hw_model_num(1), 0);
    EXPECT_EQ(cfg_equip_get_is_standalone_tq5200(), 1);
    ASSERT_EQ(tool("stack clear").status, 0);
    EXPECT_EQ(status_get_num_units(), 0);
}

TEST_F(CmdStack, UnitsTellWhatIsThereAndWhatIsToBe)
{
    EXPECT_THAT(tool("units").out, HasSubstr("no unit is in the stack"));
    EXPECT_EQ(data("units"), json::array());
    ASSERT_EQ(tool("stack populate 1,2").status, 0);
    ASSERT_EQ(tool("stack provision 5 85").status, 0);
    ASSERT_EQ(tool("stack remove 1 --by-command").status, 0);
    const json units = data("units");
    ASSERT_EQ(units.size(), 3U);
    EXPECT_EQ(units[0]["name"], "ETH24GX+4GC+L2");
    EXPECT_EQ(units[0]["mac"], "02:00:54:51:52:00");
    EXPECT_EQ(units[1]["present"], false);
    EXPECT_EQ(units[1]["logically_removed"], true);
    EXPECT_EQ(units[2]["provisioned_model"], 85);
    EXPECT_THAT(tool("units").out, AllOf(HasSubstr("removed by command"), HasSubstr("ETH24GX+4XS+MPLS")));
    EXPECT_EQ(data("units --all").size(), 8U);

    ASSERT_EQ(tool("stack channel 0/23 639").status, 0);
    ASSERT_EQ(cfg_init(), 0);
    EXPECT_EQ(cfg_port_get_channel(0, 23), 639);
    ASSERT_EQ(tool("stack channel 0/23 none").status, 0);
    EXPECT_EQ(cfg_port_get_channel(0, 23), 0);
}

TEST_F(CmdStack, WrongRequestsChangeNothingAndSayWhy)
{
    ASSERT_EQ(tool("stack populate 7").status, 0);
    const std::pair<const char *, const char *> rows[] = {
        {"stack populate 1,2,86", "model 86: models are numbered from 1 to 85"},
        {"stack populate 1,", "no model is named ''"},
        {"stack populate 1,1,1,1,1,1,1,1,1", "at most 8 units"},
        {"stack remove 3", "unit 3 is not in the stack"},
        {"stack remove 8", "unit 8: units are numbered"},
        {"stack provision 0 ETH9", "no model is named 'ETH9'"},
        {"stack channel 0/1 511", "port-channels are numbered from 512 to 639"},
        {"stack channel 0/52 512", "ports from 0 to 51"},
        {"stack channel 01 512", "is not UNIT/PORT"},
        {"equip show 3", "reports model 0"},
        {"equip show --model 0", "model 0"},
        {"equip models --kind copper --poe", "no model is like that"},
        {"status get unit.nope", "no field is named"},
    };
    for (const auto &[arguments, reason] : rows) {
        expect_refused(arguments, reason);
    }
    EXPECT_EQ(tool("equip show").status, 2);
    EXPECT_EQ(tool("equip models --kind wood").status, 2);
    EXPECT_EQ(data("units").size(), 1U);
}

TEST_F(CmdStack, ModelsAreFilteredAndShown)
{
    EXPECT_EQ(data("equip models").size(), 85U);
    const json models = data("equip models --kind POE --uplink sfp+ --layer l3 --ports 28");
    ASSERT_EQ(models.size(), 1U);
    EXPECT_EQ(models[0]["model"], 84);
    EXPECT_EQ(data("equip models --uplink none --layer mpls").size(), 5U);
    EXPECT_EQ(data("equip models --poe").size(), 33U);

    ASSERT_EQ(tool("stack populate 20").status, 0);
    const json record = data("equip show 0");
    EXPECT_EQ(record, data("equip show --model ETH24GX+4GC+MPLS"));
    EXPECT_EQ(record["user_ports"], 28);
    EXPECT_EQ(record["xfp_port"], json::array({-1, -1, -1, -1}));
    EXPECT_EQ(record["has_media_manual_control"][24], 1);
    EXPECT_EQ(record["power_input_names"], json::array({"Main", "Backup"}));
    EXPECT_EQ(record["egress_cpu_id"], 104096);
    EXPECT_EQ(data("equip show --model 84")["power_input_names"], json::array({nullptr, nullptr}));
}

TEST_F(CmdStack, StatusIsReadAndWrittenByField)
{
    ASSERT_EQ(tool("stack populate 3").status, 0);
    EXPECT_EQ(tool("status get hardware.model[0]").out, "3\n");
    EXPECT_EQ(tool("status set hardware.version[7] 12").status, 0);
    ASSERT_EQ(cfg_init(), 0);
    EXPECT_EQ(status_get_hw_version(7), 12);
    EXPECT_EQ(
        data("status list hardware.version"), json::parse(R"({"hardware.version[0]":10,"hardware.version[7]":12})"));
    EXPECT_THAT(tool("status list").out, Not(HasSubstr("boot.environment "))) << "a long record without content";
    ASSERT_EQ(tool("status set --offset 8114804 --type u8 65").status, 0);
    const std::string list = tool("status list boot.environment").out;
    EXPECT_THAT(list, HasSubstr("4100000000"));
    EXPECT_THAT(list, HasSubstr("... (65532 bytes)"));
    EXPECT_LT(list.size(), 1000U);
}

} // namespace
