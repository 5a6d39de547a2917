// SPDX-License-Identifier: Apache-2.0
#include "ports_fixture.h"

#include <numeric>

namespace switchcfg::testing {
namespace {

using PortBoards = PortsTest;

TEST_F(PortBoards, StackingPortsAndIdentifiersNameEachOther)
{
    int value = 0;
    for (const int model : {8, 9, 26, 83, 14, 17}) { // 24, 26 and 50 user ports and a stacking module
        put(2, model);
        const int first = Equip_tq5200[model].user_eth_ports;
        int ports[2] = {};
        ASSERT_EQ(cfg_equip_get_stack_port_num_tq5200(2, ports, 2), 0);
        EXPECT_EQ(ports[0], first + 1) << "the higher port is stacking port 1";
        EXPECT_EQ(ports[1], first);
        for (const int id : {1, 2}) {
            EXPECT_EQ(
                value_of([&](auto *out) { return cfg_equip_stack_id_to_port_tq5200(2, id, out); }), ports[id - 1]);
            EXPECT_EQ(
                value_of([&](auto *out) { return cfg_equip_stack_port_to_id_tq5200(2, ports[id - 1], out); }), id);
        }
        EXPECT_EQ(cfg_equip_stack_port_to_id_tq5200(2, first - 1, &value), -3);
        EXPECT_EQ(cfg_equip_stack_port_to_id_tq5200(2, first + 2, &value), -3);
        for (const int id : {0, 3, INT_MIN}) {
            EXPECT_EQ(cfg_equip_stack_id_to_port_tq5200(2, id, &value), -7);
        }
        EXPECT_EQ(cfg_equip_get_stack_port_num_tq5200(2, ports, 1), -7);
    }

    // 48 user ports, and the stacking module at 50 and 51 all the same.
    put(2, 13);
    EXPECT_EQ(value_of([&](auto *out) { return cfg_equip_stack_id_to_port_tq5200(2, 1, out); }), 51);
    for (const int port : {48, 49, 50, 51}) {
        EXPECT_EQ(cfg_equip_stack_port_to_id_tq5200(2, port, &value), -3);
    }

    put(2, 6);
    int ports[2];
    EXPECT_EQ(cfg_equip_stack_port_to_id_tq5200(2, 24, &value), -43);
    EXPECT_EQ(cfg_equip_stack_id_to_port_tq5200(2, 1, &value), -43);
    EXPECT_EQ(cfg_equip_get_stack_port_num_tq5200(2, ports, 2), -1);

    // A unit that is not in the stack is refused unless its chip's record is in use.
    put(2, 8);
    store(status, status_layout::unit_present, 0, 2);
    store(status, status_layout::module_id, 0, 2, 0);
    EXPECT_EQ(cfg_equip_stack_id_to_port_tq5200(2, 1, &value), -3);
    EXPECT_EQ(cfg_equip_stack_port_to_id_tq5200(2, 24, &value), -3);
    EXPECT_EQ(cfg_equip_get_stack_port_num_tq5200(2, ports, 2), -3);
    store(status, status_layout::subunit_mark, 1, 2, 0);
    EXPECT_EQ(cfg_equip_stack_id_to_port_tq5200(2, 1, &value), 0);

    EXPECT_EQ(cfg_equip_get_stacking_support_tq5200(), 0) << "unit 0 decides";
    put(0, 8);
    EXPECT_EQ(cfg_equip_get_stacking_support_tq5200(), 2);
}

TEST_F(PortBoards, SlotBitmapsCountFromPortZero)
{
    const struct {
        int model;
        std::uint32_t ports[2];
        std::uint32_t cages[2];
    } rows[] = {{3, {0x00FFFFFF, 0}, {0x00FFFFFF, 0}}, {85, {0x0FFFFFFF, 0}, {0x0FFFFFFF, 0}},
        {56, {0x00FFFFFF, 0}, {0x00F00000, 0}}, {83, {0x03FFFFFF, 0}, {0x03F00000, 0}},
        {78, {0xFFFFFFFF, 0x0000FFFF}, {0, 0x0000F000}}, {79, {0xFFFFFFFF, 0x0003FFFF}, {0, 0x0003F000}},
        {80, {0xFFFFFFFF, 0x000FFFFF}, {0, 0x000FF000}}};
    for (const auto &row : rows) {
        put(7, row.model);
        std::uint32_t pbmp[CFG_PBMP_WORDS];
        std::memset(pbmp, 0xEE, sizeof pbmp);
        ASSERT_EQ(cfg_equip_get_slot_pbmp_tq5200(7, pbmp), 0);
        EXPECT_EQ(std::memcmp(pbmp, row.ports, sizeof row.ports), 0) << row.model;
        EXPECT_EQ(std::accumulate(pbmp + 2, pbmp + CFG_PBMP_WORDS, 0U), 0U);
        ASSERT_EQ(cfg_equip_get_slot_pbmp_tcv_tq5200(7, pbmp), 0);
        EXPECT_EQ(std::memcmp(pbmp, row.cages, sizeof row.cages), 0) << row.model;
    }
    put(7, 86);
    for (const auto &[unit, result] : {std::pair{7, -1}, {6, -1}, {8, -7}}) {
        std::uint32_t pbmp[CFG_PBMP_WORDS] = {1, 2, 3, 4, 5, 6, 7, 8};
        EXPECT_EQ(cfg_equip_get_slot_pbmp_tq5200(unit, pbmp), result);
        EXPECT_EQ(std::accumulate(pbmp, pbmp + CFG_PBMP_WORDS, 0U), 0U) << "zeroed first";
    }
}

TEST_F(PortBoards, WiringBesideTheChip)
{
    put(1, 6);
    put(2, 80);
    put(3, 85);
    const auto inverted = [](int unit) {
        std::vector<int> ports;
        for (int port = -1; port <= 64; ++port) {
            if (cfg_equip_is_txrx_inverted(unit, port) == 1) {
                ports.push_back(port);
            }
        }
        return ports;
    };
    EXPECT_EQ(inverted(1), (std::vector{0, 2, 4, 6, 8, 12}));
    EXPECT_EQ(inverted(2), (std::vector{0, 2, 4, 6, 8, 12, 16, 18, 20, 22, 24, 26, 28, 30, 32, 34, 36, 38}));
    EXPECT_EQ(inverted(3), std::vector<int>{});

    EXPECT_EQ(cfg_equip_is_port_fpga_first_tq5200(1, 20, 3), 1);
    EXPECT_EQ(cfg_equip_is_port_fpga_first_tq5200(1, 24, 0), 0);
    put(1, 7);
    EXPECT_EQ(cfg_equip_is_port_fpga_first_tq5200(1, 24, 3), 1);
    EXPECT_EQ(cfg_equip_is_port_fpga_first_tq5200(2, 48, 3), 1);
    EXPECT_EQ(cfg_equip_is_port_fpga_first_tq5200(3, 20, 16), 1) << "the board does not say";

    int reg = 0;
    int mask = 0;
    put(0, 80);
    ASSERT_EQ(cfg_equip_port_to_fpga_tx_disable_bit_tq5200(51, &reg, &mask), 0);
    EXPECT_EQ(reg, 51);
    EXPECT_EQ(mask, 8);
    EXPECT_EQ(cfg_equip_port_to_fpga_tx_disable_bit_tq5200(52, &reg, &mask), -7);
    put(0, 81);
    EXPECT_EQ(cfg_equip_port_to_fpga_tx_disable_bit_tq5200(0, &reg, &mask), -8);
    put(0, 85);
    EXPECT_EQ(cfg_equip_port_to_fpga_tx_disable_bit_tq5200(0, &reg, &mask), 0);

    std::uint8_t mux = 0;
    EXPECT_EQ(cfg_equip_tcv_port_to_fpga_i2c_mux_tq5200(27, &mux), 0);
    EXPECT_EQ(mux, 28);
    EXPECT_EQ(cfg_equip_tcv_port_to_fpga_i2c_mux_tq5200(28, nullptr), -3);

    int bit = 0;
    EXPECT_EQ(value_of([&](auto *out) { return cfg_equip_10GX_port_to_fpga_bit_tq5200(2, 49, out); }), 1);
    put(4, 81);
    EXPECT_EQ(cfg_equip_10GX_port_to_fpga_bit_tq5200(4, 24, &bit), -3) << "no FPGA bits on the newest boards";
    EXPECT_EQ(cfg_equip_unit_local_is_10gx_tq5200(4), 1);
    EXPECT_EQ(cfg_equip_10GX_port_to_fpga_bit_tq5200(4, 52, &bit), -7);

    EXPECT_EQ(cfg_equip_xe_port_to_tx_disable_entry_tq5200(24), -43);
    put(0, 28);
    EXPECT_EQ(cfg_equip_xe_port_to_tx_disable_entry_tq5200(24), 26);
    EXPECT_EQ(cfg_equip_xe_port_to_tx_disable_entry_tq5200(26), -43);

    EXPECT_EQ(cfg_equip_fpga_port_to_port_tq5200(2, 51), 51);
    EXPECT_EQ(cfg_equip_port_to_fpga_port_tq5200(2, 52), -3);
}

TEST_F(PortBoards, CablePairsArePutInOrderByExchanges)
{
    const auto order = [](int unit, int port) {
        int results[10] = {-5, -6, 10, 100, 11, 101, 12, 102, 13, 103};
        cfg_equip_unscramble_cable_pairs_tq5200(unit, port, results);
        EXPECT_EQ(results[0], -5);
        EXPECT_EQ(results[1], -6);
        std::string pairs;
        for (int pair = 0; pair < 4; ++pair) {
            EXPECT_EQ(results[2 + 2 * pair] + 90, results[3 + 2 * pair]) << "status and length move together";
            pairs += static_cast<char>('A' + results[2 + 2 * pair] - 10);
        }
        cfg_equip_unscramble_cable_pairs_tq5200(unit, port, results);
        for (int pair = 0; pair < 4; ++pair) {
            EXPECT_EQ(results[2 + 2 * pair], 10 + pair) << "twice is not at all";
        }
        return pairs;
    };
    put(0, 6);
    put(1, 11);
    put(2, 1);
    const struct {
        int unit, number;
        const char *pairs;
    } rows[] = {{0, 1, "DCBA"}, {0, 2, "BADC"}, {0, 13, "DCBA"}, {0, 11, "DBCA"}, {0, 15, "DBCA"}, {0, 17, "BADC"},
        {0, 24, "BADC"}, {0, 25, "ABCD"}, {1, 17, "DCBA"}, {1, 39, "DCBA"}, {1, 41, "BADC"}, {1, 48, "BADC"},
        {1, 49, "ABCD"}, {2, 1, "ABCD"}, {8, 1, "ABCD"}, {-1, 1, "ABCD"}, {0, 0, "ABCD"}, {0, INT_MIN, "ABCD"}};
    for (const auto &row : rows) {
        EXPECT_EQ(order(row.unit, row.number == INT_MIN ? INT_MIN : row.number - 1), row.pairs) << row.number;
    }
}

TEST_F(PortBoards, ExpansionBoards)
{
    struct Answer {
        int present, rear, front;
        const char *rear_text, *front_text;
        int rear_address, front_address;
    };
    const struct {
        int model, version;
        Answer answer;
    } rows[] = {{2, 9, {0, -1, -1, "None", "None", -7, -7}}, {2, 10, {1, -1, 1, "None", "Front", -7, -7}},
        {3, 10, {1, 0, -1, "Rear", "None", 84, 87}}, {4, 9, {1, 0, -1, "Rear", "None", 84, -7}},
        {85, 10, {1, 0, 1, "Rear", "Front", 84, 87}}, {6, 10, {0, -1, -1, "None", "None", -7, -7}},
        {7, 0, {1, 1, -1, "None", "Front", -7, 87}}, {16, 0, {1, 1, -1, "None", "None", -7, 87}},
        {8, 0, {1, -1, 0, "Rear", "None", 84, -7}}, {8, 10, {1, -1, 0, "Rear", "None", 84, 87}},
        {10, 0, {1, 1, 0, "Rear", "Front", 84, 87}}, {81, 0, {1, 1, -1, "Rear", "Front", 84, 87}},
        {86, 0, {0, -1, -1, "None", "None", -7, -7}}, {0, 20, {0, -1, -1, "None", "None", -7, -7}}};
    for (const auto &[model, version, answer] : rows) {
        SCOPED_TRACE(model);
        put(0, model, version);
        EXPECT_EQ(cfg_equip_get_exp_board_is_present_tq5200(0), answer.present);
        EXPECT_EQ(cfg_equip_get_exp_board_tq5200(0, 0), answer.rear);
        EXPECT_EQ(cfg_equip_get_exp_board_tq5200(0, 1), answer.front);
        EXPECT_STREQ(cfg_equip_get_exp_board_position_tq5200(0, 0), answer.rear_text);
        EXPECT_STREQ(cfg_equip_get_exp_board_position_tq5200(0, 1), answer.front_text);
        EXPECT_EQ(cfg_equip_get_exp_board_i2c_addr_tq5200(0), answer.rear_address);
        EXPECT_EQ(cfg_equip_get_exp_board_i2c_addr_tq5200(1), answer.front_address);
    }
    put(0, 7);
    EXPECT_STREQ(cfg_equip_get_exp_board_position_tq5200(0, 2), "None");
    EXPECT_EQ(cfg_equip_get_exp_board_i2c_addr_tq5200(2), -7);
    put(0, 10);
    EXPECT_STREQ(cfg_equip_get_exp_board_position_tq5200(0, -2), "Front");
    EXPECT_EQ(cfg_equip_get_exp_board_i2c_addr_tq5200(2), 87);
    EXPECT_STREQ(cfg_equip_get_exp_board_name_tq5200(7), "2x10GBase-X (SFP+)");
    EXPECT_STREQ(cfg_equip_get_exp_board_name_tq5200(4), "2GX (100M, SGMII, 1000-X, 2500-X)");
    EXPECT_STREQ(cfg_equip_get_exp_board_name_tq5200(0), "Undefined");
}

TEST_F(PortBoards, HardwareRevisions)
{
    put(1, 13, 9);
    put(2, 13, 10);
    EXPECT_EQ(cfg_equip_is_quali2_tq5200(1), 0);
    EXPECT_EQ(cfg_equip_is_quali2_tq5200(2), 1);
    EXPECT_EQ(cfg_equip_has_ecc4bit_tq5200(2), 1);
    EXPECT_EQ(cfg_equip_is_quali2_part2_tq5200(2), 1);
    EXPECT_EQ(cfg_equip_is_quali2_part3_tq5200(2), 1);
    put(2, 27, 10);
    EXPECT_EQ(cfg_equip_is_quali2_part2_tq5200(2), 0);
    EXPECT_EQ(cfg_equip_is_quali2_part3_tq5200(2), 0);
    put(2, 85, 0);
    EXPECT_EQ(cfg_equip_is_quali2_part3_tq5200(2), 1);
    for (const auto &[version, usb, spd] : {std::tuple{5, 0, 0}, {6, 1, 0}, {7, 1, 0}, {8, 1, 1}}) {
        put(2, 6, version);
        EXPECT_EQ(cfg_equip_has_usb_console_tq5200(2), usb);
        EXPECT_EQ(cfg_equip_has_non_inverted_ddr_spd_tq5200(2), usb);
        EXPECT_EQ(cfg_equip_has_spd_v13_tq5200(2), spd);
    }
    put(2, 0, 0);
    EXPECT_EQ(cfg_equip_has_non_inverted_ddr_spd_tq5200(2), 1);
    store(status, status_layout::hardware_bcc_ech, 7, 1);
    EXPECT_EQ(cfg_equip_is_quali1_with_bcc_ech_5200(1), 1);
    EXPECT_EQ(cfg_equip_is_quali1_with_bcc_ech_5200(2), 0);
    put(0, 6, 10);
    EXPECT_EQ(cfg_equip_is_quali1_with_bcc_ech_5200(1), 0) << "unit 0 decides";
}

TEST_F(PortBoards, ChipPowerAndFans)
{
    struct Answer {
        int chip, fan_control, fans, ipfix;
    };
    // What the table names of chip, power and layer is compared on every model elsewhere.
    const struct {
        int model;
        Answer answer;
    } rows[] = {{1, {65, 0, 2, 0}}, {24, {65, 0, 2, 1}}, {6, {66, 0, 2, 0}}, {83, {66, 1, 3, 0}}, {17, {67, 1, 4, 1}},
        {78, {67, 1, 4, 0}}, {77, {67, 1, 4, 1}}, {0, {-1, -1, -1, 0}}, {86, {-1, -1, -1, 0}}};
    for (const auto &[model, answer] : rows) {
        SCOPED_TRACE(model);
        put(0, model);
        EXPECT_EQ(cfg_equip_get_chip_id_tq5200(model), answer.chip);
        EXPECT_EQ(cfg_equip_has_fan_control_tq5200(0), answer.fan_control);
        EXPECT_EQ(cfg_equip_get_max_num_fans_tq5200(), answer.fans);
        EXPECT_EQ(cfg_get_equip_fan_present_tq5200(0, answer.fans - 1), answer.fans < 0 ? -1 : 1);
        EXPECT_EQ(cfg_get_equip_fan_present_tq5200(0, answer.fans), answer.fans < 0 ? -1 : 0);
        EXPECT_EQ(cfg_equip_check_ipfix_enabled_tq5200(0), answer.ipfix);
        EXPECT_EQ(cfg_equip_is_cos_wfq_through_rr_tq5200(0), answer.chip < 0 ? 0 : 1);
        EXPECT_EQ(cfg_equip_port_has_bcm5488_tq5200(17), answer.chip == 66 ? 1 : 0);
        EXPECT_EQ(cfg_equip_port_has_bcm5488_tq5200(18), 0);
    }
    EXPECT_EQ(cfg_equip_is_main_power_fixed_tq5200(0), -1) << "of no model";
    EXPECT_EQ(cfg_equip_is_optical_model_tq5200() + cfg_equip_get_is_L3_tq5200(0), 0);
    store(status, status_layout::max_unit_count, 5);
    EXPECT_EQ(cfg_equip_get_max_num_units_tq5200(), 5);
    EXPECT_EQ(cfg_equip_get_is_standalone_tq5200(), 1);
    store(status, status_layout::stack_formed, 1);
    EXPECT_EQ(cfg_equip_get_is_standalone_tq5200(), 0);
    EXPECT_EQ(cfg_equip_check_egress_filter_valid_actions_tq5200(0, 88), 1);
    EXPECT_EQ(cfg_equip_check_egress_filter_valid_actions_tq5200(0, 89), 0);
}

} // namespace
} // namespace switchcfg::testing
