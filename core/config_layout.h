// SPDX-License-Identifier: Apache-2.0
// Every named field of the running and default configuration regions. The two have the same layout; a new region is all
// zero bytes and zero is the "unset" value of every field. Words are in the processor's own byte order.
//
// The names are the ones that `switchcfg config` prints and takes.
#ifndef SWITCHCFG_CORE_CONFIG_LAYOUT_H
#define SWITCHCFG_CORE_CONFIG_LAYOUT_H

#include "core/field.h"

namespace switchcfg::config_layout {

// Odd and unaligned on purpose: the files of all releases have this size, and mapping, sync and unmap use it as it is.
inline constexpr std::uint32_t size = 21707629;

inline constexpr Dimension per_unit_of_ports{8, 2132};
inline constexpr Dimension per_port_record{52, 41};
inline constexpr Dimension per_address{3, 17};
inline constexpr Dimension per_sntp_key{3, 56};

// clang-format off
inline constexpr Field<std::uint8_t>  trap_link_enable{"trap.link_enable", 13865, "link up and down are sent for the port", {8, 52}, {52, 1}};
inline constexpr Field<std::uint8_t>  trap_enable{"trap.enable", 14281, "notification is sent, by trap identifier", {136, 1}};
inline constexpr Field<Bytes<41>>     trap_port_enable{"trap.port_enable", 14417, "notifications that also need the port's leave, by unit and port", per_unit_of_ports, per_port_record};
inline constexpr Field<Bytes<41>>     trap_channel_enable{"trap.channel_enable", 35368, "the same for port-channels, from 512: records 511 on in the row of unit 0's ports", {128, 41}};

inline constexpr Field<std::uint8_t>  sntp_enable{"sntp.enable", 41788, "SNTP client runs"};
inline constexpr Field<std::uint32_t> sntp_interval{"sntp.interval", 41789, "polling interval, seconds"};
inline constexpr Field<Text<17>>      sntp_server_text{"sntp.server_text", 41793, "server as text, for old files", per_address};
inline constexpr Field<Bytes<17>>     sntp_server{"sntp.server", 41844, "server: 16 address bytes and their length", per_address};
inline constexpr Field<std::uint8_t>  sntp_auth_enable{"sntp.auth_enable", 41895, "answers must be authenticated"};
inline constexpr Field<std::uint32_t> sntp_key_id{"sntp.key.id", 41896, "key identifier, 0 when the record is free", per_sntp_key};
inline constexpr Field<Text<9>>       sntp_key_type{"sntp.key.type", 41900, "kind of key", per_sntp_key};
inline constexpr Field<Text<9>>       sntp_key_value{"sntp.key.value", 41909, "the key", per_sntp_key};
inline constexpr Field<Text<17>>      sntp_key_server_text{"sntp.key.server_text", 41918, "bound server as text, for old files", per_sntp_key};
inline constexpr Field<Bytes<17>>     sntp_key_server{"sntp.key.server", 41935, "bound server: 16 address bytes and their length", per_sntp_key};
inline constexpr Field<std::uint32_t> sntp_server_state{"sntp.server_state", 42064, "two words per server, cleared and moved with it", {3, 8}, {2, 4}};

// A whole key, for what clears it: no field of the list, where its parts are.
inline constexpr Field<Bytes<56>>     sntp_key{"sntp.key", 41896, "a key with its binding", per_sntp_key};

// Ports of the two services whose illegal accesses are told apart; the words are unaligned on purpose.
inline constexpr Field<std::uint32_t> service_port{"service.port", 57829, "port number of a web service", {2, 5}};

inline constexpr Field<std::int32_t>  utc_offset_minutes{"time.utc_offset_minutes", 10547940, "minutes ahead of UTC"};

// Free space that we use, in the last pages of the region: nothing else is known to lie near. Zero is the default.
inline constexpr Field<std::int32_t>  unit_provisioned_model{"unit.provisioned_model", 21700608, "model number that a unit is configured as before it is there, 0 none", {8, 4}};
inline constexpr Field<std::uint16_t> port_channel{"port.channel", 21700640, "port-channel that the port is a member of, 512 to 639, 0 none", {8, 104}, {52, 2}};
inline constexpr Field<std::uint8_t>  port_disabled{"port.disabled", 21701472, "non-zero when the port is administratively down", {8, 52}, {52, 1}};
inline constexpr Field<std::int32_t>  stack_failover{"stack.failover", 21701888, "non-zero when the boards of the stack run in fail-over mode"};
// clang-format on

inline constexpr FieldInfo fields[] = {
    trap_link_enable,
    trap_enable,
    trap_port_enable,
    trap_channel_enable,
    sntp_enable,
    sntp_interval,
    sntp_server_text,
    sntp_server,
    sntp_auth_enable,
    sntp_key_id,
    sntp_key_type,
    sntp_key_value,
    sntp_key_server_text,
    sntp_key_server,
    sntp_server_state,
    service_port,
    utc_offset_minutes,
    unit_provisioned_model,
    port_channel,
    port_disabled,
    stack_failover,
};

} // namespace switchcfg::config_layout

#endif
