// SPDX-License-Identifier: Apache-2.0
// The plain accessors: a field of the record of a unit's model.
#include "equip/record.h"

namespace switchcfg {
namespace {

constexpr int invalid_unit = -3;

template<auto Field>
int number(std::uint32_t unit) noexcept
{
    return unit_is_valid(unit) ? unit_record(unit).*Field : invalid_unit;
}

// The error is cut to its low byte, and callers test for that.
template<auto Field>
std::uint8_t byte(std::uint32_t unit) noexcept
{
    return unit_is_valid(unit) ? unit_record(unit).*Field : static_cast<std::uint8_t>(invalid_unit);
}

template<auto Field>
int element(std::uint32_t unit, std::uint32_t index) noexcept
{
    return unit_is_valid(unit) ? (unit_record(unit).*Field)[index] : invalid_unit;
}

} // namespace
} // namespace switchcfg

using namespace switchcfg;

int cfg_equip_get_local_units(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::local_units>(unit);
}

int cfg_equip_get_user_ports(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::user_ports>(unit);
}

int cfg_equip_get_is_fabric(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::is_fabric>(unit);
}

int cfg_equip_get_stack_ports(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::stack_ports>(unit);
}

int cfg_equip_get_board_id(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::board_id>(unit);
}

int cfg_equip_get_int_oid(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::int_oid>(unit);
}

int cfg_equip_get_pwr_num(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::pwr_num>(unit);
}

int cfg_equip_get_alarm_present(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::alarm_present>(unit);
}

int cfg_equip_get_is_mpu(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::is_mpu>(unit);
}

int cfg_equip_get_linkscan_period(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::linkscan_period>(unit);
}

int cfg_equip_get_int_memory_l2(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::int_memory_l2>(unit);
}

int cfg_equip_get_int_memory_l3(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::int_memory_l3>(unit);
}

int cfg_equip_get_int_memory_l3_ipv4(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::int_memory_l3_ipv4>(unit);
}

int cfg_equip_get_int_memory_l3_ipv6(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::int_memory_l3_ipv6>(unit);
}

int cfg_equip_get_int_memory_l3_shared(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::int_memory_l3_shared>(unit);
}

int cfg_equip_get_ext_memory(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::ext_memory>(unit);
}

int cfg_equip_get_eth_outband_ifaces_num(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::eth_outband_ifaces_num>(unit);
}

int cfg_equip_get_num_electrical_ports(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::num_electrical_ports>(unit);
}

int cfg_equip_get_leds(std::uint32_t unit, std::uint32_t index) noexcept
{
    return element<&cfg_equip_record::leds>(unit, index);
}

int cfg_equip_get_xfp_leds_control_by_bcm(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::xfp_leds_control_by_bcm>(unit);
}

int cfg_equip_get_temperature_i2c_addr(std::uint32_t unit, std::uint32_t index) noexcept
{
    return element<&cfg_equip_record::temperature_i2c_addr>(unit, index);
}

int cfg_equip_get_fpga_i2c_dev(std::uint32_t unit, std::uint32_t index) noexcept
{
    return element<&cfg_equip_record::fpga_i2c_dev>(unit, index);
}

int cfg_equip_get_xfp_port(std::uint32_t unit, std::uint32_t index) noexcept
{
    return element<&cfg_equip_record::xfp_port>(unit, index);
}

int cfg_equip_get_transceiver_slot(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::transceiver_slot>(unit);
}

int cfg_equip_get_xfp_transceiver_present(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::xfp_transceiver_present>(unit);
}

int cfg_equip_get_l2_table_show_limit(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::l2_table_show_limit>(unit);
}

int cfg_equip_get_snmp_model_id(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::snmp_model_id>(unit);
}

int cfg_equip_get_chipset(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::chipset>(unit);
}

int cfg_equip_get_l3_egress_type(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::l3_egress_type>(unit);
}

int cfg_equip_get_vlan_translate_type(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::vlan_translate_type>(unit);
}

int cfg_equip_get_max_vlan_translate(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::max_vlan_translate>(unit);
}

int cfg_equip_get_max_vlan_mac_table(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::max_vlan_mac_table>(unit);
}

int cfg_equip_get_hqos_support(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::hqos_support>(unit);
}

int cfg_equip_get_fp_entries_ingress_per_slice(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::fp_entries_ingress_per_slice>(unit);
}

int cfg_equip_get_fp_meters_ingress_per_slice(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::fp_meters_ingress_per_slice>(unit);
}

int cfg_equip_get_fp_counters_ingress_per_slice(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::fp_counters_ingress_per_slice>(unit);
}

int cfg_equip_get_fp_entries_egress_per_slice(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::fp_entries_egress_per_slice>(unit);
}

int cfg_equip_get_fp_meters_egress_per_slice(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::fp_meters_egress_per_slice>(unit);
}

int cfg_equip_get_fp_counters_egress_per_slice(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::fp_counters_egress_per_slice>(unit);
}

int cfg_equip_get_fp_egress_stage(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::fp_egress_stage>(unit);
}

int cfg_equip_get_is_cesop(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::is_cesop>(unit);
}

int cfg_equip_get_is_zarlink(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::is_zarlink>(unit);
}

int cfg_equip_get_is_sdh(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::is_sdh>(unit);
}

int cfg_equip_get_user_g704(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::user_g704>(unit);
}

int cfg_equip_get_user_bundle(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::user_bundle>(unit);
}

int cfg_equip_get_user_ptp(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::user_ptp>(unit);
}

int cfg_equip_get_sync_output(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::sync_output>(unit);
}

int cfg_equip_get_sync_hier(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::sync_hier>(unit);
}

int cfg_equip_get_user_eth_ports(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::user_eth_ports>(unit);
}

int cfg_equip_get_user_sdh(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::user_sdh>(unit);
}

int cfg_equip_get_user_e1c(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::user_e1c>(unit);
}

int cfg_equip_get_user_vc4(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::user_vc4>(unit);
}

int cfg_equip_get_user_sdh_map(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::user_sdh_map>(unit);
}

int cfg_equip_get_fpga_num_ports(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::fpga_num_ports>(unit);
}

int cfg_equip_get_do_not_update_HM(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::do_not_update_HM>(unit);
}

int cfg_equip_get_hg_encap_default(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::hg_encap_default>(unit);
}

int cfg_equip_get_learn_limit_hw(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::learn_limit_hw>(unit);
}

int cfg_equip_get_vlan_class_id_support(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::vlan_class_id_support>(unit);
}

int cfg_equip_get_cfm_two_vlan_tag_support(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::cfm_two_vlan_tag_support>(unit);
}

int cfg_equip_get_ih_magic(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::ih_magic>(unit);
}

int cfg_equip_get_poe_chipset_devices(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::poe_chipset_devices>(unit);
}

int cfg_equip_get_psu_power(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::psu_power>(unit);
}

int cfg_equip_get_internal_power_usage(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::internal_power_usage>(unit);
}

int cfg_equip_get_power_available_to_ext_dev(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::power_available_to_ext_dev>(unit);
}

int cfg_equip_get_has_media_manual_control(std::uint32_t unit, std::uint32_t phys_port) noexcept
{
    return element<&cfg_equip_record::has_media_manual_control>(unit, phys_port);
}

int cfg_equip_get_cfm_dm_hw(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::cfm_dm_hw>(unit);
}

int cfg_equip_get_bcm_has_l3(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::bcm_has_l3>(unit);
}

int cfg_equip_get_bcm_has_mpls(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::bcm_has_mpls>(unit);
}

int cfg_equip_get_remark_outer_dot1p(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::remark_outer_dot1p>(unit);
}

int cfg_equip_get_has_wrr_minbw_errata(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::has_wrr_minbw_errata>(unit);
}

int cfg_equip_get_l2_user_entry_size(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::l2_user_entry_size>(unit);
}

int cfg_equip_get_min_fw_version(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::min_fw_version>(unit);
}

int cfg_equip_get_max_num_mpls_vpn(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::max_num_mpls_vpn>(unit);
}

int cfg_equip_get_egress_max_id(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::egress_max_id>(unit);
}

int cfg_equip_get_egress_min_id(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::egress_min_id>(unit);
}

int cfg_equip_get_egress_cpu_id(std::uint32_t unit) noexcept
{
    return number<&cfg_equip_record::egress_cpu_id>(unit);
}

std::uint8_t cfg_equip_get_has_rpu_support(std::uint32_t unit) noexcept
{
    return byte<&cfg_equip_record::has_rpu_support>(unit);
}

std::uint8_t cfg_equip_get_has_rpu_pwr_sharing_support(std::uint32_t unit) noexcept
{
    return byte<&cfg_equip_record::has_rpu_pwr_sharing_support>(unit);
}

const char *cfg_equip_get_mgmt_eth(std::uint32_t unit) noexcept
{
    if (!unit_is_valid(unit)) {
        return nullptr;
    }
    const ShortText &name = unit_texts(unit).mgmt_eth;
    return name[0] != '\0' ? name.data() : nullptr;
}
