// SPDX-License-Identifier: Apache-2.0
// How ports are wired beside the chip: lanes, LEDs, the FPGA's control bits, transceiver chips.
#include <switchcfg/ports.h>

#include "equip/port_conversion.h"
#include "equip/port_layouts.h"
#include "equip/unit_words.h"

#include <initializer_list>

namespace switchcfg {
namespace {

consteval std::uint64_t ports(std::initializer_list<int> list)
{
    std::uint64_t mask = 0;
    for (const int port : list) {
        mask |= std::uint64_t{1} << port;
    }
    return mask;
}

// The sockets of the upper row have their lanes swapped, up to where the next transceiver chip begins; two are not.
constexpr std::uint64_t inverted_20 = ports({0, 2, 4, 6, 8, 12});
constexpr std::uint64_t inverted_48 = ports({0, 2, 4, 6, 8, 12, 16, 18, 20, 22, 24, 26, 28, 30, 32, 34, 36, 38});

// Copper boards begin an FPGA group at their first combo port, and those with more uplinks a second one behind the
// combo ports.
struct GroupStarts {
    std::uint8_t first;
    std::uint8_t second;
};
constexpr std::uint8_t none = 255;
constexpr ModelSet one_group_20 = "6 8 29-30 33-34 47 49 52-53 56-57";
constexpr ModelSet one_group_48 = "11 13 39 41 62-63 66-67 78";
// clang-format off
constexpr PerModel<GroupStarts> group_starts{{none, none}, {
    {one_group_20,                     {20, none}},
    {models::family_20 - one_group_20, {20, 24}},
    {one_group_48,                     {44, none}},
    {models::family_48 - one_group_48, {44, 48}},
}};
// clang-format on

constexpr ModelSet ten_gigabit_in_fpga =
    "2 4-5 7 9-10 12 14-18 21-22 25-28 31-32 35-38 40 42-46 48 50-51 54-55 58-61 64-65 68-77 79-80 85";
constexpr ModelSet transmit_disable_in_fpga = "1-80 85";
constexpr ModelSet listed_transmit_disable = "2 4-5 21-22 25-28";
constexpr ModelSet fibre_without_cages = "1 19-20";

constexpr int tx_disable_first_register = 45;

} // namespace
} // namespace switchcfg

using namespace switchcfg;

int cfg_equip_is_txrx_inverted(int unit, int port) noexcept
{
    if (!is_unit(unit) || !is_user_port(port)) {
        return 0;
    }
    const std::int32_t model = model_number(unit);
    const std::uint64_t inverted = models::family_20.contains(model)   ? inverted_20
                                   : models::family_48.contains(model) ? inverted_48
                                                                       : 0;
    return static_cast<int>((inverted >> port) & 1U);
}

int cfg_equip_is_port_fpga_first_tq5200(int unit, int port, int fallback) noexcept
{
    if (is_unit(unit) && is_user_port(port)) {
        const GroupStarts starts = group_starts[model_number(unit)];
        if (starts.first != none) {
            return port == starts.first || port == starts.second ? 1 : 0;
        }
    }
    return fallback % 8 == 0 ? 1 : 0;
}

int cfg_equip_get_is_phy_xgxs16g_tq5200(int unit, int port) noexcept
{
    return port >= 24 && port <= 27 && unit_is_one_of(unit, fibre_without_cages) ? 1 : 0;
}

int cfg_equip_port_has_bcm5488_tq5200(int phys_port) noexcept
{
    return phys_port >= 2 && phys_port <= 17 && unit_is_one_of(0, models::family_20) ? 1 : 0;
}

int cfg_equip_port_to_fpga_tx_disable_bit_tq5200(int port, int *reg, int *mask) noexcept
{
    if (!is_user_port(port) || reg == nullptr || mask == nullptr) {
        return result::invalid_parameter;
    }
    if (!unit_is_one_of(0, transmit_disable_in_fpga)) {
        return result::not_found;
    }
    *reg = tx_disable_first_register + port / 8;
    *mask = 1 << (port % 8);
    return 0;
}

int cfg_equip_tcv_port_to_fpga_i2c_mux_tq5200(int port, uint8_t *mux) noexcept
{
    if (port < 0 || port >= model_record(model_number(0)).user_eth_ports) {
        return result::invalid_unit_or_port;
    }
    if (mux == nullptr) {
        return result::invalid_parameter;
    }
    *mux = static_cast<std::uint8_t>(port + 1);
    return 0;
}

int cfg_equip_10GX_port_to_fpga_bit_tq5200(int unit, int port, int *bit) noexcept
{
    if (!is_unit(unit) || !is_user_port(port) || bit == nullptr) {
        return result::invalid_parameter;
    }
    if (!ten_gigabit_in_fpga.contains(model_number(unit))) {
        return result::invalid_unit_or_port;
    }
    *bit = port % 8;
    return 0;
}

int cfg_equip_xe_port_to_tx_disable_entry_tq5200(int port) noexcept
{
    if ((port == 24 || port == 25) && unit_is_one_of(0, listed_transmit_disable)) {
        return port + 2;
    }
    return result::unavailable;
}

int cfg_equip_fpga_port_to_port_tq5200(int unit, int port) noexcept
{
    if (!is_unit(unit) || port < 0 || port >= model_record(model_number(unit)).user_eth_ports) {
        return result::invalid_unit_or_port;
    }
    return port;
}

int cfg_equip_port_to_fpga_port_tq5200(int unit, int port) noexcept
{
    return cfg_equip_fpga_port_to_port_tq5200(unit, port);
}

// The fibre boards with cages share the LED chain of the board with four of them, and a stacking module does not change
// the chain of its board.
int cfg_equip_led_offset_to_port_tq5200(int offset) noexcept
{
    const std::int32_t model = model_number(0);
    const Layout layout = layout_of[model];
    switch (layout) {
    case Layout::none:
        return offset;
    case Layout::f24:
    case Layout::f24x:
        return chip_port_of(fibre_without_cages.contains(model) ? Layout::f24 : Layout::f24x, offset);
    case Layout::c20:
    case Layout::c20s:
        return chip_port_of(Layout::c20, offset);
    case Layout::c20x:
        return chip_port_of(layout, offset);
    case Layout::c48:
    case Layout::c48x:
        break;
    }
    int module = 0;
    int phys_port = 0;
    const int converted = user_to_chip_port(0, offset, module, phys_port);
    return converted == 0 ? phys_port : converted;
}
