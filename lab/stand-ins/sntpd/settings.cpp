// SPDX-License-Identifier: Apache-2.0
#include "lab/stand-ins/sntpd/settings.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <fstream>
#include <iterator>
#include <switchcfg/sntp.h>

namespace switchlab::sntpd {

namespace {

constexpr std::uint32_t own_choice_s = 64;

std::string quoted_keys(const KeyFile &file)
{
    std::string text;
    for (const Key &key : file.keys) {
        text += (text.empty() ? "" : ", ") + std::to_string(key.id) + " (" + key.type + ")";
    }
    return text.empty() ? "none" : text;
}

} // namespace

cfg_ip_addr Server::address() const
{
    cfg_ip_addr address{};
    if (::inet_pton(AF_INET, text.c_str(), address.addr) == 1) {
        address.length = 4;
    } else if (::inet_pton(AF_INET6, text.c_str(), address.addr) == 1) {
        address.length = 16;
    }
    return address;
}

const Key *Settings::key(std::uint32_t id) const
{
    const auto found = std::ranges::find(key_file.keys, id, &Key::id);
    return found != key_file.keys.end() ? &*found : nullptr;
}

std::string Settings::text() const
{
    std::string all;
    for (const Server &server : servers) {
        all += (all.empty() ? "" : ", ") + server.text +
               (server.key != 0 ? " with key " + std::to_string(server.key) : "");
    }
    std::string text = "asks " + (all.empty() ? "nobody" : all) + " every " + std::to_string(interval_s) + " s, " +
                       (authenticate ? "authenticated" : "not authenticated") + "; keys: " + quoted_keys(key_file);
    for (const int line : key_file.wrong_lines) {
        text += std::string{"; "} + SNTP_KEY_FILE + ":" + std::to_string(line) + ": no key";
    }
    return text;
}

Settings current_settings()
{
    std::ifstream file{SNTP_KEY_FILE};
    const std::string text{std::istreambuf_iterator<char>{file}, {}};
    Settings settings{cfg_get_sntp_interval(), cfg_get_sntp_auth_enable() != 0, {}, parse_keys(text)};
    if (settings.interval_s == 0) {
        settings.interval_s = own_choice_s;
    }
    for (int slot = 0; slot < SNTP_SLOTS; ++slot) {
        std::array<char, SNTP_ADDRESS_TEXT_SIZE> address{};
        if (sntp_has_server(slot) != 0 && sntp_dump_server_ip_addr(slot, address.data()) == 0) {
            settings.servers.push_back(
                {address.data(), static_cast<std::uint32_t>(cfg_get_sntp_server_key(address.data()))});
        }
    }
    return settings;
}

} // namespace switchlab::sntpd
