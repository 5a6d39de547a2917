// SPDX-License-Identifier: Apache-2.0
// Configurations of older releases have the servers as IPv4 texts, in fields of their own.
#include "features/sntp_records.h"

#include <algorithm>
#include <cstring>

using namespace switchcfg;

namespace {

using LegacyText = Field<Text<17>>;
using Address = Field<Bytes<17>>;

void read_legacy(const LegacyText &from, const Address &to, int slot) noexcept
{
    char terminated[sizeof(cfg_ip_addr) + 1] = {};
    std::memcpy(terminated, text(running_config, from, slot), from.size);
    cfg_ip_addr address;
    (void)parse_address(terminated, address); // what is no address clears the record, as nothing does
    store_address(bytes(running_config, to, slot), address);
}

void write_legacy(const LegacyText &to, int slot, const cfg_ip_addr &address, bool wanted) noexcept
{
    char *const place = text(running_config, to, slot);
    std::fill_n(place, to.size, '\0');
    if (wanted && address.length == sizeof(in_addr)) {
        (void)print_address(address, place);
    }
}

bool is_default_binding(int slot, const cfg_ip_addr &server) noexcept
{
    return default_config != nullptr &&
           same_address(server, load_address(bytes(default_config, config_layout::sntp_key_server, slot)));
}

} // namespace

int cfg_sntp_compatibility() noexcept
{
    if (running_config == nullptr) {
        return sntp::result::not_mapped;
    }
    for (int slot = 0; slot < SNTP_SLOTS; ++slot) {
        read_legacy(config_layout::sntp_server_text, config_layout::sntp_server, slot);
        read_legacy(config_layout::sntp_key_server_text, config_layout::sntp_key_server, slot);
    }
    return 0;
}

int cfg_sntp_backward_compatibility() noexcept
{
    if (running_config == nullptr) {
        return sntp::result::not_mapped;
    }
    for (int slot = 0; slot < SNTP_SLOTS; ++slot) {
        const cfg_ip_addr server = sntp::server_in(slot);
        write_legacy(config_layout::sntp_server_text, slot, server, is_in_use(server));
        const cfg_ip_addr bound = sntp::key_server_in(slot);
        write_legacy(config_layout::sntp_key_server_text, slot, bound, !is_default_binding(slot, bound));
    }
    return 0;
}
