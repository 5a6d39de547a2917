// SPDX-License-Identifier: Apache-2.0
// Questions about units that take more than one field of a record.
#include "core/config_region.h"
#include "equip/port_conversion.h"
#include "equip/record.h"

using namespace switchcfg;

namespace {

constexpr int invalid_unit = -3;
constexpr int invalid_parameter = -7;
constexpr int processor_user_port = -2;

constexpr int port_channels = 128;
constexpr int tu12_per_vc4 = 63;

} // namespace

int cfg_equip_get_number_of_user_interfaces(std::uint32_t unit, std::uint32_t type, int *count_out) noexcept
{
    if (!unit_is_valid(unit) || !unit_is_known(unit)) {
        return invalid_unit;
    }
    if (count_out == nullptr) {
        return invalid_parameter;
    }
    const ModelRecord &record = unit_record(unit);
    switch (type) {
    case CFG_EQUIP_USER_ETH:
        *count_out = record.user_eth_ports;
        return 0;
    case CFG_EQUIP_USER_PORT_CHANNEL:
        *count_out = port_channels;
        return 0;
    case CFG_EQUIP_USER_CESOP:
        *count_out = record.is_cesop != 0 ? 1 : 0;
        return 0;
    case CFG_EQUIP_USER_BUNDLE:
        *count_out = record.user_bundle;
        return 0;
    case CFG_EQUIP_USER_G704:
        *count_out = record.user_g704;
        return 0;
    case CFG_EQUIP_USER_E1C:
        *count_out = record.user_e1c;
        return 0;
    case CFG_EQUIP_USER_PTP:
        *count_out = record.user_ptp;
        return 0;
    case CFG_EQUIP_USER_SDH:
        *count_out = record.user_sdh;
        return 0;
    case CFG_EQUIP_USER_VC4:
        *count_out = record.user_vc4;
        return 0;
    case CFG_EQUIP_USER_TU12:
        *count_out = record.user_vc4 >= 1 ? tu12_per_vc4 : 0;
        return 0;
    default:
        return invalid_parameter;
    }
}

int cfg_equip_system_is_class_id_supported() noexcept
{
    for (std::uint32_t unit = 0; unit < status_layout::max_units; ++unit) {
        const ModelRecord &record = unit_record(unit);
        if (unit_is_present(unit) && record.is_fabric == 0 && record.vlan_class_id_support == 0) {
            return 0;
        }
    }
    return 1;
}

int cfg_equip_is_cpu_phys_port(std::uint32_t unit, int phys_port) noexcept
{
    const std::uint8_t *const region = status_base();
    if (region == nullptr || !unit_is_valid(unit)) {
        return 0;
    }
    const std::int32_t module = load(region, status_layout::module_id, unit, 0);
    int user_unit = 0;
    int user_port = 0;
    return chip_to_user_port(module, phys_port, user_unit, user_port) == 0 && user_port == processor_user_port ? 1 : 0;
}

int cfg_unit_mode_control_check_if_board_mode_is_failover() noexcept
{
    const std::uint8_t *const config = running_config;
    return config != nullptr && load(config, config_layout::stack_failover) != 0 ? 1 : 0;
}

int cfg_equip_is_failover_supported() noexcept
{
    return cfg_unit_mode_control_check_if_board_mode_is_failover();
}
