// SPDX-License-Identifier: Apache-2.0
// Whether a notification is wanted. The flags are read without a lock: each is one byte.
#ifndef SWITCHCFG_LOG_TRAP_ENABLE_H
#define SWITCHCFG_LOG_TRAP_ENABLE_H

#include "core/config_region.h"

#include <optional>

namespace switchcfg {

// The port as the standard interfaces table and the varbinds number it.
inline std::int32_t interface_number(int unit, int port) noexcept
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(unit) * 64 + static_cast<std::uint32_t>(port) + 1);
}

// For people: units and ports count from 1.
inline std::int32_t from_one(int number) noexcept
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(number) + 1);
}

// The per-port records of all units are one row of 8 x 52: a port number past its unit's last names a record of the
// next unit, as in every process that reads them. What is outside the row has no record.
inline std::optional<std::uint32_t> port_record(int unit, int port) noexcept
{
    const std::int64_t index = std::int64_t{unit} * 52 + port;
    if (index < 0 || index >= std::int64_t{8} * 52) {
        return {};
    }
    return static_cast<std::uint32_t>(index);
}

// Before cfg_init() nothing is enabled.
inline bool trap_enabled(int id) noexcept
{
    return running_config != nullptr && load(running_config, config_layout::trap_enable, id) != 0;
}

inline bool trap_enabled(int id, int unit, int port, std::uint8_t port_byte) noexcept
{
    const std::optional<std::uint32_t> record = port_record(unit, port);
    return trap_enabled(id) && record &&
           bytes(running_config, config_layout::trap_port_enable, *record / 52, *record % 52)[port_byte] != 0;
}

// Port-channels count as ports of unit 0: their records lie far behind those of its last port.
inline bool channel_trap_enabled(int id, int channel, std::uint8_t port_byte) noexcept
{
    return trap_enabled(id) && bytes(running_config, config_layout::trap_channel_enable, channel - 512)[port_byte] != 0;
}

} // namespace switchcfg

#endif
