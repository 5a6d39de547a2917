// SPDX-License-Identifier: Apache-2.0
// What kind of port each user port is, and its top speed.
#include <switchcfg/ports.h>

#include "equip/model_lists.h"
#include "equip/port_layouts.h"
#include "equip/unit_words.h"

namespace switchcfg {
namespace {

// From front left to right: one kind, then perhaps combo ports, then another kind.
struct PortKinds {
    std::uint8_t low_end;
    std::uint8_t combo_end;
    std::uint8_t low;
    std::uint8_t high;
};

constexpr std::uint8_t copper = CFG_PORT_TYPE_COPPER;
constexpr std::uint8_t fibre = CFG_PORT_TYPE_FIBRE;
constexpr std::uint8_t xfp = CFG_PORT_TYPE_XFP;
constexpr std::uint8_t sfp_plus = CFG_PORT_TYPE_SFP_PLUS;
constexpr std::uint8_t all = user_port_limit;

constexpr ModelSet newest_copper_20 = "81-84";

// clang-format off
constexpr PerModel<PortKinds> port_kinds{{all, all, fibre, fibre}, {
    {"2-5 21-28",                             {24, 24,  fibre,  xfp}},
    {"85",                                    {24, 24,  fibre,  sfp_plus}},
    {models::family_20 - newest_copper_20,    {20, 24,  copper, xfp}},
    {newest_copper_20,                        {20, 24,  copper, sfp_plus}},
    {"11 13 39 41 62-63 66-67 78",            {44, all, copper, fibre}},
    {"12 14-15 40 42-43 64-65 68-71 79-80",   {44, 48,  copper, xfp}},
    {"16-18 44-46 72-77",                     {44, 48,  copper, sfp_plus}},
}};

// The first port that runs at 10G.
constexpr PerModel<std::uint8_t> first_fast_port{all, {
    {"2 4-10 21-22 25-38 47-61 81-85",        24},
    {"12 14-18 40 42-46 64-65 68-77 79-80",   48},
}};

constexpr std::uint8_t no_combo_ports = all;
constexpr PerModel<std::uint8_t> first_combo_port{no_combo_ports, {
    {models::family_20, 20},
    {models::family_48, 44},
}};
// clang-format on
constexpr unsigned combo_port_count = 4;

// User ports below this can power a device.
constexpr PerModel<std::uint8_t> poe_port_end{0, {{models::poe_24_ports, 24}, {models::poe_48_ports, 48}}};

bool is_port_channel(int port) noexcept
{
    return port >= CFG_PORT_CHANNEL_FIRST && port <= CFG_PORT_CHANNEL_LAST;
}

int port_type(int unit, int port) noexcept
{
    if (!is_unit(unit) || !is_user_port(port)) {
        return result::invalid_parameter;
    }
    const std::int32_t model = expected_model_number(unit);
    const ModelRecord &record = model_record(model);
    if (port >= record.user_eth_ports && port < record.user_eth_ports + record.stack_ports) {
        return CFG_PORT_TYPE_STACKING;
    }
    const PortKinds &kinds = port_kinds[model];
    if (port < kinds.low_end) {
        return kinds.low;
    }
    if (port >= kinds.combo_end) {
        return kinds.high;
    }
    const bool plugged = status_word(status_layout::transceiver_present, unit, port) != 0;
    return plugged ? CFG_PORT_TYPE_FIBRE : CFG_PORT_TYPE_COPPER;
}

int max_speed(int unit, int port) noexcept
{
    if (!is_unit(unit) || !is_user_port(port)) {
        return result::invalid_parameter;
    }
    return port < first_fast_port[model_number(unit)] ? 1000 : 10000;
}

int is_transceiver_port(int unit, int port) noexcept
{
    switch (port_type(unit, port)) {
    case CFG_PORT_TYPE_FIBRE:
    case CFG_PORT_TYPE_XFP:
    case CFG_PORT_TYPE_SFP_PLUS:
    case CFG_PORT_TYPE_OTHER_TRANSCEIVER:
        return 1;
    default:
        return 0;
    }
}

bool is_combo_port(int unit, int port) noexcept
{
    return is_unit(unit) && is_user_port(port) &&
           static_cast<unsigned>(port - first_combo_port[expected_model_number(unit)]) < combo_port_count;
}

// The answer for the first member of a port-channel: units and ports in ascending order.
template<typename Answer>
int of_first_member(int port_channel, Answer answer) noexcept
{
    const std::uint8_t *const config = running_config;
    for (int unit = 0; config != nullptr && unit < unit_count; ++unit) {
        if (!is_present(unit)) {
            continue;
        }
        const int ports = model_record(model_number(unit)).user_eth_ports;
        for (int port = 0; port < ports; ++port) {
            if (load(config, config_layout::port_channel, unit, port) == port_channel) {
                return answer(unit, port);
            }
        }
    }
    return result::unknown;
}

} // namespace
} // namespace switchcfg

using namespace switchcfg;

int cfg_get_port_type_tq5200_up(int unit, int port) noexcept
{
    return port_type(unit, port);
}

int cfg_get_port_type_tq5200(int unit, int port) noexcept
{
    return is_port_channel(port) ? of_first_member(port, port_type) : port_type(unit, port);
}

int cfg_get_port_max_speed_tq5200_up(int unit, int port) noexcept
{
    return max_speed(unit, port);
}

int cfg_get_port_max_speed_tq5200(int unit, int port) noexcept
{
    return is_port_channel(port) ? of_first_member(port, max_speed) : max_speed(unit, port);
}

int cfg_equip_is_port_transceiver_tq5200_up(int unit, int port) noexcept
{
    return is_transceiver_port(unit, port);
}

int cfg_equip_is_port_transceiver_tq5200(int unit, int port) noexcept
{
    return is_port_channel(port) ? of_first_member(port, is_transceiver_port) : is_transceiver_port(unit, port);
}

int cfg_equip_is_combo_port_tq5200(int unit, int port) noexcept
{
    return is_combo_port(unit, port) ? 1 : 0;
}

int cfg_equip_has_cable_diag_support_tq5200(int unit, int port) noexcept
{
    return port_type(unit, port) == CFG_PORT_TYPE_COPPER || is_combo_port(unit, port) ? 1 : 0;
}

int cfg_get_poe_is_capable_port_tq5200(int unit, int port) noexcept
{
    return is_unit(unit) && is_user_port(port) && port < poe_port_end[expected_model_number(unit)] ? 1 : 0;
}

int cfg_equip_is_tx_disable_controlled_by_fpga(int port) noexcept
{
    return port_type(0, port) == CFG_PORT_TYPE_XFP ? 1 : 0;
}
