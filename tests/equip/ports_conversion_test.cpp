// SPDX-License-Identifier: Apache-2.0
#include "ports_fixture.h"

#include <set>

namespace switchcfg::testing {
namespace {

using PortConversion = PortsTest;

int chip_port(int unit, int user_port)
{
    int module = INT_MIN;
    return value_of([&](int *port) { return cfg_equip_user_to_phys_port_tq5200(unit, user_port, &module, port); });
}

int local_user_port(int phys_port, int unit)
{
    return value_of([&](int *port) { return cfg_equip_phys_to_local_user_port_tq5200(phys_port, unit, port); });
}

TEST_F(PortConversion, ThereAndBackIsTheSamePortOnEveryModelPortAndUnit)
{
    for (int model = 1; model <= last_model; ++model) {
        for (int unit = 0; unit < units; ++unit) {
            put(unit, model);
        }
        for (int unit = 0; unit < units; ++unit) {
            const int ports = Equip_tq5200[model].user_eth_ports + Equip_tq5200[model].stack_ports;
            std::set<int> used;
            for (int port = 0; port < ports; ++port) {
                int chip_module = 0;
                int phys_port = 0;
                ASSERT_EQ(cfg_equip_user_to_phys_port_tq5200(unit, port, &chip_module, &phys_port), 0);
                ASSERT_EQ(chip_module, module(unit));
                ASSERT_TRUE(used.insert(phys_port).second) << "model " << model << " port " << port;
                int back_unit = -1;
                int back_port = -1;
                ASSERT_EQ(cfg_equip_phys_to_user_port_tq5200(chip_module, phys_port, &back_unit, &back_port), 0);
                ASSERT_TRUE(back_unit == unit && back_port == port) << "model " << model << " port " << port;
            }
        }
    }
}

TEST_F(PortConversion, BoardsAreWiredAsTheirSchematicsSay)
{
    const struct {
        int model, user, chip;
    } wires[] = {
        {1, 0, 2}, {1, 26, 28}, {26, 27, 29},                                           // 24 fibre ports
        {5, 25, 27}, {5, 26, 29}, {85, 27, 28},                                         // and four cages
        {6, 15, 17}, {6, 16, 21}, {59, 17, 20}, {83, 18, 19}, {7, 19, 18}, {7, 25, 27}, // 20 copper ports
        {8, 16, 21}, {8, 24, 28}, {57, 25, 29},                                         // and a stacking module
        {10, 19, 18}, {84, 24, 26}, {10, 26, 29}, {37, 27, 28},                         // and four cages
        {11, 0, 30}, {14, 8, 2}, {17, 28, 42}, {79, 40, 49}, {62, 43, 46}, {12, 48, 26}, {12, 51, 29}, // 44
        {15, 0, 30}, {80, 49, 27}, {18, 50, 29}, {77, 51, 28},                                         // and four cages
    };
    for (const auto &wire : wires) {
        put(3, wire.model);
        EXPECT_EQ(chip_port(3, wire.user), wire.chip) << "model " << wire.model << " port " << wire.user;
        EXPECT_EQ(local_user_port(wire.chip, 3), wire.user) << "model " << wire.model;
    }
}

TEST_F(PortConversion, PortsThatTheBoardHasNot)
{
    put(0, 11);
    EXPECT_EQ(chip_port(0, 52), -3);
    EXPECT_EQ(chip_port(0, -1), -3);
    EXPECT_EQ(local_user_port(54, 0), -3);
    EXPECT_EQ(local_user_port(-1, 0), -3);
    EXPECT_EQ(local_user_port(1, 0), -1) << "wired to no front port";
    for (const int straight_on : {7, 15}) { // neither of these boards refuses a port
        put(0, straight_on);
        EXPECT_EQ(chip_port(0, 52), 54);
        EXPECT_EQ(chip_port(0, 640), 642);
        EXPECT_EQ(chip_port(0, INT_MAX), INT_MIN + 1);
        EXPECT_EQ(local_user_port(300, 0), 298);
        EXPECT_EQ(local_user_port(INT_MIN, 0), INT_MAX - 1);
    }
    for (const int unknown : {0, 86, -1, INT_MIN, INT_MAX}) {
        put(0, unknown);
        EXPECT_EQ(chip_port(0, 5), -3);
        EXPECT_EQ(local_user_port(10, 0), 8);
    }
}

TEST_F(PortConversion, PortChannelsPassAndProcessorPortIsTheHighest)
{
    int module_out = 0;
    int port_out = 0;
    for (const int port_channel : {512, 639}) {
        ASSERT_EQ(cfg_equip_user_to_phys_port_tq5200(-77, port_channel, &module_out, &port_out), 0);
        EXPECT_EQ(module_out, -77);
        EXPECT_EQ(port_out, port_channel);
    }
    EXPECT_EQ(cfg_equip_user_to_phys_port_tq5200(8, 640, &module_out, &port_out), -7);

    put(2, 0); // the processor port needs no known model
    EXPECT_EQ(chip_port(2, CFG_PORT_CPU), 256);
    set_bits(bytes(status, status_layout::module_cpu_ports, 2, 0), 0, 1);
    EXPECT_EQ(chip_port(2, CFG_PORT_CPU), 1);
    set_bits(bytes(status, status_layout::module_cpu_ports, 2, 0), 223, 224);
    ASSERT_EQ(cfg_equip_user_to_phys_port_tq5200(2, CFG_PORT_CPU, &module_out, &port_out), 0);
    EXPECT_EQ(port_out, 224);
    EXPECT_EQ(module_out, module(2));
}

TEST_F(PortConversion, ChipPortsAreLookedUpInTheModulesBitmaps)
{
    put(1, 6);
    put(5, 6);
    set_bits(bytes(status, status_layout::module_more_ports, 5, 0), 60, 60);
    set_bits(bytes(status, status_layout::module_cpu_ports, 5, 0), 0, 0);
    int unit = -1;
    int port = -1;
    EXPECT_EQ(value_of([&](auto *out) { return cfg_equip_phys_to_user_unit_tq5200(module(5), out); }), 5);
    const auto convert = [&](int module_id, int phys_port) {
        unit = port = INT_MIN;
        return cfg_equip_phys_to_user_port_tq5200(module_id, phys_port, &unit, &port);
    };
    EXPECT_EQ(convert(module(5), 60), 0);
    EXPECT_EQ(port, 58);
    EXPECT_EQ(convert(module(1), 60), -3) << "in neither bitmap of that module";
    EXPECT_EQ(unit, INT_MIN);
    for (const int processor : {0, static_cast<int>(CFG_CHIP_PORT_CPU)}) {
        EXPECT_EQ(convert(module(5), processor), 0);
        EXPECT_EQ(port, CFG_PORT_CPU);
        EXPECT_EQ(unit, 5);
    }
    for (const int outside : {-1, 256, INT_MAX, INT_MIN}) {
        EXPECT_EQ(convert(module(5), outside), -3);
    }
    EXPECT_EQ(convert(4711, 5), -3);
    store(status, status_layout::unit_present, 0, 5);
    EXPECT_EQ(convert(module(5), 5), -3);

    put(5, 11);
    set_bits(bytes(status, status_layout::module_more_ports, 5, 0), 60, 60);
    EXPECT_EQ(convert(module(5), 60), -3) << "a port of the chip, but none of the board";

    // Second modules are found, and absurd counts bounded.
    put(7, 6);
    store(status, status_layout::unit_subunits, INT_MAX, 7);
    EXPECT_EQ(cfg_equip_phys_to_user_unit_tq5200(-4711, &unit), -3);
    store(status, status_layout::unit_subunits, 2, 7);
    store(status, status_layout::module_id, 555, 7, 1);
    EXPECT_EQ(cfg_equip_phys_to_user_unit_tq5200(555, &unit), 1);
    EXPECT_EQ(unit, 7);
    store(status, status_layout::unit_subunits, -1, 7);
    EXPECT_EQ(cfg_equip_phys_to_user_unit_tq5200(module(7), &unit), -3);
}

TEST_F(PortConversion, BitmapsConvertPortByPort)
{
    for (const int model : {3, 5, 8, 10, 12, 15}) {
        put(4, model);
        std::uint32_t all[CFG_PBMP_WORDS];
        std::memset(all, 0xFF, sizeof all);
        cfg_equip_phys_pbmp out;
        std::memset(&out, 0xEE, sizeof out);
        ASSERT_EQ(cfg_equip_user_to_phys_pbmp_tq5200(4, all, &out), 0);
        cfg_equip_phys_pbmp expected{};
        expected.chips = 1;
        expected.chip[0].module = module(4);
        for (int port = 0; port < Equip_tq5200[model].user_eth_ports; ++port) {
            const int phys_port = chip_port(4, port);
            expected.chip[0].ports[phys_port / 32] |= 1U << (phys_port % 32);
        }
        EXPECT_EQ(std::memcmp(&out, &expected, sizeof out), 0) << "model " << model;
    }
    const std::uint32_t one[CFG_PBMP_WORDS] = {1U << 16};
    cfg_equip_phys_pbmp out;
    put(4, 0);
    ASSERT_EQ(cfg_equip_user_to_phys_pbmp_tq5200(4, one, &out), 0);
    EXPECT_EQ(out.chips, 0);
}

TEST_F(PortConversion, LedsFollowTheChainOfTheBoard)
{
    const struct {
        int model, offset, chip;
    } leds[] = {{1, 26, 28}, {2, 26, 29}, {3, 27, 28}, {85, 24, 26}, {6, 16, 21}, {8, 24, 26}, {8, 19, 18},
        {10, 26, 29}, {10, 24, 26}, {11, 0, 30}, {18, 50, 29}, {11, 52, -3}, {2, 99, 101}, {0, 26, 26}, {86, 26, 26}};
    for (const auto &led : leds) {
        put(0, led.model);
        EXPECT_EQ(cfg_equip_led_offset_to_port_tq5200(led.offset), led.chip) << led.model << " " << led.offset;
    }
}

} // namespace
} // namespace switchcfg::testing
