/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file equip_table.h
 * The equipment table itself, for programs that read records in place instead of asking the accessors of equip.h.
 *
 * It lies in an object of its own, libswitchcfg-equipment.so. Linking libswitchcfg, in whatever way, links that one too
 * when the program names the table, and only then: its pointers make it private memory of every process that loads it,
 * 48 KiB. A program that loads libraries by hand finds the table there (dlopen), not in libswitchcfg.so.
 *
 * The table is constant from the program's first instruction on and may be read from any thread.
 */
#ifndef SWITCHCFG_EQUIP_TABLE_H
#define SWITCHCFG_EQUIP_TABLE_H

#include <stdint.h>
#include <switchcfg/equip.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/** What one model has. Texts are constant, null where the model has none. */
struct cfg_equip_record {
    const char *name;                      /**< model name: front ports, uplinks, layer, "(DC)" */
    const char *block_name[1];             /**< user port range of the unit's port block, after one blank */
    const char *mgmt_eth;                  /**< out-of-band management interface */
    int32_t eth_outband_ifaces_num;        /**< number of out-of-band interfaces */
    int32_t int_oid;                       /**< last arc of the model's sysObjectID */
    int32_t local_units;                   /**< switch chips on the board */
    int32_t num_electrical_ports;          /**< copper (RJ45) front ports, combo ports included */
    int32_t user_ports;                    /**< front-panel ports */
    int32_t user_eth_ports;                /**< Ethernet ports among them */
    int32_t user_sdh;                      /**< SDH interfaces */
    int32_t stack_ports;                   /**< dedicated stacking ports */
    int32_t is_fabric;                     /**< the unit is a fabric card */
    int32_t board_id;                      /**< board identifier */
    int32_t pwr_num;                       /**< power supply monitors */
    int32_t alarm_present;                 /**< alarm inputs */
    int32_t is_mpu;                        /**< the unit is a management processor card */
    int32_t is_cesop;                      /**< circuit-emulation board */
    int32_t is_sdh;                        /**< SDH board */
    int32_t is_zarlink;                    /**< has the clock-synchronisation chip */
    int32_t linkscan_period;               /**< link scan period of the switch chip, microseconds */
    int32_t int_memory_l2;                 /**< MAC table entries in the switch chip */
    int32_t int_memory_l3;                 /**< L3 table entries in the switch chip */
    int32_t int_memory_l3_ipv4;            /**< of these, IPv4 hosts at most */
    int32_t int_memory_l3_ipv6;            /**< of these, IPv6 hosts at most */
    int32_t int_memory_l3_shared;          /**< IPv4 and IPv6 share the L3 table */
    int32_t ext_memory;                    /**< external table memory */
    int32_t leds[1];                       /**< port LEDs in the LED chain */
    int32_t xfp_leds_control_by_bcm;       /**< the switch chip drives the LEDs of the 10G ports */
    int32_t temperature_i2c_addr[4];       /**< I2C addresses of the temperature sensors, -1 where absent */
    int32_t fpga_i2c_dev[4];               /**< I2C device of the board's FPGA, per FPGA */
    int32_t snmp_model_id;                 /**< model identifier in SNMP tables, one per board */
    int32_t chipset;                       /**< switch-chip family: 256 on 24-port, 128 on 48-port boards */
    int32_t cfm_dm_hw;                     /**< CFM delay measurement in hardware */
    int32_t l3_egress_type;                /**< L3 egress object model */
    int32_t vlan_translate_type;           /**< VLAN translation model */
    int32_t max_vlan_translate;            /**< VLAN translation entries */
    int32_t fpga_num_ports;                /**< front ports wired through the FPGA */
    int32_t transceiver_slot;              /**< transceiver slots per port cage */
    int32_t max_vlan_mac_table;            /**< MAC-based VLAN entries */
    int32_t user_g704;                     /**< G.704 interfaces */
    int32_t user_bundle;                   /**< bundle interfaces */
    int32_t user_ptp;                      /**< PTP interfaces */
    int32_t sync_output;                   /**< synchronisation outputs */
    int32_t sync_hier;                     /**< synchronisation hierarchies */
    int32_t user_e1c;                      /**< E1C interfaces */
    int32_t user_vc4;                      /**< VC4 interfaces */
    int32_t user_sdh_map;                  /**< SDH mappings */
    int32_t hqos_support;                  /**< hierarchical QoS */
    int32_t fp_entries_ingress_per_slice;  /**< ingress field processor: entries per slice */
    int32_t fp_meters_ingress_per_slice;   /**< meters per slice */
    int32_t fp_counters_ingress_per_slice; /**< counters per slice */
    int32_t fp_entries_egress_per_slice;   /**< egress field processor: entries per slice */
    int32_t fp_meters_egress_per_slice;    /**< meters per slice */
    int32_t fp_counters_egress_per_slice;  /**< counters per slice */
    int32_t fp_egress_stage;               /**< has an egress field-processor stage */
    int32_t xfp_transceiver_present;       /**< has 10G transceiver cages */
    int32_t l2_table_show_limit;           /**< limit on MAC table display, 0 for none */
    int32_t do_not_update_HM;              /**< the hardware monitor is not updated */
    int32_t hg_encap_default;              /**< default encapsulation of the stacking ports */
    int32_t learn_limit_hw;                /**< MAC learn limits are enforced in hardware */
    int32_t vlan_class_id_support;         /**< VLAN class identifiers */
    int32_t cfm_two_vlan_tag_support;      /**< CFM on double-tagged frames */
    int32_t ih_magic;                      /**< magic word of the firmware image header that the model accepts */
    int32_t poe_chipset_devices;           /**< PoE controllers */
    int32_t psu_power;                     /**< power supply budget, milliwatts, 0 when it is not fixed */
    int32_t internal_power_usage;          /**< the board's own consumption, milliwatts */
    int32_t power_available_to_ext_dev;    /**< power left for PoE devices, milliwatts */
    uint8_t has_rpu_support;               /**< a redundant power unit can be attached */
    int32_t has_media_manual_control[52];  /**< by physical port: copper or fibre can be chosen by hand */
    int32_t bcm_has_l3;                    /**< the switch chip runs L3 */
    int32_t bcm_has_mpls;                  /**< the switch chip runs MPLS */
    int32_t remark_outer_dot1p;            /**< the outer 802.1p priority can be re-marked */
    uint8_t has_rpu_pwr_sharing_support;   /**< power sharing with the redundant unit */
    int32_t xfp_port[4];                   /**< physical port of each 10G cage, -1 where absent */
    int32_t has_wrr_minbw_errata;          /**< the chip's WRR minimum-bandwidth erratum applies */
    int32_t l2_user_entry_size;            /**< entries of the L2 user table */
    int32_t min_fw_version;                /**< lowest firmware version that the model accepts */
    const char *power_input_names[2];      /**< display names of the power inputs */
    int32_t max_num_mpls_vpn;              /**< MPLS VPN instances */
    int32_t egress_max_id;                 /**< highest L3 egress object identifier */
    int32_t egress_min_id;                 /**< lowest L3 egress object identifier */
    int32_t egress_cpu_id;                 /**< L3 egress object that points to the processor */
};

/** The equipment table, indexed by hardware model number. Record 0 is empty. */
extern SWITCHCFG_API const struct cfg_equip_record Equip_tq5200[CFG_EQUIP_RECORDS];

SWITCHCFG_END_DECLS

#endif
