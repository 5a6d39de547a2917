// SPDX-License-Identifier: Apache-2.0
// What the SNTP calls share: their codes and the walks over the three servers and keys.
#ifndef SWITCHCFG_FEATURES_SNTP_RECORDS_H
#define SWITCHCFG_FEATURES_SNTP_RECORDS_H

#include "core/config_region.h"
#include "features/address_record.h"

#include <cstdint>
#include <switchcfg/sntp.h>

namespace switchcfg::sntp {

namespace result {
inline constexpr int not_mapped = -1;
inline constexpr int already_exists = -5;
inline constexpr int out_of_limits = -6;
inline constexpr int invalid_parameter = -7;
inline constexpr int not_found = -8;
inline constexpr int maximum_reached = -9;
inline constexpr int text_too_long = -32;
inline constexpr int file_failed = -44;
} // namespace result

inline constexpr int no_slot = -1;

constexpr bool is_slot(int slot) noexcept
{
    return slot >= 0 && slot < SNTP_SLOTS;
}

// The first slot that fits; none while the configuration is not mapped.
template<typename Fits>
int find_slot(Fits fits) noexcept
{
    for (int slot = 0; running_config != nullptr && slot < SNTP_SLOTS; ++slot) {
        if (fits(slot)) {
            return slot;
        }
    }
    return no_slot;
}

// Of the running configuration, which is mapped; the slot is checked.
inline cfg_ip_addr server_in(int slot) noexcept
{
    return load_address(bytes(running_config, config_layout::sntp_server, slot));
}

inline std::uint32_t key_id_in(int slot) noexcept
{
    return load(running_config, config_layout::sntp_key_id, slot);
}

inline cfg_ip_addr key_server_in(int slot) noexcept
{
    return load_address(bytes(running_config, config_layout::sntp_key_server, slot));
}

inline int slot_of_server(const cfg_ip_addr &address) noexcept
{
    return find_slot([&](int slot) { return same_address(server_in(slot), address); });
}

inline int slot_of_key_bound_to(const cfg_ip_addr &address) noexcept
{
    return find_slot([&](int slot) { return same_address(key_server_in(slot), address); });
}

inline int slot_of_key(std::uint32_t id) noexcept
{
    return id == 0 ? no_slot : find_slot([id](int slot) { return key_id_in(slot) == id; });
}

// Writes the key file. 0 or result::file_failed.
[[gnu::visibility("hidden")]] int write_key_file() noexcept;

} // namespace switchcfg::sntp

#endif
