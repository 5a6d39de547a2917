/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file ports.h
 * Port numbering of a unit and what follows from its board: kinds, speeds, stacking, slots, expansion boards, power.
 *
 * A unit numbers its front ports twice: as user ports (0 to 51 in front-panel order, what the CLI and the configuration
 * use) and as ports of its switch chip, which is addressed by module identifier. The wiring between the two differs
 * from board to board. Every answer follows from the hardware model number of the unit in the status region, read
 * afresh on each call; where it says "of the provisioned model", a model number of 0 is replaced by the model that the
 * running configuration expects in that unit.
 *
 * Arguments, unless a function says otherwise: `unit` is 0 to 7, every other unit, a negative one included, is refused;
 * `port` is a user port, 0 to 51. A null out-argument gives -7. Out-arguments are written on success only.
 *
 * Results: 0 or a value of 0 and up; -1 unknown model; -3 invalid unit or port; -7 invalid parameter; -8 not found;
 * -43 the feature is not available on the model. Predicates give 1 or 0.
 *
 * Every function may be called from any thread between cfg_init() and cfg_exit(), takes no lock, allocates nothing and
 * logs nothing.
 */
#ifndef SWITCHCFG_PORTS_H
#define SWITCHCFG_PORTS_H

#include <stdint.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/** The user port, and the chip port, that stand for the processor. */
enum { CFG_PORT_CPU = -2, CFG_CHIP_PORT_CPU = 0x14000000 };

/** User ports that stand for port-channels. */
enum { CFG_PORT_CHANNEL_FIRST = 512, CFG_PORT_CHANNEL_LAST = 639 };

/** Words of a port bitmap: port p is bit p % 32 of word p / 32. */
enum { CFG_PBMP_WORDS = 8 };

/** Port types. The last four are transceiver ports. */
enum cfg_port_type {
    CFG_PORT_TYPE_COPPER = 7,    /**< copper gigabit */
    CFG_PORT_TYPE_FIBRE = 10,    /**< gigabit fibre, SFP cage */
    CFG_PORT_TYPE_XFP = 11,      /**< 10G, XFP cage */
    CFG_PORT_TYPE_STACKING = 13, /**< stacking */
    CFG_PORT_TYPE_SFP_PLUS = 14, /**< 10G, SFP+ cage */
    CFG_PORT_TYPE_OTHER_TRANSCEIVER = 15
};

/** Most switch chips a unit's bitmap record has room for. */
enum { CFG_EQUIP_PHYS_PBMP_CHIPS = 4 };

/** The ports of a unit as its switch chips number them. */
struct cfg_equip_phys_pbmp {
    int32_t chips; /**< switch chips of the unit: the entries in use */
    struct {
        int32_t module;                 /**< module identifier of the chip */
        uint32_t ports[CFG_PBMP_WORDS]; /**< its ports */
    } chip[CFG_EQUIP_PHYS_PBMP_CHIPS];
};

/* ---- User ports and chip ports ---------------------------------------------------------------------------------- */

/**
 * The chip's module identifier and the chip port of a user port.
 * A port-channel (512 to 639) comes back as it is, with the unit argument, whatever that is, as its module. User port
 * -2 is the processor port: the highest port in the processor-port bitmap of the unit's first module, 256 when that
 * bitmap is empty. Ports that the board does not have count straight on (chip port = user port + 2).
 * @return 0; -7 for a unit above 7; -3 for a unit without a known model, or for a port outside 0 to 51 on a 48-port
 *         board with at most two 10G cages
 */
SWITCHCFG_API int cfg_equip_user_to_phys_port_tq5200(
    int unit, int user_port, int *module, int *phys_port) SWITCHCFG_NOEXCEPT;

/**
 * The unit that holds the chip with a module identifier: the first match among the modules of the present units, in
 * order.
 * @return the index of the module within the unit, or -3
 */
SWITCHCFG_API int cfg_equip_phys_to_user_unit_tq5200(int module, int *unit) SWITCHCFG_NOEXCEPT;

/**
 * The user port of a chip port of `unit`, by the wiring of its board. A unit without a known model counts straight
 * (user port = chip port - 2); chip ports that are no front ports yield a negative user port.
 * @return 0, or -3 (bad unit; chip port outside 0 to 53 on a 48-port board with at most two 10G cages)
 */
SWITCHCFG_API int cfg_equip_phys_to_local_user_port_tq5200(int phys_port, int unit, int *user_port) SWITCHCFG_NOEXCEPT;

/**
 * Unit and user port of a chip port. The chip port 0x14000000 and those in the module's processor-port bitmap yield
 * user port -2; others must be in one of the module's two port bitmaps.
 * @return 0, or -3 (no present unit has the module, or the module has no such port)
 */
SWITCHCFG_API int cfg_equip_phys_to_user_port_tq5200(
    int module, int phys_port, int *unit, int *user_port) SWITCHCFG_NOEXCEPT;

/**
 * A bitmap of user ports of `unit` as bitmaps of its switch chips. Bits at and above the unit's number of user ports
 * are ignored. The record is zeroed first; a unit without a known model leaves it so.
 * @return 0, or -7 (bad unit, null pointer)
 */
SWITCHCFG_API int cfg_equip_user_to_phys_pbmp_tq5200(
    int unit, const uint32_t user_pbmp[CFG_PBMP_WORDS], struct cfg_equip_phys_pbmp *out) SWITCHCFG_NOEXCEPT;

/** The port itself: the board has no slots. @return `port`, unchecked */
SWITCHCFG_API int cfg_equip_user_to_unit_slot_tq5200(int unit, int port) SWITCHCFG_NOEXCEPT;
/** The port itself: the board has no slots. @return `port`, unchecked */
SWITCHCFG_API int cfg_equip_convert_index_port_to_generic_user_port_tq5200(int unit, int port) SWITCHCFG_NOEXCEPT;
/** The port itself: the board has no slots. @return `port`, unchecked */
SWITCHCFG_API int cfg_equip_convert_generic_user_port_to_port_index_tq5200(int unit, int port) SWITCHCFG_NOEXCEPT;

/** The user port of a port of the FPGA. @return `port` when the unit has that many Ethernet ports, else -3 */
SWITCHCFG_API int cfg_equip_fpga_port_to_port_tq5200(int unit, int port) SWITCHCFG_NOEXCEPT;
/** The FPGA's number of a user port. @return `port` when the unit has that many Ethernet ports, else -3 */
SWITCHCFG_API int cfg_equip_port_to_fpga_port_tq5200(int unit, int port) SWITCHCFG_NOEXCEPT;

/**
 * The chip port that LED `offset` of unit 0 shows.
 * @return the chip port; `offset` itself without a known model; -3 as cfg_equip_user_to_phys_port_tq5200() gives it for
 *         user port `offset` on a 48-port board
 */
SWITCHCFG_API int cfg_equip_led_offset_to_port_tq5200(int offset) SWITCHCFG_NOEXCEPT;

/* ---- Kinds and speeds ------------------------------------------------------------------------------------------- */

/**
 * Type of a user port, of the provisioned model. A combo port is fibre while its transceiver is present, else copper.
 * @return an enum cfg_port_type; 10 for an unknown model; -7 for a bad unit or port
 */
SWITCHCFG_API int cfg_get_port_type_tq5200_up(int unit, int port) SWITCHCFG_NOEXCEPT;
/**
 * The same, where a port from 512 to 639 is a port-channel and answered for its first member: present units and their
 * ports in ascending order. `unit` does not matter then.
 * @return as above, or -1 for a port-channel without a member
 */
SWITCHCFG_API int cfg_get_port_type_tq5200(int unit, int port) SWITCHCFG_NOEXCEPT;

/** Top speed of a user port. @return 1000 or 10000 (Mbit/s); -7 for a bad unit or port */
SWITCHCFG_API int cfg_get_port_max_speed_tq5200_up(int unit, int port) SWITCHCFG_NOEXCEPT;
/** The same for user ports and port-channels, as cfg_get_port_type_tq5200() takes them. @return as above, or -1 */
SWITCHCFG_API int cfg_get_port_max_speed_tq5200(int unit, int port) SWITCHCFG_NOEXCEPT;

/** Whether the port takes a transceiver: its type is 10, 11, 14 or 15. @return 1 or 0 (also for a bad unit or port) */
SWITCHCFG_API int cfg_equip_is_port_transceiver_tq5200_up(int unit, int port) SWITCHCFG_NOEXCEPT;
/** The same for user ports and port-channels, as cfg_get_port_type_tq5200() takes them. @return as above, or -1 */
SWITCHCFG_API int cfg_equip_is_port_transceiver_tq5200(int unit, int port) SWITCHCFG_NOEXCEPT;

/** Whether the port is copper and fibre, one at a time, of the provisioned model. @return 1 or 0 */
SWITCHCFG_API int cfg_equip_is_combo_port_tq5200(int unit, int port) SWITCHCFG_NOEXCEPT;
/** Whether the port's cable can be tested: a copper or combo port. @return 1 or 0 */
SWITCHCFG_API int cfg_equip_has_cable_diag_support_tq5200(int unit, int port) SWITCHCFG_NOEXCEPT;
/** Whether the port can power a device, of the provisioned model. @return 1 or 0 */
SWITCHCFG_API int cfg_get_poe_is_capable_port_tq5200(int unit, int port) SWITCHCFG_NOEXCEPT;

/* ---- Wiring ----------------------------------------------------------------------------------------------------- */

/** Whether the transmit and receive lanes of the port are swapped on the board. @return 1 or 0 */
SWITCHCFG_API int cfg_equip_is_txrx_inverted(int unit, int port) SWITCHCFG_NOEXCEPT;
/**
 * Whether the port is the first of a group in the FPGA's registers. Where the board does not say (bad unit, port
 * outside 0 to 51, 24-port family, unknown model) it is each `fallback` that is a multiple of 8.
 * @return 1 or 0
 */
SWITCHCFG_API int cfg_equip_is_port_fpga_first_tq5200(int unit, int port, int fallback) SWITCHCFG_NOEXCEPT;
/** Whether the FPGA switches the transmitter of the port of unit 0: its type is 11. @return 1 or 0 */
SWITCHCFG_API int cfg_equip_is_tx_disable_controlled_by_fpga(int port) SWITCHCFG_NOEXCEPT;
/** Whether a 16-gigabit serial interface drives the port. @return 1 or 0 */
SWITCHCFG_API int cfg_equip_get_is_phy_xgxs16g_tq5200(int unit, int port) SWITCHCFG_NOEXCEPT;
/** Whether an octal copper transceiver chip drives the chip port of unit 0. @return 1 or 0 */
SWITCHCFG_API int cfg_equip_port_has_bcm5488_tq5200(int phys_port) SWITCHCFG_NOEXCEPT;

/**
 * FPGA register and bit that switch off the transmitter of a port of unit 0.
 * @param reg  receives 45 + port / 8
 * @param mask receives the bit of port % 8
 * @return 0; -7 for a port outside 0 to 51; -8 when unit 0 has none of the models 1 to 80 and 85
 */
SWITCHCFG_API int cfg_equip_port_to_fpga_tx_disable_bit_tq5200(int port, int *reg, int *mask) SWITCHCFG_NOEXCEPT;
/**
 * Setting of the FPGA's I2C multiplexer that reaches the transceiver of a port of unit 0.
 * @return 0; -3 for a port that unit 0 has not; -7 for a null `mux`
 */
SWITCHCFG_API int cfg_equip_tcv_port_to_fpga_i2c_mux_tq5200(int port, uint8_t *mux) SWITCHCFG_NOEXCEPT;
/**
 * Bit of a 10G port in the FPGA's registers.
 * @param bit receives port % 8
 * @return 0; -7 for a bad unit or port; -3 for a model without 10G cages
 */
SWITCHCFG_API int cfg_equip_10GX_port_to_fpga_bit_tq5200(int unit, int port, int *bit) SWITCHCFG_NOEXCEPT;
/**
 * Entry of a 10G port of unit 0 in the transmit-disable list.
 * @return 26 and 27 for ports 24 and 25 of the 24-port boards with two or four XFP cages, else -43
 */
SWITCHCFG_API int cfg_equip_xe_port_to_tx_disable_entry_tq5200(int port) SWITCHCFG_NOEXCEPT;

/**
 * Put the result of a cable test from the order of the chip's pairs into that of the connector's, in place.
 *
 * `results` holds ten values: two that stay, then status and length of the pairs 0 to 3. With n = port + 1, ports with
 * an odd n up to 15 (39 on boards with more than 24 copper ports) sit in the upper, mirrored row of sockets: pairs 0
 * and 3 change places, and 1 and 2. All others are wired crossed over: pairs 0 and 1 change places, and 2 and 3. On n =
 * 11 and n = 15, whose lanes the board does not invert, the middle pairs 1 and 2 then change places. Doing it twice
 * restores the chip's order for every port. Ports at and above the model's number of copper ports, bad units and a null
 * `results` change nothing.
 */
SWITCHCFG_API void cfg_equip_unscramble_cable_pairs_tq5200(int unit, int port, int results[10]) SWITCHCFG_NOEXCEPT;

/* ---- Stacking --------------------------------------------------------------------------------------------------- */

/** How the stack is joined. @return 2 when unit 0 has stacking ports, else 0 */
SWITCHCFG_API int cfg_equip_get_stacking_support_tq5200(void) SWITCHCFG_NOEXCEPT;
/**
 * The stacking ports of a unit. The higher one comes first: it is stacking port 1.
 * @param ports receives two user ports
 * @param max   room in `ports`
 * @return 0; -3 for a bad or absent unit; -7 for null `ports` or fewer than the unit's stacking ports of room; -1 for a
 *         model without stacking ports
 */
SWITCHCFG_API int cfg_equip_get_stack_port_num_tq5200(int unit, int *ports, int max) SWITCHCFG_NOEXCEPT;
/**
 * The identifier (1 or 2) of a stacking port.
 * On 48-port models whose stacking ports are 51 and 50 although they have 48 user ports, no port is both in the range
 * that follows the user ports and in the list, so none has an identifier.
 * @return 0; -43 for a unit without stacking ports; -3 for a bad or absent unit, or a port that is no stacking port;
 *         -7 for a null `id`
 */
SWITCHCFG_API int cfg_equip_stack_port_to_id_tq5200(int unit, int port, int *id) SWITCHCFG_NOEXCEPT;
/**
 * The stacking port with an identifier (1 or 2).
 * @return 0; -43 for a unit without stacking ports; -3 for a bad or absent unit; -7 for a bad `id` or a null `port`
 */
SWITCHCFG_API int cfg_equip_stack_id_to_port_tq5200(int unit, int id, int *port) SWITCHCFG_NOEXCEPT;

/* ---- Slots and expansion boards --------------------------------------------------------------------------------- */

/** The user ports of the unit. Zeroes `pbmp` first. @return 0; -7 for a bad unit; -1 for an unknown model */
SWITCHCFG_API int cfg_equip_get_slot_pbmp_tq5200(int unit, uint32_t pbmp[CFG_PBMP_WORDS]) SWITCHCFG_NOEXCEPT;
/** Its ports with a transceiver cage. Zeroes `pbmp` first. @return 0; -7 for a bad unit; -1 for an unknown model */
SWITCHCFG_API int cfg_equip_get_slot_pbmp_tcv_tq5200(int unit, uint32_t pbmp[CFG_PBMP_WORDS]) SWITCHCFG_NOEXCEPT;

/** Whether the unit carries an expansion board. @return 1 or 0 */
SWITCHCFG_API int cfg_equip_get_exp_board_is_present_tq5200(int unit) SWITCHCFG_NOEXCEPT;
/** The expansion board at a position (0 rear, other front). @return board index, -1 for none */
SWITCHCFG_API int cfg_equip_get_exp_board_tq5200(int unit, int position) SWITCHCFG_NOEXCEPT;
/** Name of a kind of expansion board. @return constant text, "Undefined" for an unknown kind */
SWITCHCFG_API const char *cfg_equip_get_exp_board_name_tq5200(int board) SWITCHCFG_NOEXCEPT;
/** Where position `position` of the unit is. @return constant text: "None", "Rear" or "Front" */
SWITCHCFG_API const char *cfg_equip_get_exp_board_position_tq5200(int unit, int position) SWITCHCFG_NOEXCEPT;
/** I2C address of the expansion board of unit 0 at a position. @return 84, 87 or -7 */
SWITCHCFG_API int cfg_equip_get_exp_board_i2c_addr_tq5200(int position) SWITCHCFG_NOEXCEPT;

/* ---- Hardware revision ------------------------------------------------------------------------------------------ */

/** Whether the board is of the second qualification: hardware version above 9. @return 1 or 0 */
SWITCHCFG_API int cfg_equip_is_quali2_tq5200(int unit) SWITCHCFG_NOEXCEPT;
/** Whether it has the parts of the second lot. @return 1 or 0; -7 for a bad unit */
SWITCHCFG_API int cfg_equip_is_quali2_part2_tq5200(int unit) SWITCHCFG_NOEXCEPT;
/** Whether it has the parts of the third lot. @return 1 or 0; -7 for a bad unit */
SWITCHCFG_API int cfg_equip_is_quali2_part3_tq5200(int unit) SWITCHCFG_NOEXCEPT;
/** Whether unit 0 is of the first qualification and the rework byte of `unit` is set. @return 1 or 0 */
SWITCHCFG_API int cfg_equip_is_quali1_with_bcc_ech_5200(int unit) SWITCHCFG_NOEXCEPT;
/** Whether the flash has 4-bit error correction. @return 1 or 0 */
SWITCHCFG_API int cfg_equip_has_ecc4bit_tq5200(int unit) SWITCHCFG_NOEXCEPT;
/** Whether the console is a USB one: hardware version above 5. @return 1 or 0 */
SWITCHCFG_API int cfg_equip_has_usb_console_tq5200(int unit) SWITCHCFG_NOEXCEPT;
/** Whether the memory module's description is wired straight. @return 1 or 0; 1 for a bad unit or an unknown model */
SWITCHCFG_API int cfg_equip_has_non_inverted_ddr_spd_tq5200(int unit) SWITCHCFG_NOEXCEPT;
/** Whether the memory module's description is of revision 1.3: hardware version above 7. @return 1 or 0 */
SWITCHCFG_API int cfg_equip_has_spd_v13_tq5200(int unit) SWITCHCFG_NOEXCEPT;

/* ---- Chip, power and cooling ------------------------------------------------------------------------------------ */

/** Chip identifier of a model. @return 65, 66, 67 (boards with 24 fibre, 20 and 44 copper ports) or -1 */
SWITCHCFG_API int cfg_equip_get_chip_id_tq5200(int model) SWITCHCFG_NOEXCEPT;
/** Whether the unit has 10G cages for traffic. @return 1 or 0 */
SWITCHCFG_API int cfg_equip_unit_local_is_10gx_tq5200(int unit) SWITCHCFG_NOEXCEPT;
/** Whether the unit routes. @return 1 or 0 */
SWITCHCFG_API int cfg_equip_get_is_L3_tq5200(int unit) SWITCHCFG_NOEXCEPT;
/** Chip generation. @return 1 or 0 */
SWITCHCFG_API int cfg_equip_get_is_apollo_tq5200(int unit) SWITCHCFG_NOEXCEPT;
/** Chip generation. @return 1 or 0 */
SWITCHCFG_API int cfg_equip_get_is_triumph2_tq5200(int unit) SWITCHCFG_NOEXCEPT;
/** Whether the chip exports flow records: either of the two generations above. @return 1 or 0 */
SWITCHCFG_API int cfg_equip_check_ipfix_enabled_tq5200(int unit) SWITCHCFG_NOEXCEPT;
/** Whether unit 0 has fibre ports only. @return 1 or 0 */
SWITCHCFG_API int cfg_equip_is_optical_model_tq5200(void) SWITCHCFG_NOEXCEPT;
/** Whether the unit powers devices. @return 1 or 0 */
SWITCHCFG_API int cfg_equip_has_poe_tq5200(int unit) SWITCHCFG_NOEXCEPT;
/** Whether the main supply is built in. @return 1 or 0; -7 for a bad unit; -1 for an unknown model */
SWITCHCFG_API int cfg_equip_is_main_power_fixed_tq5200(int unit) SWITCHCFG_NOEXCEPT;
/** Whether the fans' speed is controlled. @return 1 or 0; -7 for a bad unit; -1 for an unknown model */
SWITCHCFG_API int cfg_equip_has_fan_control_tq5200(int unit) SWITCHCFG_NOEXCEPT;
/** Whether fan `fan`, counted from 0, is there. @return 1 or 0; -7 for a bad unit; -1 for an unknown model */
SWITCHCFG_API int cfg_get_equip_fan_present_tq5200(int unit, int fan) SWITCHCFG_NOEXCEPT;
/** Number of fans of unit 0. @return 2, 3 or 4; -1 for an unknown model */
SWITCHCFG_API int cfg_equip_get_max_num_fans_tq5200(void) SWITCHCFG_NOEXCEPT;
/** Whether weighted fair queuing is done through round robin. @return 1 or 0 */
SWITCHCFG_API int cfg_equip_is_cos_wfq_through_rr_tq5200(int unit) SWITCHCFG_NOEXCEPT;

/* ---- Chassis ---------------------------------------------------------------------------------------------------- */

/** Most units the stack may have, as the status region says. @return the word, unchecked */
SWITCHCFG_API int cfg_equip_get_max_num_units_tq5200(void) SWITCHCFG_NOEXCEPT;
/** Ethernet user ports of the unit. @return the number, 0 for an unknown model; -3 for a bad unit */
SWITCHCFG_API int cfg_equip_get_max_num_ports_tq5200(int unit) SWITCHCFG_NOEXCEPT;
/** Whether the switch runs without a stack. @return 1 or 0 */
SWITCHCFG_API int cfg_equip_get_is_standalone_tq5200(void) SWITCHCFG_NOEXCEPT;
/** Whether the egress filter knows an action; the same on all units. @return 1 or 0 */
SWITCHCFG_API int cfg_equip_check_egress_filter_valid_actions_tq5200(int unit, int action) SWITCHCFG_NOEXCEPT;
/** Whether the egress filter takes a priority: below 2; the same on all units. @return 1 or 0 */
SWITCHCFG_API int cfg_equip_check_egress_filter_max_prio_tq5200(int unit, int prio) SWITCHCFG_NOEXCEPT;
/** I2C bus of device `device`. @return 1 for 9, else 0 */
SWITCHCFG_API int cfg_equip_get_i2c_bus_num_tq5200(int device) SWITCHCFG_NOEXCEPT;
/** Time to wait after switching the I2C bus to an SFP. @return 2000 (microseconds) */
SWITCHCFG_API int cfg_equip_get_sfp_i2c_switch_delay_tq5200(void) SWITCHCFG_NOEXCEPT;
/** Time to wait after switching the I2C bus to an XFP. @return 35000 (microseconds) */
SWITCHCFG_API int cfg_equip_get_xfp_i2c_switch_delay_tq5200(void) SWITCHCFG_NOEXCEPT;
/** What ports can do, as a bit set. @return 7 */
SWITCHCFG_API int cfg_equip_get_port_features_tq5200(void) SWITCHCFG_NOEXCEPT;
/** The chassis. @return 9 */
SWITCHCFG_API int cfg_equip_get_chassis_model_tq5200(void) SWITCHCFG_NOEXCEPT;
/** State of the backplane fuse. @return constant text, "N/A" */
SWITCHCFG_API const char *cfg_equip_get_bp_fuse_status_tq5200(void) SWITCHCFG_NOEXCEPT;

/* Questions that have one answer on every board of this chassis. Arguments are not looked at. */

/** @return 1 */
SWITCHCFG_API int cfg_equip_is_match_vlan_inner_supported_tq5200(int unit) SWITCHCFG_NOEXCEPT;
/** Whether a backup of the boot environment is kept. @return 1 */
SWITCHCFG_API int cfg_equip_has_env_backup_tq5200(void) SWITCHCFG_NOEXCEPT;
/** @return 1 */
SWITCHCFG_API int cfg_equip_has_ddr800_tq5200(int unit) SWITCHCFG_NOEXCEPT;
/** @return 1 */
SWITCHCFG_API int cfg_equip_get_generic_user_port_type_tq5200(int unit, int port) SWITCHCFG_NOEXCEPT;
/** @return 0 */
SWITCHCFG_API int cfg_equip_is_stack_internal_tq5200(void) SWITCHCFG_NOEXCEPT;
/** @return 0 */
SWITCHCFG_API int cfg_equip_is_port_connected_to_fpga_tq5200(int unit, int port) SWITCHCFG_NOEXCEPT;
/** @return 0 */
SWITCHCFG_API int cfg_equip_check_egress_filter_ethernet_range_enabled_tq5200(int unit) SWITCHCFG_NOEXCEPT;
/** @return 0 */
SWITCHCFG_API int cfg_equip_get_fpga_xfp_mux_tq5200(int unit, int port) SWITCHCFG_NOEXCEPT;
/** @return 0 */
SWITCHCFG_API int cfg_equip_support_fan_status_tq5200(int unit) SWITCHCFG_NOEXCEPT;
/** @return 0 */
SWITCHCFG_API int cfg_equip_support_fan_eeprom_tq5200(int unit) SWITCHCFG_NOEXCEPT;
/** @return 0 */
SWITCHCFG_API int cfg_equip_get_is_phy_hl65_tq5200(int unit, int port) SWITCHCFG_NOEXCEPT;
/** @return 0 */
SWITCHCFG_API int cfg_equip_get_xfp_mode_sel_tq5200(int unit, int port) SWITCHCFG_NOEXCEPT;
/** @return 0 */
SWITCHCFG_API int cfg_equip_has_mpc8548_rev_3_1_tq5200(int unit) SWITCHCFG_NOEXCEPT;
/** @return 0 */
SWITCHCFG_API int cfg_equip_get_is_port_sdh_tq5200(int unit, int port) SWITCHCFG_NOEXCEPT;
/** @return 0 */
SWITCHCFG_API int cfg_equip_is_local_tunnel_available_tq5200(int unit) SWITCHCFG_NOEXCEPT;
/** @return -1 */
SWITCHCFG_API int cfg_equip_get_fpga_i2c_bus_tq5200(int unit) SWITCHCFG_NOEXCEPT;
/** @return -1 */
SWITCHCFG_API int cfg_equip_get_hig_ports_by_unit_tq5200(int unit) SWITCHCFG_NOEXCEPT;
/** @return -1 */
SWITCHCFG_API int cfg_equip_get_sfp_switch_ctrl_tq5200(int unit, int port) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
