// SPDX-License-Identifier: Apache-2.0
#include "ports_fixture.h"

#include <switchcfg/provision.h>

namespace switchcfg::testing {
namespace {

using PortKinds = PortsTest;

bool is_one_of(int value, std::initializer_list<int> list)
{
    return std::ranges::find(list, value) != list.end();
}

// The lists of the boards were written down one by one; this is what must hold between them.
TEST_F(PortKinds, ListsAgreeOnEveryModelAndPort)
{
    for (int model = 1; model <= last_model; ++model) {
        SCOPED_TRACE(model);
        put(6, model);
        const cfg_equip_record &record = Equip_tq5200[model];
        std::uint32_t ports[CFG_PBMP_WORDS];
        std::uint32_t cages[CFG_PBMP_WORDS];
        ASSERT_EQ(cfg_equip_get_slot_pbmp_tq5200(6, ports), 0);
        ASSERT_EQ(cfg_equip_get_slot_pbmp_tcv_tq5200(6, cages), 0);
        int combo_ports = 0;
        int fast_ports = 0;
        for (int port = 0; port < 52; ++port) {
            SCOPED_TRACE(port);
            plug(6, port, false);
            const int unplugged = cfg_get_port_type_tq5200_up(6, port);
            plug(6, port, true);
            const int type = cfg_get_port_type_tq5200_up(6, port);
            const bool combo = cfg_equip_is_combo_port_tq5200(6, port) == 1;
            ASSERT_EQ(has(ports, port), port < record.user_eth_ports);
            if (!has(ports, port)) {
                ASSERT_FALSE(has(cages, port));
                ASSERT_EQ(unplugged == CFG_PORT_TYPE_STACKING, port < record.user_eth_ports + record.stack_ports);
                continue;
            }
            combo_ports += combo ? 1 : 0;
            ASSERT_EQ(unplugged != type, combo) << "a plugged transceiver makes the difference";
            ASSERT_EQ(
                has(cages, port), is_one_of(type, {CFG_PORT_TYPE_FIBRE, CFG_PORT_TYPE_XFP, CFG_PORT_TYPE_SFP_PLUS}));
            ASSERT_EQ(has(cages, port), cfg_equip_is_port_transceiver_tq5200_up(6, port) == 1);
            const bool fast = is_one_of(type, {CFG_PORT_TYPE_XFP, CFG_PORT_TYPE_SFP_PLUS});
            fast_ports += fast ? 1 : 0;
            ASSERT_EQ(cfg_get_port_max_speed_tq5200_up(6, port), fast ? 10000 : 1000);
            ASSERT_EQ(combo || type == CFG_PORT_TYPE_COPPER, port < record.num_electrical_ports);
            ASSERT_EQ(cfg_equip_has_cable_diag_support_tq5200(6, port) == 1, port < record.num_electrical_ports);
            ASSERT_EQ(cfg_get_poe_is_capable_port_tq5200(6, port) == 1,
                cfg_equip_has_poe_tq5200(6) == 1 && port < record.num_electrical_ports);
        }
        EXPECT_EQ(combo_ports, record.num_electrical_ports == 0 ? 0 : 4);
        EXPECT_EQ(fast_ports != 0, record.xfp_transceiver_present == 1);
        EXPECT_EQ(record.user_ports, record.user_eth_ports);
    }
}

TEST_F(PortKinds, SpotRows)
{
    const struct {
        int model, port, unplugged, plugged;
    } rows[] = {{1, 27, 10, 10}, {19, 51, 10, 10}, {2, 23, 10, 10}, {2, 25, 11, 11}, {85, 27, 14, 14}, {3, 24, 13, 13},
        {4, 26, 13, 13}, {6, 19, 7, 7}, {6, 20, 7, 10}, {8, 25, 13, 13}, {8, 26, 11, 11}, {9, 24, 11, 11},
        {82, 24, 14, 14}, {11, 47, 7, 10}, {11, 51, 7, 10}, {13, 49, 13, 13}, {13, 50, 7, 10}, {12, 49, 11, 11},
        {16, 48, 14, 14}, {80, 51, 11, 11}, {0, 0, 10, 10}, {86, 24, 10, 10}, {-5, 51, 10, 10}};
    for (const auto &row : rows) {
        put(1, row.model);
        plug(1, row.port, false);
        EXPECT_EQ(cfg_get_port_type_tq5200_up(1, row.port), row.unplugged) << row.model << "/" << row.port;
        plug(1, row.port, true);
        EXPECT_EQ(cfg_get_port_type_tq5200_up(1, row.port), row.plugged) << row.model << "/" << row.port;
    }
    put(1, 3);
    EXPECT_EQ(cfg_get_port_max_speed_tq5200_up(1, 51), 1000) << "no fast port, whatever the type";
    put(1, 86);
    EXPECT_EQ(cfg_get_port_max_speed_tq5200_up(1, 51), 1000);
    put(0, 2);
    EXPECT_EQ(cfg_equip_is_tx_disable_controlled_by_fpga(24), 1);
    EXPECT_EQ(cfg_equip_is_tx_disable_controlled_by_fpga(23), 0);
}

TEST_F(PortKinds, ProvisionedModelAnswersBeforeTheUnitIsThere)
{
    const auto provision = [&](int model) { store(config.data(), config_layout::unit_provisioned_model, model, 2); };
    EXPECT_EQ(cfg_get_port_type_tq5200_up(2, 0), 10);
    provision(56);
    EXPECT_EQ(cfg_get_port_type_tq5200_up(2, 0), 7);
    EXPECT_EQ(cfg_get_port_type_tq5200_up(2, 24), 13);
    EXPECT_EQ(cfg_equip_is_combo_port_tq5200(2, 20), 1);
    EXPECT_EQ(cfg_get_poe_is_capable_port_tq5200(2, 23), 1);
    EXPECT_EQ(cfg_get_poe_is_capable_port_tq5200(2, 24), 0);
    EXPECT_EQ(cfg_get_port_max_speed_tq5200_up(2, 30), 1000) << "speeds follow the board alone";
    for (const int unknown : {86, -1, INT_MIN, INT_MAX}) {
        provision(unknown);
        EXPECT_EQ(cfg_get_port_type_tq5200_up(2, 24), 10);
        EXPECT_EQ(cfg_equip_is_combo_port_tq5200(2, 20), 0);
    }
    provision(56);
    put(2, 11);
    EXPECT_EQ(cfg_get_port_type_tq5200_up(2, 24), 7) << "the board that is there counts";
    put(2, 0);
    cfg_set_cfg(nullptr);
    EXPECT_EQ(cfg_get_port_type_tq5200_up(2, 24), 10);
}

TEST_F(PortKinds, PortChannelAnswersForItsFirstMember)
{
    put(1, 6);
    put(3, 2);
    EXPECT_EQ(cfg_get_port_type_tq5200(0, 600), -1);
    EXPECT_EQ(cfg_port_set_channel(0, 0, 600), 0);  // not present
    EXPECT_EQ(cfg_port_set_channel(1, 30, 600), 0); // not a port of the unit
    EXPECT_EQ(cfg_get_port_type_tq5200(0, 600), -1);
    EXPECT_EQ(cfg_get_port_max_speed_tq5200(0, 600), -1);
    EXPECT_EQ(cfg_equip_is_port_transceiver_tq5200(0, 600), -1);
    EXPECT_EQ(cfg_port_set_channel(3, 25, 600), 0);
    EXPECT_EQ(cfg_get_port_type_tq5200(99, 600), 11);
    EXPECT_EQ(cfg_get_port_max_speed_tq5200(99, 600), 10000);
    EXPECT_EQ(cfg_equip_is_port_transceiver_tq5200(99, 600), 1);
    EXPECT_EQ(cfg_port_set_channel(1, 23, 600), 0);
    EXPECT_EQ(cfg_port_set_channel(1, 22, 639), 0);
    EXPECT_EQ(cfg_get_port_type_tq5200(0, 600), 7);
    EXPECT_EQ(cfg_equip_is_port_transceiver_tq5200(0, 600), 0);
    EXPECT_EQ(cfg_get_port_type_tq5200(0, 512), -1);
    EXPECT_EQ(cfg_get_port_type_tq5200(0, 511), -7);
    EXPECT_EQ(cfg_get_port_type_tq5200(0, 640), -7);
    EXPECT_EQ(cfg_get_port_type_tq5200_up(1, 600), -7);
    EXPECT_EQ(cfg_get_port_type_tq5200(3, 25), 11);
}

} // namespace
} // namespace switchcfg::testing
