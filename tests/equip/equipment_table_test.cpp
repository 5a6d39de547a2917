// SPDX-License-Identifier: Apache-2.0
#include "ports_fixture.h"

#include <bit>
#include <span>

namespace switchcfg::testing {
namespace {

using EquipmentTable = PortsTest;

// What a model name says. Everything else that is known of a model must agree with it.
struct Named {
    int front = 0;
    std::string kind;
    int combo = 0;
    int cages = 0;
    std::string cage;
    bool stacks = false;
    std::string layer;
    bool dc = false;
};

Named parse(std::string name)
{
    Named named;
    named.dc = name.ends_with(" (DC)");
    name.resize(name.size() - (named.dc ? 5 : 0));
    std::vector<std::string> groups;
    for (std::size_t first = 0, end = 0; end < name.size(); first = end + 1) {
        end = std::min(name.find('+', first), name.size());
        groups.push_back(name.substr(first, end - first));
    }
    EXPECT_GE(groups.size(), 3U);
    EXPECT_TRUE(groups.front().starts_with("ETH"));
    named.front = std::stoi(groups.front().substr(3));
    named.kind = groups.front().substr(5);
    named.layer = groups.back();
    for (const std::string &uplink : std::span{groups}.subspan(1, groups.size() - 2)) {
        if (uplink == "S") {
            EXPECT_FALSE(std::exchange(named.stacks, true));
        } else if (uplink == "4GC") {
            EXPECT_EQ(std::exchange(named.combo, 4), 0);
        } else {
            named.cage = uplink.substr(1);
            EXPECT_EQ(std::exchange(named.cages, std::stoi(uplink)), 0);
            EXPECT_TRUE(named.cage == "XX" || named.cage == "XS") << uplink;
        }
    }
    EXPECT_TRUE(named.front == 24 ? named.kind == "GX" : named.kind == "GT" || named.kind == "GP");
    EXPECT_TRUE(named.layer == "L2" || named.layer == "L3" || named.layer == "MPLS");
    return named;
}

int bits_of(const std::uint32_t (&bitmap)[CFG_PBMP_WORDS])
{
    int bits = 0;
    for (const std::uint32_t word : bitmap) {
        bits += std::popcount(word);
    }
    return bits;
}

TEST_F(EquipmentTable, PortsFollowFromTheName)
{
    for (int model = 1; model <= last_model; ++model) {
        const cfg_equip_record &record = Equip_tq5200[model];
        SCOPED_TRACE(record.name);
        const Named named = parse(record.name);
        put(0, model, 10);
        std::uint32_t ports[CFG_PBMP_WORDS];
        std::uint32_t transceivers[CFG_PBMP_WORDS];
        ASSERT_EQ(cfg_equip_get_slot_pbmp_tq5200(0, ports), 0);
        ASSERT_EQ(cfg_equip_get_slot_pbmp_tcv_tq5200(0, transceivers), 0);
        EXPECT_EQ(record.user_ports, named.front + named.combo + named.cages);
        EXPECT_EQ(record.user_ports, bits_of(ports));
        EXPECT_EQ(record.fpga_num_ports, bits_of(transceivers));
        EXPECT_EQ(record.block_name[0], " 1-" + std::to_string(record.user_ports));

        int stacking_ports[2];
        ASSERT_EQ(cfg_equip_get_stack_port_num_tq5200(0, stacking_ports, 2), named.stacks ? 0 : -1);
        EXPECT_EQ(cfg_equip_get_stacking_support_tq5200(), record.stack_ports);

        const int cage_type = named.cage == "XX" ? CFG_PORT_TYPE_XFP : CFG_PORT_TYPE_SFP_PLUS;
        int cages = 0;
        for (int port = 0; port < record.user_ports; ++port) {
            cages += cfg_get_port_type_tq5200_up(0, port) == cage_type ? 1 : 0;
        }
        EXPECT_EQ(cages, named.cages);
        for (int cage = 0; cage < 4; ++cage) {
            const int first = named.front == 44 ? 48 : 24;
            EXPECT_EQ(record.xfp_port[cage], cage < named.cages ? first + cage : -1);
        }
        // Combo uplinks on a fibre board are the ports whose media can be chosen by hand.
        const bool chosen_by_hand = named.combo == 4 && named.kind == "GX";
        for (int port = 0; port < 52; ++port) {
            EXPECT_EQ(record.has_media_manual_control[port] == 1, chosen_by_hand && port / 4 == 6);
        }
        EXPECT_EQ(cfg_equip_get_is_phy_xgxs16g_tq5200(0, 24) == 1, chosen_by_hand);
        // An uplink beyond the combo ports sits on an expansion board.
        EXPECT_EQ(cfg_equip_get_exp_board_is_present_tq5200(0) == 1, named.cages != 0 || named.stacks);
        // Lists of 10G boards leave some with SFP+ out, but name none without cages.
        int bit = 0;
        EXPECT_EQ(
            cfg_equip_unit_local_is_10gx_tq5200(0) == 1, named.cage == "XX" || (named.cage == "XS" && model >= 81));
        EXPECT_TRUE(named.cages != 0 || cfg_equip_10GX_port_to_fpga_bit_tq5200(0, 24, &bit) != 0);
    }
}

TEST_F(EquipmentTable, ChipLayerAndPowerFollowFromTheName)
{
    int two_alarm_inputs = 0;
    for (int model = 1; model <= last_model; ++model) {
        const cfg_equip_record &record = Equip_tq5200[model];
        SCOPED_TRACE(record.name);
        const Named named = parse(record.name);
        put(0, model, 10);
        const int family = named.front == 24 ? 65 : named.front == 20 ? 66 : 67;
        EXPECT_EQ(cfg_equip_get_chip_id_tq5200(model), family);
        EXPECT_EQ(record.chipset, named.front == 44 ? 128 : 256);
        EXPECT_EQ(record.num_electrical_ports, named.kind == "GX" ? 0 : named.front + 4);
        EXPECT_EQ(cfg_equip_is_optical_model_tq5200() == 1, named.kind == "GX");

        EXPECT_EQ(cfg_equip_get_is_L3_tq5200(0) == 1, named.layer == "L3");
        EXPECT_EQ(record.bcm_has_l3 == 1, named.layer != "L2");
        EXPECT_EQ(record.bcm_has_mpls == 1, named.layer == "MPLS");
        EXPECT_EQ(record.max_num_mpls_vpn, named.layer == "MPLS" ? 256 : 0);
        EXPECT_EQ(record.egress_min_id, named.layer == "L3" && !named.stacks ? 100002 : 104097);
        EXPECT_EQ(record.egress_cpu_id, record.egress_min_id - 1);

        const bool poe = named.kind == "GP";
        EXPECT_EQ(cfg_equip_has_poe_tq5200(0) == 1, poe);
        EXPECT_EQ(record.poe_chipset_devices, poe ? record.num_electrical_ports / 4 : 0);
        EXPECT_EQ(record.power_available_to_ext_dev, poe ? record.psu_power - record.internal_power_usage : 0);
        EXPECT_GE(record.psu_power, record.internal_power_usage);

        // The main supply is built in exactly where a redundant unit is the second input.
        const std::string second = record.power_input_names[1] != nullptr ? record.power_input_names[1] : "";
        EXPECT_EQ(cfg_equip_is_main_power_fixed_tq5200(0) == 1, record.has_rpu_support == 1);
        EXPECT_TRUE(second != "RPU" || record.has_rpu_support == 1);
        EXPECT_EQ(second == "B", named.dc);
        EXPECT_EQ(record.fp_entries_egress_per_slice, named.dc || second.empty() ? 0 : 128);
        two_alarm_inputs += record.alarm_present == 2 ? 1 : 0;
    }
    EXPECT_EQ(two_alarm_inputs, 1);
}

} // namespace
} // namespace switchcfg::testing
