// SPDX-License-Identifier: Apache-2.0
// What is the same on every board of the chassis.
#include <switchcfg/ports.h>

#include "equip/unit_words.h"

using namespace switchcfg;

int cfg_equip_get_max_num_units_tq5200() noexcept
{
    return static_cast<int>(status_word(status_layout::max_unit_count));
}

int cfg_equip_get_max_num_ports_tq5200(int unit) noexcept
{
    return is_unit(unit) ? model_record(model_number(unit)).user_eth_ports : result::invalid_unit_or_port;
}

int cfg_equip_get_is_standalone_tq5200() noexcept
{
    return status_word(status_layout::stack_formed) == 0 ? 1 : 0;
}

int cfg_equip_check_egress_filter_valid_actions_tq5200(int /*unit*/, int action) noexcept
{
    switch (action) {
    case 17:
    case 28:
    case 29:
    case 41:
    case 46:
    case 61:
    case 66:
    case 81:
    case 82:
    case 86:
    case 87:
    case 88:
    case 90:
        return 1;
    default:
        return 0;
    }
}

int cfg_equip_check_egress_filter_max_prio_tq5200(int /*unit*/, int prio) noexcept
{
    return prio < 2 ? 1 : 0;
}

int cfg_equip_get_i2c_bus_num_tq5200(int device) noexcept
{
    return device == 9 ? 1 : 0;
}

int cfg_equip_get_sfp_i2c_switch_delay_tq5200() noexcept
{
    return 2000;
}

int cfg_equip_get_xfp_i2c_switch_delay_tq5200() noexcept
{
    return 35000;
}

int cfg_equip_get_port_features_tq5200() noexcept
{
    return 7;
}

int cfg_equip_get_chassis_model_tq5200() noexcept
{
    return 9;
}

const char *cfg_equip_get_bp_fuse_status_tq5200() noexcept
{
    return "N/A";
}
