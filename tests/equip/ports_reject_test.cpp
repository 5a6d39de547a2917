// SPDX-License-Identifier: Apache-2.0
// Units and ports that nobody has, on a region with nothing readable beside it.
#include "ports_fixture.h"

#include <switchcfg/equip.h>

namespace switchcfg::testing {
namespace {

using PortRejects = PortsTest;

constexpr int hostile[] = {8, 9, -1, -2, 255, 256, 1409, -100000, 1 << 28, INT_MAX, INT_MIN};
std::uint32_t bitmap[CFG_PBMP_WORDS];
cfg_equip_phys_pbmp chip_bitmap;
int out[2];

struct UnitCall {
    int refusal;
    int (*call)(int unit);
};

constexpr UnitCall unit_calls[] = {
    {-7, [](int u) { return cfg_equip_user_to_phys_port_tq5200(u, 0, &out[0], &out[1]); }},
    {-7, [](int u) { return cfg_equip_user_to_phys_port_tq5200(u, CFG_PORT_CPU, &out[0], &out[1]); }},
    {-3, [](int u) { return cfg_equip_phys_to_local_user_port_tq5200(2, u, out); }},
    {-7, [](int u) { return cfg_equip_user_to_phys_pbmp_tq5200(u, bitmap, &chip_bitmap); }},
    {-3, [](int u) { return cfg_equip_fpga_port_to_port_tq5200(u, 0); }},
    {-3, [](int u) { return cfg_equip_port_to_fpga_port_tq5200(u, -5); }},
    {-7, [](int u) { return cfg_get_port_type_tq5200(u, 0); }},
    {-7, [](int u) { return cfg_get_port_type_tq5200_up(u, 24); }},
    {-7, [](int u) { return cfg_get_port_max_speed_tq5200(u, 0); }},
    {0, [](int u) { return cfg_equip_is_port_transceiver_tq5200(u, 20); }},
    {0, [](int u) { return cfg_equip_is_combo_port_tq5200(u, 20); }},
    {0, [](int u) { return cfg_equip_has_cable_diag_support_tq5200(u, 20); }},
    {0, [](int u) { return cfg_get_poe_is_capable_port_tq5200(u, 0); }},
    {0, [](int u) { return cfg_equip_is_txrx_inverted(u, 0); }},
    {1, [](int u) { return cfg_equip_is_port_fpga_first_tq5200(u, 21, 8); }},
    {0, [](int u) { return cfg_equip_get_is_phy_xgxs16g_tq5200(u, 24); }},
    {-7, [](int u) { return cfg_equip_10GX_port_to_fpga_bit_tq5200(u, 0, out); }},
    {-3, [](int u) { return cfg_equip_get_stack_port_num_tq5200(u, out, 2); }},
    {-3, [](int u) { return cfg_equip_stack_port_to_id_tq5200(u, 24, out); }},
    {-3, [](int u) { return cfg_equip_stack_id_to_port_tq5200(u, 1, out); }},
    {-7, [](int u) { return cfg_equip_get_slot_pbmp_tq5200(u, bitmap); }},
    {-7, [](int u) { return cfg_equip_get_slot_pbmp_tcv_tq5200(u, bitmap); }},
    {0, cfg_equip_get_exp_board_is_present_tq5200},
    {-1, [](int u) { return cfg_equip_get_exp_board_tq5200(u, 1); }},
    {'N', [](int u) { return int{*cfg_equip_get_exp_board_position_tq5200(u, 1)}; }},
    {0, cfg_equip_is_quali2_tq5200},
    {-7, cfg_equip_is_quali2_part2_tq5200},
    {-7, cfg_equip_is_quali2_part3_tq5200},
    {0, cfg_equip_is_quali1_with_bcc_ech_5200},
    {0, cfg_equip_has_usb_console_tq5200},
    {1, cfg_equip_has_non_inverted_ddr_spd_tq5200},
    {0, cfg_equip_has_spd_v13_tq5200},
    {0, cfg_equip_unit_local_is_10gx_tq5200},
    {0, cfg_equip_get_is_L3_tq5200},
    {0, cfg_equip_check_ipfix_enabled_tq5200},
    {0, cfg_equip_has_poe_tq5200},
    {-7, cfg_equip_is_main_power_fixed_tq5200},
    {-7, cfg_equip_has_fan_control_tq5200},
    {-7, [](int u) { return cfg_get_equip_fan_present_tq5200(u, 0); }},
    {0, cfg_equip_is_cos_wfq_through_rr_tq5200},
    {-3, cfg_equip_get_max_num_ports_tq5200},
};

TEST_F(PortRejects, UnitsBeyondTheStack)
{
    RecordProperty("guarded", guarded ? "yes" : "no");
    // What a ninth unit would be, were it looked at.
    for (int unit = 0; unit < units; ++unit) {
        put(unit, 8, 20);
    }
    const auto ninth = [](const FieldInfo &field) { return field.place_of(units); };
    const std::int32_t model = 8;
    const std::int32_t word = 1;
    std::memcpy(status + ninth(status_layout::hardware_model), &model, sizeof model);
    std::memcpy(status + ninth(status_layout::hardware_version), &hostile[4], sizeof model);
    std::memcpy(status + ninth(status_layout::unit_present), &word, sizeof word);
    for (const int unit : hostile) {
        for (std::size_t i = 0; i < std::size(unit_calls); ++i) {
            EXPECT_EQ(unit_calls[i].call(unit), unit_calls[i].refusal) << "call " << i << " unit " << unit;
        }
    }
}

TEST_F(PortRejects, PortsBeyondTheFront)
{
    struct {
        int refusal;
        int (*call)(int port);
    } const port_calls[] = {
        {-7, [](int p) { return cfg_get_port_type_tq5200(7, p); }},
        {-7, [](int p) { return cfg_get_port_max_speed_tq5200(7, p); }},
        {0, [](int p) { return cfg_equip_is_port_transceiver_tq5200(7, p); }},
        {0, [](int p) { return cfg_equip_is_combo_port_tq5200(7, p); }},
        {0, [](int p) { return cfg_equip_has_cable_diag_support_tq5200(7, p); }},
        {0, [](int p) { return cfg_get_poe_is_capable_port_tq5200(7, p); }},
        {0, [](int p) { return cfg_equip_is_txrx_inverted(7, p); }},
        {1, [](int p) { return cfg_equip_is_port_fpga_first_tq5200(7, p, 0); }},
        {0, [](int p) { return cfg_equip_is_tx_disable_controlled_by_fpga(p); }},
        {-7, [](int p) { return cfg_equip_port_to_fpga_tx_disable_bit_tq5200(p, &out[0], &out[1]); }},
        {-7, [](int p) { return cfg_equip_10GX_port_to_fpga_bit_tq5200(7, p, out); }},
        {-3, [](int p) { return cfg_equip_stack_port_to_id_tq5200(7, p, out); }},
        {-3, [](int p) { return cfg_equip_port_to_fpga_port_tq5200(7, p); }},
    };
    put(0, 2);
    put(7, 57);
    for (const int port : {52, 64, 511, 640, -1, -2, 1 << 28, INT_MAX, INT_MIN}) {
        for (std::size_t i = 0; i < std::size(port_calls); ++i) {
            EXPECT_EQ(port_calls[i].call(port), port_calls[i].refusal) << "call " << i << " port " << port;
        }
    }
}

TEST_F(PortRejects, NoPlaceForTheResult)
{
    put(0, 85);
    put(2, 8);
    const int refusals[] = {cfg_equip_stack_port_to_id_tq5200(2, 24, nullptr),
        cfg_equip_stack_id_to_port_tq5200(2, 1, nullptr), cfg_equip_get_stack_port_num_tq5200(2, nullptr, 2),
        cfg_equip_tcv_port_to_fpga_i2c_mux_tq5200(0, nullptr), cfg_equip_get_number_of_user_interfaces(2, 1, nullptr),
        cfg_equip_user_to_phys_port_tq5200(2, 512, nullptr, out),
        cfg_equip_user_to_phys_pbmp_tq5200(2, bitmap, nullptr),
        cfg_equip_user_to_phys_pbmp_tq5200(2, nullptr, &chip_bitmap)};
    EXPECT_THAT(refusals, ::testing::Each(-7));
    cfg_equip_unscramble_cable_pairs_tq5200(2, 0, nullptr);
}

TEST_F(PortRejects, EverythingIsUnknownWithoutTheRegion)
{
    status_finish();
    EXPECT_EQ(cfg_equip_user_to_phys_port_tq5200(0, 0, &out[0], &out[1]), -3);
    EXPECT_EQ(cfg_equip_user_to_phys_port_tq5200(0, CFG_PORT_CPU, &out[0], &out[1]), 0);
    EXPECT_EQ(out[1], 256);
    EXPECT_EQ(cfg_equip_phys_to_user_port_tq5200(0, 2, &out[0], &out[1]), -3);
    EXPECT_EQ(cfg_equip_user_to_phys_pbmp_tq5200(0, bitmap, &chip_bitmap), 0);
    EXPECT_EQ(cfg_get_port_type_tq5200(0, 0), 10);
    EXPECT_EQ(cfg_get_port_type_tq5200(0, 512), -1);
    EXPECT_EQ(cfg_equip_get_slot_pbmp_tq5200(0, bitmap), -1);
    EXPECT_EQ(cfg_equip_is_quali1_with_bcc_ech_5200(0), 0);
    EXPECT_EQ(cfg_equip_get_max_num_units_tq5200(), 0);
}

} // namespace
} // namespace switchcfg::testing
