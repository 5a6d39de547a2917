// SPDX-License-Identifier: Apache-2.0
// The authentication keys and which server each is bound to.
#include "features/sntp_records.h"

#include <algorithm>
#include <cstring>
#include <switchcfg/text.h>

using namespace switchcfg;
using namespace switchcfg::sntp;

namespace {

using KeyText = Field<Text<SNTP_KEY_TEXT_SIZE + 1>>;

// Length before emptiness: callers tell the two apart.
int check_text(const char *text) noexcept
{
    const std::size_t length = text != nullptr ? ::strnlen(text, SNTP_KEY_TEXT_SIZE + 1) : 0;
    return length > SNTP_KEY_TEXT_SIZE ? result::text_too_long : length == 0 ? result::invalid_parameter : 0;
}

void store_text(const KeyText &field, int slot, const char *value) noexcept
{
    (void)strncpy_safe(text(running_config, field, slot), value, field.size);
}

int set_text(const KeyText &field, int slot, const char *value) noexcept
{
    if (!is_slot(slot)) {
        return result::out_of_limits;
    }
    if (const int refused = check_text(value); refused != 0) {
        return refused;
    }
    if (running_config == nullptr) {
        return result::not_mapped;
    }
    store_text(field, slot, value);
    return 0;
}

int bind_server(int slot, const cfg_ip_addr &server) noexcept
{
    if (!is_slot(slot)) {
        return result::out_of_limits;
    }
    store_address(bytes(running_config, config_layout::sntp_key_server, slot), server);
    return apply_sntp();
}

} // namespace

int cfg_get_sntp_key_id(int slot) noexcept
{
    if (!is_slot(slot)) {
        return result::out_of_limits;
    }
    return running_config != nullptr ? static_cast<int>(key_id_in(slot)) : 0;
}

const char *cfg_get_sntp_key_type(int slot) noexcept
{
    return running_config != nullptr ? text(running_config, config_layout::sntp_key_type, slot) : nullptr;
}

const char *cfg_get_sntp_key_value(int slot) noexcept
{
    return running_config != nullptr ? text(running_config, config_layout::sntp_key_value, slot) : nullptr;
}

int cfg_set_sntp_key_id(int slot, std::uint32_t id) noexcept
{
    if (!is_slot(slot)) {
        return result::out_of_limits;
    }
    if (running_config == nullptr) {
        return result::not_mapped;
    }
    store(running_config, config_layout::sntp_key_id, id, slot);
    return 0;
}

int cfg_set_sntp_key_type(int slot, const char *type) noexcept
{
    return set_text(config_layout::sntp_key_type, slot, type);
}

int cfg_set_sntp_key_value(int slot, const char *value) noexcept
{
    return set_text(config_layout::sntp_key_value, slot, value);
}

int cfg_sntp_add_key(std::uint32_t id, const char *type, const char *value) noexcept
{
    if (id == 0) {
        return result::invalid_parameter;
    }
    const int refused = std::min(check_text(type), check_text(value)); // too long wins over empty
    if (refused != 0) {
        return refused;
    }
    if (running_config == nullptr) {
        return result::not_mapped;
    }
    if (slot_of_key(id) != no_slot) {
        return result::already_exists;
    }
    const int free = find_slot([](int slot) { return key_id_in(slot) == 0; });
    if (free == no_slot) {
        return result::maximum_reached;
    }
    // Nothing of a key that was there before, such as its binding. The identifier comes last: it makes the key one.
    std::ranges::fill(bytes(running_config, config_layout::sntp_key, free), std::uint8_t{0});
    store_text(config_layout::sntp_key_type, free, type);
    store_text(config_layout::sntp_key_value, free, value);
    store(running_config, config_layout::sntp_key_id, id, free);
    // The key is configured, whatever becomes of the file; binding it writes the file again, and tells.
    (void)write_key_file();
    return 0;
}

int cfg_sntp_remove_key(std::uint32_t id) noexcept
{
    const int slot = slot_of_key(id);
    if (slot == no_slot) {
        return result::not_found;
    }
    // The texts stay until applying clears the record; emptying them is what the setters refuse.
    store(running_config, config_layout::sntp_key_id, 0, slot);
    (void)bind_server(slot, {});
    return write_key_file();
}

int cfg_sntp_define_key_server(std::uint32_t id, const char *address) noexcept
{
    cfg_ip_addr server;
    if (!parse_address(address, server)) {
        return result::invalid_parameter;
    }
    const int slot = slot_of_key(id);
    return slot == no_slot ? result::not_found : bind_server(slot, server);
}

int cfg_sntp_undefine_key_server(const char *address) noexcept
{
    if (address != nullptr && std::strcmp(address, "all") == 0) {
        if (running_config == nullptr) {
            return result::not_mapped;
        }
        for (int slot = 0; slot < SNTP_SLOTS; ++slot) {
            (void)bind_server(slot, {});
        }
        return 0;
    }
    cfg_ip_addr server;
    if (!parse_address(address, server)) {
        return result::invalid_parameter;
    }
    const int slot = slot_of_key_bound_to(server);
    return slot == no_slot ? 0 : bind_server(slot, {});
}

int sntp_find_key_index(const char *address) noexcept
{
    cfg_ip_addr server;
    return parse_address(address, server) ? slot_of_key_bound_to(server) : result::invalid_parameter;
}

int cfg_get_sntp_server_key(const char *address) noexcept
{
    const int slot = sntp_find_key_index(address);
    return slot == no_slot ? 0 : slot < 0 ? slot : static_cast<int>(key_id_in(slot));
}
