// SPDX-License-Identifier: Apache-2.0
#include "tools/equip_fields.h"

namespace switchcfg::tool {
namespace {

Json json_of(std::int32_t value)
{
    return value;
}

Json json_of(const char *text)
{
    return text != nullptr ? Json(text) : Json();
}

template<typename Element, std::size_t Count>
Json json_of(const Element (&elements)[Count])
{
    Json all = Json::array();
    for (const Element &element : elements) {
        all.push_back(json_of(element));
    }
    return all;
}

template<auto Field>
Json value_of(const cfg_equip_record &record)
{
    return json_of(record.*Field);
}

constexpr EquipField record_fields[] = {
#define FIELD(name)                                                                                                    \
    {                                                                                                                  \
#        name, value_of < &cfg_equip_record::name>                                                                     \
    }
    FIELD(name),
    FIELD(block_name),
    FIELD(mgmt_eth),
    FIELD(eth_outband_ifaces_num),
    FIELD(int_oid),
    FIELD(local_units),
    FIELD(num_electrical_ports),
    FIELD(user_ports),
    FIELD(user_eth_ports),
    FIELD(user_sdh),
    FIELD(stack_ports),
    FIELD(is_fabric),
    FIELD(board_id),
    FIELD(pwr_num),
    FIELD(alarm_present),
    FIELD(is_mpu),
    FIELD(is_cesop),
    FIELD(is_sdh),
    FIELD(is_zarlink),
    FIELD(linkscan_period),
    FIELD(int_memory_l2),
    FIELD(int_memory_l3),
    FIELD(int_memory_l3_ipv4),
    FIELD(int_memory_l3_ipv6),
    FIELD(int_memory_l3_shared),
    FIELD(ext_memory),
    FIELD(leds),
    FIELD(xfp_leds_control_by_bcm),
    FIELD(temperature_i2c_addr),
    FIELD(fpga_i2c_dev),
    FIELD(snmp_model_id),
    FIELD(chipset),
    FIELD(cfm_dm_hw),
    FIELD(l3_egress_type),
    FIELD(vlan_translate_type),
    FIELD(max_vlan_translate),
    FIELD(fpga_num_ports),
    FIELD(transceiver_slot),
    FIELD(max_vlan_mac_table),
    FIELD(user_g704),
    FIELD(user_bundle),
    FIELD(user_ptp),
    FIELD(sync_output),
    FIELD(sync_hier),
    FIELD(user_e1c),
    FIELD(user_vc4),
    FIELD(user_sdh_map),
    FIELD(hqos_support),
    FIELD(fp_entries_ingress_per_slice),
    FIELD(fp_meters_ingress_per_slice),
    FIELD(fp_counters_ingress_per_slice),
    FIELD(fp_entries_egress_per_slice),
    FIELD(fp_meters_egress_per_slice),
    FIELD(fp_counters_egress_per_slice),
    FIELD(fp_egress_stage),
    FIELD(xfp_transceiver_present),
    FIELD(l2_table_show_limit),
    FIELD(do_not_update_HM),
    FIELD(hg_encap_default),
    FIELD(learn_limit_hw),
    FIELD(vlan_class_id_support),
    FIELD(cfm_two_vlan_tag_support),
    FIELD(ih_magic),
    FIELD(poe_chipset_devices),
    FIELD(psu_power),
    FIELD(internal_power_usage),
    FIELD(power_available_to_ext_dev),
    FIELD(has_rpu_support),
    FIELD(has_media_manual_control),
    FIELD(bcm_has_l3),
    FIELD(bcm_has_mpls),
    FIELD(remark_outer_dot1p),
    FIELD(has_rpu_pwr_sharing_support),
    FIELD(xfp_port),
    FIELD(has_wrr_minbw_errata),
    FIELD(l2_user_entry_size),
    FIELD(min_fw_version),
    FIELD(power_input_names),
    FIELD(max_num_mpls_vpn),
    FIELD(egress_max_id),
    FIELD(egress_min_id),
    FIELD(egress_cpu_id),
#undef FIELD
};

} // namespace

std::span<const EquipField> equip_fields()
{
    return record_fields;
}

} // namespace switchcfg::tool
