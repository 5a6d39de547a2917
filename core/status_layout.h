// SPDX-License-Identifier: Apache-2.0
// Every named field of the status region. A new region is all zero bytes; words are in the processor's own byte order.
// What is not named here belongs to the daemons that write it.
//
// The names are the ones that `switchcfg status` prints and takes.
#ifndef SWITCHCFG_CORE_STATUS_LAYOUT_H
#define SWITCHCFG_CORE_STATUS_LAYOUT_H

#include "core/field.h"

namespace switchcfg::status_layout {

inline constexpr std::uint32_t size = 11272288;
inline constexpr std::uint32_t max_units = 8;
inline constexpr std::uint32_t max_ports = 52; // of one unit
inline constexpr std::uint32_t trap_queue_length = 100;
inline constexpr std::uint32_t trap_text_size = 512;

inline constexpr std::uint32_t unit_record_size = 8000;

// One record per switch chip. Every board has one chip, and the first record ends where the unit's MAC address begins:
// a further record lies over the fields behind it. Walks that trust a count of the region still follow the rule of
// place (k x 684) and stop at what fits into the unit's record.
inline constexpr std::uint32_t subunit_record_size = 684;
inline constexpr std::uint32_t max_subunits = (unit_record_size - 76) / subunit_record_size;

inline constexpr Dimension per_unit{max_units, unit_record_size};
inline constexpr Dimension per_subunit{1, subunit_record_size};
inline constexpr Dimension per_port_status{max_ports, 102};
inline constexpr Dimension per_port_handle{max_ports, 4};
inline constexpr Dimension per_unit_of_port_info{max_units, 14352};
inline constexpr Dimension per_port_info{max_ports, 276};
inline constexpr Dimension per_trap{trap_queue_length, 4 + trap_text_size};

// clang-format off
inline constexpr Field<std::uint32_t> stack_formed{"stack.formed", 0, "zero on a switch that stands alone"};

inline constexpr Field<std::int32_t>  unit_present{"unit.present", 48, "non-zero when the unit is in the stack", per_unit};
inline constexpr Field<std::int32_t>  unit_subunits{"unit.subunits", 52, "switch chips reported for the unit", per_unit};
inline constexpr Field<std::uint32_t> mpu_slot{"mpu.slot", 56, "slot flag of the local management processor: selects between the two management addresses of a unit"};

// Sub-unit records count from byte 64 of the unit's record, module records from byte 76; they are the same chip.
inline constexpr Field<std::uint8_t>  subunit_mark{"subunit.mark", 64, "non-zero when the chip's record is in use", per_unit, per_subunit};
inline constexpr Field<std::int32_t>  subunit_physical_unit{"subunit.physical_unit", 76, "the chip's unit number in the chip daemon", per_unit, per_subunit};
inline constexpr Field<std::int32_t>  subunit_first_modid{"subunit.first_modid", 80, "the chip's first module identifier on the stack", per_unit, per_subunit};
inline constexpr Field<std::int32_t>  subunit_modids{"subunit.modids", 84, "module identifiers that the chip owns, 1 or 2", per_unit, per_subunit};
inline constexpr Field<Bytes<32>>     subunit_cpu_ports{"subunit.cpu_ports", 440, "bitmap of the chip ports that lead to the processor", per_unit, per_subunit};

// Port numbering takes the word at byte 76 as the module's identifier, and the look-ups between units and modids take
// it as the chip's physical unit. Both are right as they stand: on a unit with one chip the chip daemon keeps the two
// numbers equal. The processor ports are one bitmap under two names in the same way.
inline constexpr Field<std::int32_t>  module_id = Field<std::int32_t>{"module.id", 76, "module identifier for port numbering (the word of subunit.physical_unit)", per_unit, per_subunit}.sharing();
inline constexpr Field<Bytes<32>>     module_ports{"module.ports", 216, "bitmap of the module's ports", per_unit, per_subunit};
inline constexpr Field<Bytes<32>>     module_more_ports{"module.more_ports", 248, "second bitmap of the module's ports", per_unit, per_subunit};
inline constexpr Field<Bytes<32>>     module_cpu_ports = Field<Bytes<32>>{"module.cpu_ports", 440, "bitmap of the module's processor ports (the bytes of subunit.cpu_ports)", per_unit, per_subunit}.sharing();

// The feature bitmap stands in unit 0's record: in the first bytes of its sub-unit record and behind its model name.
inline constexpr Field<std::uint8_t>  feature_l3{"feature.l3", 68, "L3 is enabled"};
inline constexpr Field<std::uint8_t>  feature_mpls{"feature.mpls", 69, "MPLS is enabled"};
inline constexpr Field<std::uint8_t>  feature_bit1{"feature.bit1", 73, "bit 1 of the feature bitmap"};
inline constexpr Field<std::uint32_t> feature_applied{"feature.applied", 1384, "low word of the feature bitmap as applied at start-up"};
inline constexpr Field<std::uint32_t> feature_written{"feature.written", 1388, "low word of the feature bitmap as last written"};

inline constexpr Field<Bytes<6>>      unit_mac{"unit.mac", 760, "the unit's base MAC address", per_unit};
inline constexpr Field<std::int32_t>  hardware_version{"hardware.version", 1344, "board revision", per_unit};
inline constexpr Field<std::int32_t>  hardware_model{"hardware.model", 1348, "model number: the index into the equipment table, 0 unknown", per_unit};
inline constexpr Field<Text<32>>      hardware_model_name{"hardware.model_name", 1352, "model name that the board reports", per_unit};
inline constexpr Field<std::uint8_t>  hardware_bcc_ech{"hardware.bcc_ech", 7816, "non-zero on early boards with the BCC echo circuit", per_unit};

// Transceiver records begin at an odd offset on purpose. The handles of the last ports of a unit lie in the first bytes
// of the next unit's record, where nothing else does.
inline constexpr Field<Bytes<102>>    transceiver_status{"transceiver.status", 1415, "what the transceiver daemon knows of the port", per_unit, per_port_status};
inline constexpr Field<std::uint8_t>  transceiver_present = Field<std::uint8_t>{"transceiver.present", 1415, "non-zero when a transceiver is plugged (first byte of transceiver.status)", per_unit, per_port_status}.sharing();
inline constexpr Field<std::int32_t>  transceiver_handle{"transceiver.handle", 7820, "handle of the port in the transceiver daemon", per_unit, per_port_handle};

inline constexpr Field<Bytes<17>>     sntp_last_server{"sntp.last_server", 64092, "SNTP server that answered last: 16 address bytes and their length"};

// The queue's overrun is part of its definition: a start trap into a full queue shifts the last entry onto the count
// and the 512 bytes behind it, so nothing may be placed there.
inline constexpr Field<std::uint32_t> trap_id{"trap.id", 8051696, "identifier of a queued trap, oldest first", per_trap};
inline constexpr Field<Text<512>>     trap_text{"trap.text", 8051700, "variable bindings of a queued trap", per_trap};
inline constexpr Field<std::int32_t>  trap_count{"trap.count", 8103296, "queued traps"};
inline constexpr std::uint32_t        trap_overrun_end = 8103296 + 4 + trap_text_size;

inline constexpr Field<Bytes<65532>>  boot_environment{"boot.environment", 8114804, "shadow of the boot loader's variables, loaded when the first byte is not zero"};
inline constexpr Field<std::uint32_t> boot_environment_length{"boot.environment_length", 8180336, "used bytes of the shadow, with the first of the two ending NULs"};

inline constexpr Field<Bytes<276>>    port_info{"port.info", 8180348, "what the port daemon knows of the port", per_unit_of_port_info, per_port_info};

inline constexpr Field<std::int32_t>  vendor_code{"vendor.code", 8989824, "brand of the switch"};
inline constexpr Field<std::uint32_t> max_unit_count{"stack.max_units", 9593692, "most units the stack may have"};

// Free space that we use, in the last pages of the region: nothing else is known to lie near.
inline constexpr Field<std::int32_t>  unit_logically_removed{"unit.logically_removed", 11268096, "non-zero while the unit is out of the stack by command", {max_units, 4}};

// What a sender was about when entries of the trap queue move. Its step is the last word to be written and the first to
// be cleared, so that whoever finds it set after a process has died can finish the work.
inline constexpr Field<std::uint32_t> trap_move_step{"trap.move.step", 11269120, "up: entry that is moved next, down: pieces that are moved; plus 1; 0 while nothing moves"};
inline constexpr Field<std::uint32_t> trap_move_kind{"trap.move.kind", 11269124, "why entries move"};
inline constexpr Field<std::uint32_t> trap_move_id{"trap.move.id", 11269128, "identifier of the trap that is queued after the move"};
inline constexpr Field<std::int32_t>  trap_move_count{"trap.move.count", 11269132, "queued traps before the move"};
inline constexpr Field<std::int32_t>  trap_move_source{"trap.move.source", 11269136, "first entry that moves down"};
inline constexpr Field<Text<512>>     trap_move_text{"trap.move.text", 11269140, "variable bindings of the trap that is queued after the move"};
// clang-format on

inline constexpr FieldInfo fields[] = {
    stack_formed,
    max_unit_count,
    mpu_slot,
    unit_present,
    unit_logically_removed,
    unit_subunits,
    unit_mac,
    hardware_version,
    hardware_model,
    hardware_model_name,
    hardware_bcc_ech,
    subunit_mark,
    subunit_physical_unit,
    subunit_first_modid,
    subunit_modids,
    subunit_cpu_ports,
    module_id,
    module_ports,
    module_more_ports,
    module_cpu_ports,
    transceiver_present,
    transceiver_status,
    transceiver_handle,
    port_info,
    feature_l3,
    feature_mpls,
    feature_bit1,
    feature_applied,
    feature_written,
    sntp_last_server,
    trap_count,
    trap_id,
    trap_text,
    trap_move_step,
    trap_move_kind,
    trap_move_id,
    trap_move_count,
    trap_move_source,
    trap_move_text,
    boot_environment_length,
    boot_environment,
    vendor_code,
};

static_assert(trap_text.end() == trap_count.offset, "the overrun of a full queue lands on the count");
static_assert(trap_overrun_end <= boot_environment.offset);
static_assert(boot_environment.end() == boot_environment_length.offset);

} // namespace switchcfg::status_layout

#endif
