// SPDX-License-Identifier: Apache-2.0
// Questions that other chassis answer board by board and this one answers once.
#include <switchcfg/ports.h>

int cfg_equip_is_match_vlan_inner_supported_tq5200(int /*unit*/) noexcept
{
    return 1;
}

int cfg_equip_has_env_backup_tq5200() noexcept
{
    return 1;
}

int cfg_equip_has_ddr800_tq5200(int /*unit*/) noexcept
{
    return 1;
}

int cfg_equip_get_generic_user_port_type_tq5200(int /*unit*/, int /*port*/) noexcept
{
    return 1;
}

int cfg_equip_is_stack_internal_tq5200() noexcept
{
    return 0;
}

int cfg_equip_is_port_connected_to_fpga_tq5200(int /*unit*/, int /*port*/) noexcept
{
    return 0;
}

int cfg_equip_check_egress_filter_ethernet_range_enabled_tq5200(int /*unit*/) noexcept
{
    return 0;
}

int cfg_equip_get_fpga_xfp_mux_tq5200(int /*unit*/, int /*port*/) noexcept
{
    return 0;
}

int cfg_equip_support_fan_status_tq5200(int /*unit*/) noexcept
{
    return 0;
}

int cfg_equip_support_fan_eeprom_tq5200(int /*unit*/) noexcept
{
    return 0;
}

int cfg_equip_get_is_phy_hl65_tq5200(int /*unit*/, int /*port*/) noexcept
{
    return 0;
}

int cfg_equip_get_xfp_mode_sel_tq5200(int /*unit*/, int /*port*/) noexcept
{
    return 0;
}

int cfg_equip_has_mpc8548_rev_3_1_tq5200(int /*unit*/) noexcept
{
    return 0;
}

int cfg_equip_get_is_port_sdh_tq5200(int /*unit*/, int /*port*/) noexcept
{
    return 0;
}

int cfg_equip_is_local_tunnel_available_tq5200(int /*unit*/) noexcept
{
    return 0;
}

int cfg_equip_get_fpga_i2c_bus_tq5200(int /*unit*/) noexcept
{
    return -1;
}

int cfg_equip_get_hig_ports_by_unit_tq5200(int /*unit*/) noexcept
{
    return -1;
}

int cfg_equip_get_sfp_switch_ctrl_tq5200(int /*unit*/, int /*port*/) noexcept
{
    return -1;
}
