/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file equip.h
 * What each unit of the stack is: accessors of the equipment table.
 *
 * Every supported model has one constant record; equip_table.h is for programs that read records in place. A unit is
 * tied to its record by the hardware model number that its board reports and that the status region holds; the
 * accessors below look the number up afresh on every call, so they follow a unit that is exchanged. They take no lock,
 * allocate nothing and may be called from any thread.
 *
 * Units count from 0 to 7. Any other number, a negative one included, is refused. A model number above 85 (a board
 * newer than this software) is an unknown model and answers from record 0, where every number is 0 and every text is
 * absent; so does every unit while the status region is not mapped.
 */
#ifndef SWITCHCFG_EQUIP_H
#define SWITCHCFG_EQUIP_H

#include <stddef.h>
#include <stdint.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/** Records of the equipment table: 85 models, and record 0 for a model that is not known. */
#define CFG_EQUIP_RECORDS 86

/**
 * @name Fields of a unit's record
 * Each returns the field of the same name from the record of the unit's model.
 * @param unit  unit, 0 to 7
 * @param index element of an array field; NOT checked, the caller passes a valid one
 * @return the value; 0 (null for a text) when the model is not known; -3 when the unit is above 7
 */
/**@{*/
SWITCHCFG_API int cfg_equip_get_local_units(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_user_ports(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_is_fabric(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_stack_ports(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_board_id(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_int_oid(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_pwr_num(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_alarm_present(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_is_mpu(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_linkscan_period(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_int_memory_l2(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_int_memory_l3(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_int_memory_l3_ipv4(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_int_memory_l3_ipv6(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_int_memory_l3_shared(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_ext_memory(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_eth_outband_ifaces_num(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_num_electrical_ports(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_leds(uint32_t unit, uint32_t index) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_xfp_leds_control_by_bcm(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_temperature_i2c_addr(uint32_t unit, uint32_t index) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_fpga_i2c_dev(uint32_t unit, uint32_t index) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_xfp_port(uint32_t unit, uint32_t index) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_transceiver_slot(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_xfp_transceiver_present(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_l2_table_show_limit(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_snmp_model_id(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_chipset(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_l3_egress_type(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_vlan_translate_type(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_max_vlan_translate(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_max_vlan_mac_table(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_hqos_support(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_fp_entries_ingress_per_slice(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_fp_meters_ingress_per_slice(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_fp_counters_ingress_per_slice(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_fp_entries_egress_per_slice(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_fp_meters_egress_per_slice(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_fp_counters_egress_per_slice(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_fp_egress_stage(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_is_cesop(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_is_zarlink(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_is_sdh(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_user_g704(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_user_bundle(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_user_ptp(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_sync_output(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_sync_hier(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_user_eth_ports(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_user_sdh(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_user_e1c(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_user_vc4(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_user_sdh_map(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_fpga_num_ports(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_do_not_update_HM(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_hg_encap_default(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_learn_limit_hw(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_vlan_class_id_support(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_cfm_two_vlan_tag_support(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_ih_magic(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_poe_chipset_devices(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_psu_power(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_internal_power_usage(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_power_available_to_ext_dev(uint32_t unit) SWITCHCFG_NOEXCEPT;
/** @param phys_port physical port, 0 to 51, not checked */
SWITCHCFG_API int cfg_equip_get_has_media_manual_control(uint32_t unit, uint32_t phys_port) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_cfm_dm_hw(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_bcm_has_l3(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_bcm_has_mpls(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_remark_outer_dot1p(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_has_wrr_minbw_errata(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_l2_user_entry_size(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_min_fw_version(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_max_num_mpls_vpn(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_egress_max_id(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_egress_min_id(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_equip_get_egress_cpu_id(uint32_t unit) SWITCHCFG_NOEXCEPT;
/**@}*/

/**
 * @name Eight-bit fields of a unit's record
 * As above, but a unit above 7 gives 253, the error -3 cut to its low byte; callers test for it.
 */
/**@{*/
SWITCHCFG_API uint8_t cfg_equip_get_has_rpu_support(uint32_t unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API uint8_t cfg_equip_get_has_rpu_pwr_sharing_support(uint32_t unit) SWITCHCFG_NOEXCEPT;
/**@}*/

/** The unit's out-of-band management interface. @return constant text; null for an unknown model or a unit above 7 */
SWITCHCFG_API const char *cfg_equip_get_mgmt_eth(uint32_t unit) SWITCHCFG_NOEXCEPT;

/**
 * Copy the text of the port range of a unit's port block, as in " 1-28", or the empty text for an unknown model.
 * @param block port block; every unit has one, block 0; not checked
 * @param dst   receives at most `len` bytes, the last of which is always a terminator
 * @param len   size of `dst` in bytes; with 0 nothing is written
 * @return 0, or -3 with `dst` untouched when the unit is above 7
 */
SWITCHCFG_API int cfg_equip_get_block_name(uint32_t unit, uint32_t block, char *dst, size_t len) SWITCHCFG_NOEXCEPT;

/**
 * Copy the display name of one of a unit's power inputs, empty where the input has none. As cfg_equip_get_block_name().
 * @param index power input, 0 or 1; not checked
 */
SWITCHCFG_API int cfg_equip_get_power_input_names(
    uint32_t unit, uint32_t index, char *dst, size_t len) SWITCHCFG_NOEXCEPT;

/**
 * Print the name of a model: the table's; else, when `model` is what `unit` reports (a board newer than this
 * software), the name that the board itself gives; else "Unsupported model". Model 0 has an empty name.
 * @param n size of `dst` in bytes
 * @return the length that the whole name has, as snprintf() does
 */
SWITCHCFG_API int cfg_equip_get_name_tq5200(int model, uint32_t unit, char *dst, size_t n) SWITCHCFG_NOEXCEPT;

/**
 * Print a unit's sysObjectID. There is no unknown model here: a model number beyond the table answers with the last
 * model's arc, so that the agent of a newer board still presents an identifier of the product line.
 * @param n size of `dst` in bytes
 * @return 0, or -7 when the unit is above 7
 */
SWITCHCFG_API int cfg_equip_get_str_oid_tq5200(uint32_t unit, char *dst, size_t n) SWITCHCFG_NOEXCEPT;

/**
 * A unit's IPv6 address on the management network. For a unit other than 0 with the 48-port boards' chips (chipset 128)
 * it is the first address, whatever `which` is.
 * @param unit  unit, 0 to 8
 * @param which 0 or 1, the first or second address; counted on from the unit's own two, without a check
 * @return constant text; empty for a place behind the last address of unit 8
 */
SWITCHCFG_API const char *cfg_equip_get_mgmt_ipv6_address(uint32_t unit, uint32_t which) SWITCHCFG_NOEXCEPT;

/**
 * The IPv6 address by which the other units reach `unit`: with stacking ports the link-local address made of the unit's
 * MAC address, on interface "atp", else its management address, on VLAN 3 of the management interface.
 * @param unit        unit, 0 to 7
 * @param ifindex_out receives the index of that interface, 0 when there is none
 * @param dst         receives the address text, cut to `len` bytes with its terminator
 * @param len         size of `dst` in bytes, at least 1
 * @return `dst`; null, with nothing written, when the unit is above 7
 */
SWITCHCFG_API char *cfg_equip_get_unit_ipv6_addr(
    uint32_t unit, int *ifindex_out, char *dst, size_t len) SWITCHCFG_NOEXCEPT;

/** Kinds of user interfaces. */
enum cfg_equip_user_interface {
    CFG_EQUIP_USER_ETH = 1,
    CFG_EQUIP_USER_PORT_CHANNEL = 2,
    CFG_EQUIP_USER_CESOP = 3,
    CFG_EQUIP_USER_BUNDLE = 4,
    CFG_EQUIP_USER_G704 = 5,
    CFG_EQUIP_USER_E1C = 6,
    CFG_EQUIP_USER_PTP = 7,
    CFG_EQUIP_USER_SDH = 9,
    CFG_EQUIP_USER_VC4 = 10,
    CFG_EQUIP_USER_TU12 = 11
};

/**
 * Count a unit's user interfaces of one kind.
 * @param type one of cfg_equip_user_interface
 * @return 0 with `*count_out` set; -3 when the unit is above 7 or not in the stack; -7 for any other `type` and a null
 *         `count_out`
 */
SWITCHCFG_API int cfg_equip_get_number_of_user_interfaces(
    uint32_t unit, uint32_t type, int *count_out) SWITCHCFG_NOEXCEPT;

/** @return 1 when every present unit that is not a fabric card supports VLAN class identifiers, else 0 */
SWITCHCFG_API int cfg_equip_system_is_class_id_supported(void) SWITCHCFG_NOEXCEPT;

/** @return 1 when port `phys_port` of the unit's switch chip leads to the processor, else 0, also for a bad unit */
SWITCHCFG_API int cfg_equip_is_cpu_phys_port(uint32_t unit, int phys_port) SWITCHCFG_NOEXCEPT;

/** @return cfg_unit_mode_control_check_if_board_mode_is_failover() */
SWITCHCFG_API int cfg_equip_is_failover_supported(void) SWITCHCFG_NOEXCEPT;

/** @return non-zero when the running configuration puts the boards of the stack into fail-over mode */
SWITCHCFG_API int cfg_unit_mode_control_check_if_board_mode_is_failover(void) SWITCHCFG_NOEXCEPT;

/**
 * @name Brand
 * By the vendor code in the status region.
 * @return constant text, empty for a code that names no brand
 */
/**@{*/
SWITCHCFG_API const char *cfg_equip_get_hostname(void) SWITCHCFG_NOEXCEPT;   /**< default host name */
SWITCHCFG_API const char *cfg_equip_get_vendor(void) SWITCHCFG_NOEXCEPT;     /**< brand name */
SWITCHCFG_API const char *cfg_equip_get_vendor_url(void) SWITCHCFG_NOEXCEPT; /**< the brand's web address */
/**@}*/

SWITCHCFG_END_DECLS

#endif
