// SPDX-License-Identifier: Apache-2.0
// switchcfg sntp: the SNTP client's settings, servers and keys.
#include "core/config_layout.h"
#include "tools/attach.h"
#include "tools/command_line/failure.h"
#include "tools/command_line/output.h"
#include "tools/commands.h"
#include "tools/lock_hold.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iostream>
#include <memory>
#include <string>
#include <switchcfg/config_region.h>
#include <switchcfg/error.h>
#include <switchcfg/locks.h>
#include <switchcfg/sntp.h>

namespace switchcfg::tool {
namespace {

using AddressText = std::array<char, SNTP_ADDRESS_TEXT_SIZE>;

struct SntpServer {
    int slot;
    std::string address;
    std::uint32_t key;
};

struct SntpKey {
    int slot;
    std::uint32_t id;
    std::string type;
    std::string value;
    std::string server; // bound to it, empty for none
};

std::vector<SntpServer> sntp_servers()
{
    std::vector<SntpServer> found;
    for (int slot = 0; slot < SNTP_SLOTS; ++slot) {
        AddressText text{};
        if (sntp_dump_server_ip_addr(slot, text.data()) == 0) {
            found.push_back({slot, text.data(), static_cast<std::uint32_t>(cfg_get_sntp_server_key(text.data()))});
        }
    }
    return found;
}

std::string key_text(const char *text)
{
    return {text, ::strnlen(text, SNTP_KEY_TEXT_SIZE)};
}

// The library answers which key a server has, so a key's server is looked for in the record itself.
std::string server_of_key(int slot)
{
    auto *const config = static_cast<std::uint8_t *>(cfg_get_cfg());
    const auto record = bytes(config, config_layout::sntp_key_server, slot);
    AddressText text{};
    const std::uint8_t length = record.back();
    const bool known = length == 4 || length == 16;
    return known && ::inet_ntop(length == 4 ? AF_INET : AF_INET6, record.data(), text.data(), text.size()) != nullptr
               ? text.data()
               : "";
}

std::vector<SntpKey> sntp_keys(bool with_values)
{
    std::vector<SntpKey> found;
    for (int slot = 0; slot < SNTP_SLOTS; ++slot) {
        const auto id = static_cast<std::uint32_t>(cfg_get_sntp_key_id(slot));
        if (id != 0) {
            found.push_back({slot, id, key_text(cfg_get_sntp_key_type(slot)),
                with_values ? key_text(cfg_get_sntp_key_value(slot)) : "(hidden)", server_of_key(slot)});
        }
    }
    return found;
}

void show_sntp(bool with_values)
{
    attach();
    AddressText last{};
    const bool answered = sntp_dump_lastOk_ip_addr(last.data()) == 0;
    Json json{{"enabled", cfg_get_sntp_enable() != 0}, {"interval", cfg_get_sntp_interval()},
        {"authentication", cfg_get_sntp_auth_enable() != 0}, {"servers", Json::array()}, {"keys", Json::array()},
        {"last_server", answered ? Json(last.data()) : Json(nullptr)}};
    Table server_table{{"SLOT", "SERVER", "KEY"}};
    for (const SntpServer &server : sntp_servers()) {
        json["servers"].push_back({{"slot", server.slot}, {"address", server.address}, {"key", server.key}});
        server_table.add(
            {std::to_string(server.slot), server.address, server.key != 0 ? std::to_string(server.key) : ""});
    }
    Table key_table{{"SLOT", "KEY", "TYPE", "VALUE", "SERVER"}};
    for (const SntpKey &key : sntp_keys(with_values)) {
        json["keys"].push_back({{"slot", key.slot}, {"id", key.id}, {"type", key.type}, {"value", key.value},
            {"server", key.server.empty() ? Json(nullptr) : Json(key.server)}});
        key_table.add({std::to_string(key.slot), std::to_string(key.id), key.type, key.value, key.server});
    }
    print(json, [&] {
        std::cout << "SNTP client     " << (cfg_get_sntp_enable() != 0 ? "on" : "off")
                  << (cfg_get_sntp_enable() != 0 && sntp_has_any_server() == 0 ? ", without a server" : "") << '\n'
                  << "interval        " << cfg_get_sntp_interval() << " s\n"
                  << "authentication  " << (cfg_get_sntp_auth_enable() != 0 ? "on" : "off") << '\n'
                  << "last answer of  " << (answered ? last.data() : "(nobody)") << '\n';
        if (!json["servers"].empty()) {
            std::cout << '\n';
            server_table.print();
        }
        if (!json["keys"].empty()) {
            std::cout << '\n';
            key_table.print();
        }
    });
}

// Under the lock that guards the configuration, and on disk at the end.
void change_sntp(const std::string &object, const std::function<int()> &call)
{
    attach();
    const LockHold hold{cfg_lock_table[CFG_LOCK_CFG]};
    cfg_set_error_msg_enable(1);
    const int result = call();
    if (cfg_data_sync() != 0) {
        throw system_failure(CFG_RUNNING_PATH, "cannot write back");
    }
    if (result == 0) {
        return;
    }
    // Of the process manager and the key file; what else can go wrong does so before anything changes.
    const bool stored = result == -37 || result == -43 || result == -44;
    const std::string explained = cfg_error_get_msg();
    const char *const message = cfg_strerror(result);
    throw Failure{object + ": " +
                  (!explained.empty()      ? explained
                      : message != nullptr ? message
                                           : "failed") +
                  " (" + std::to_string(result) + ")" + (stored ? "; the change is stored" : "")};
}

// The daemon reads words from the key file, and takes what follows '#' for a comment.
void check_word(const std::string &what, const std::string &word)
{
    const auto harmless = [](char c) { return c > ' ' && c <= '~' && c != '#'; };
    if (!std::ranges::all_of(word, harmless)) {
        throw Failure{what + ": printable characters without blanks and '#' expected"};
    }
}

void add_sntp_settings(CLI::App &sntp)
{
    for (const bool enable : {true, false}) {
        sntp.add_subcommand(enable ? "enable" : "disable", enable ? "Switch the client on" : "Switch the client off")
            ->callback([enable] { change_sntp("sntp", [enable] { return cfg_set_sntp_enable(enable ? 1 : 0); }); });
    }
    auto interval = std::make_shared<std::uint32_t>(0);
    auto *command = sntp.add_subcommand("interval", "How often servers are asked");
    command->add_option("seconds", *interval, "Seconds; 0 is the daemon's own choice")->required();
    command->callback([interval] { change_sntp("interval", [&] { return cfg_set_sntp_interval(*interval); }); });

    auto wanted = std::make_shared<std::string>();
    auto *auth = sntp.add_subcommand("auth", "Whether answers must be authenticated");
    auth->add_option("wanted", *wanted, "on or off")->required()->check(CLI::IsMember({"on", "off"}));
    auth->callback(
        [wanted] { change_sntp("authentication", [&] { return cfg_set_sntp_auth_enable(*wanted == "on" ? 1 : 0); }); });
}

void add_sntp_servers(CLI::App &sntp)
{
    auto *server = sntp.add_subcommand("server", "The servers, three at most");
    server->require_subcommand(1);
    auto address = std::make_shared<std::string>();
    auto *add = server->add_subcommand("add", "Add a server behind the others");
    add->add_option("address", *address, "IPv4 or IPv6 address")->required();
    add->callback([address] { change_sntp(*address, [&] { return cfg_add_sntp_server(address->c_str()); }); });

    auto *del = server->add_subcommand("del", "Remove a server, but never the first");
    del->add_option("address", *address, "IPv4 or IPv6 address")->required();
    del->callback([address] { change_sntp(*address, [&] { return cfg_del_sntp_server(address->c_str()); }); });

    auto *clear = server->add_subcommand("clear", "Remove a server, the first too, and the key binding to it");
    clear->add_option("address", *address, "IPv4 or IPv6 address, or all")->required();
    clear->callback([address] {
        change_sntp(*address, [&] {
            if (*address == "all") {
                return cfg_sntp_clear_all_server();
            }
            const int cleared = cfg_sntp_clear_key_server(address->c_str());
            return cleared != 0 ? cleared : apply_sntp(); // which clearing leaves to its caller
        });
    });
}

void add_sntp_keys(CLI::App &sntp)
{
    auto *key = sntp.add_subcommand("key", "The keys, three at most");
    key->require_subcommand(1);
    auto id = std::make_shared<std::uint32_t>(0);
    auto type = std::make_shared<std::string>();
    auto value = std::make_shared<std::string>();
    auto *add = key->add_subcommand("add", "Add a key");
    add->add_option("id", *id, "Identifier, from 1")->required();
    add->add_option("type", *type, "MD5, SHA1, ...: at most 8 characters")->required();
    add->add_option("value", *value, "At most 8 characters")->required();
    add->callback([=] {
        check_word("type", *type);
        check_word("value", *value);
        change_sntp("key " + std::to_string(*id), [&] { return cfg_sntp_add_key(*id, type->c_str(), value->c_str()); });
    });
    auto *del = key->add_subcommand("del", "Remove a key and its binding");
    del->add_option("id", *id, "Identifier")->required();
    del->callback([=] { change_sntp("key " + std::to_string(*id), [&] { return cfg_sntp_remove_key(*id); }); });

    auto address = std::make_shared<std::string>();
    auto *bind = sntp.add_subcommand("bind", "Use a key with a server");
    bind->add_option("id", *id, "Identifier of the key")->required();
    bind->add_option("address", *address, "IPv4 or IPv6 address")->required();
    bind->callback([=] {
        change_sntp("key " + std::to_string(*id) + " and " + *address,
            [&] { return cfg_sntp_define_key_server(*id, address->c_str()); });
    });
    auto *unbind = sntp.add_subcommand("unbind", "Use no key with a server");
    unbind->add_option("address", *address, "IPv4 or IPv6 address, or all")->required();
    unbind->callback([=] { change_sntp(*address, [&] { return cfg_sntp_undefine_key_server(address->c_str()); }); });
}

} // namespace

void add_sntp_commands(CLI::App &app)
{
    auto *sntp = app.add_subcommand("sntp", "The SNTP client: settings, servers, keys");
    sntp->require_subcommand(1);
    auto *show_command = sntp->add_subcommand("show", "Settings, servers and keys");
    auto with_values = std::make_shared<bool>(false);
    show_command->add_flag("--secrets", *with_values, "With the values of the keys");
    show_command->callback([with_values] { show_sntp(*with_values); });
    add_sntp_settings(*sntp);
    add_sntp_servers(*sntp);
    add_sntp_keys(*sntp);
}

} // namespace switchcfg::tool
