// SPDX-License-Identifier: Apache-2.0
// The SNTP servers.
#include "core/status_region.h"
#include "features/sntp_records.h"

#include <switchcfg/error.h>

using namespace switchcfg;
using namespace switchcfg::sntp;

namespace {

constexpr int words_per_server = 2;

void clear_server(int slot) noexcept
{
    store_address(bytes(running_config, config_layout::sntp_server, slot), {});
    for (int word = 0; word < words_per_server; ++word) {
        store(running_config, config_layout::sntp_server_state, 0, slot, word);
    }
}

void move_server(int to, int from) noexcept
{
    store_address(bytes(running_config, config_layout::sntp_server, to), server_in(from));
    for (int word = 0; word < words_per_server; ++word) {
        const std::uint32_t state = load(running_config, config_layout::sntp_server_state, from, word);
        store(running_config, config_layout::sntp_server_state, state, to, word);
    }
}

void remove_server(int slot) noexcept
{
    for (; slot + 1 < SNTP_SLOTS; ++slot) {
        move_server(slot, slot + 1);
    }
    clear_server(slot);
}

} // namespace

int cfg_add_sntp_server(const char *address) noexcept
{
    cfg_ip_addr server;
    if (!parse_address(address, server)) {
        return result::invalid_parameter;
    }
    if (running_config == nullptr) {
        return result::not_mapped;
    }
    if (slot_of_server(server) != no_slot) {
        return result::already_exists;
    }
    const int free = find_slot([](int slot) { return !is_in_use(server_in(slot)); });
    if (free == no_slot) {
        return result::maximum_reached;
    }
    store_address(bytes(running_config, config_layout::sntp_server, free), server);
    return apply_sntp();
}

int cfg_del_sntp_server(const char *address) noexcept
{
    cfg_ip_addr server;
    if (!parse_address(address, server)) {
        return result::invalid_parameter;
    }
    if (running_config == nullptr) {
        return result::not_mapped;
    }
    const int slot = slot_of_server(server);
    if (slot == no_slot || slot == 0) { // the first stays: a switch keeps one server until it is given up on purpose
        return result::not_found;
    }
    remove_server(slot);
    return apply_sntp();
}

int cfg_sntp_clear_key_server(const char *address) noexcept
{
    cfg_ip_addr server;
    if (!parse_address(address, server)) {
        return result::invalid_parameter;
    }
    if (const int undone = cfg_sntp_undefine_key_server(address); undone != 0) {
        return undone;
    }
    const int slot = slot_of_server(server);
    if (slot == no_slot) {
        cfg_error_set_msg("No server configured for that IP address");
        return result::not_found;
    }
    remove_server(slot); // callers clear several and apply once
    return 0;
}

int cfg_sntp_clear_all_server() noexcept
{
    if (running_config == nullptr) {
        return result::not_mapped;
    }
    for (int slot = 0; slot < SNTP_SLOTS; ++slot) {
        clear_server(slot);
    }
    return cfg_sntp_undefine_key_server("all");
}

int sntp_has_server(int slot) noexcept
{
    return running_config != nullptr && is_slot(slot) && is_in_use(server_in(slot)) ? 1 : 0;
}

int sntp_has_any_server() noexcept
{
    return find_slot([](int slot) { return is_in_use(server_in(slot)); }) != no_slot ? 1 : 0;
}

int sntp_find_server_index(const char *address) noexcept
{
    cfg_ip_addr server;
    return parse_address(address, server) ? slot_of_server(server) : result::invalid_parameter;
}

int sntp_dump_server_ip_addr(int slot, char *buffer) noexcept
{
    return running_config != nullptr && is_slot(slot) && print_address(server_in(slot), buffer) ? 0 : -1;
}

int sntp_dump_lastOk_ip_addr(char *buffer) noexcept
{
    std::uint8_t *const status = status_base();
    return status != nullptr && print_address(load_address(bytes(status, status_layout::sntp_last_server)), buffer)
               ? 0
               : -1;
}

int sntp_set_lastOk_ip_addr(const char *address) noexcept
{
    cfg_ip_addr server;
    if (!parse_address(address, server)) {
        return result::invalid_parameter;
    }
    std::uint8_t *const status = status_base();
    if (status == nullptr) {
        return result::not_mapped;
    }
    store_address(bytes(status, status_layout::sntp_last_server), server);
    return 0;
}
