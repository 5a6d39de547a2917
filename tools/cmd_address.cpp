// SPDX-License-Identifier: Apache-2.0
// switchcfg ip, mac, uri: what the switch makes of an address text.
#include "tools/command_line/failure.h"
#include "tools/command_line/output.h"
#include "tools/commands.h"

#include <arpa/inet.h>
#include <array>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <memory>
#include <netinet/in.h>
#include <string>
#include <switchcfg/address.h>

namespace switchcfg::tool {
namespace {

using Buffer = std::array<char, IP_PREFIX_TEXT_SIZE>;

void show(const char *key, const std::string &value)
{
    print({{key, value}}, [&] { std::cout << value << '\n'; });
}

// A yes or no with the exit status to match.
void answer(const char *key, bool yes)
{
    print({{key, yes}}, [&] { std::cout << (yes ? "yes" : "no") << '\n'; });
    if (!yes) {
        throw CommandStatus{1};
    }
}

bool normalize(const std::string &text, Buffer &normalized)
{
    return (text.find('/') == std::string::npos ? ip_address_normalize(text.c_str(), normalized.data())
                                                : ip_address_mask_normalize(text.c_str(), normalized.data())) == 0;
}

void check(const std::string &text)
{
    Buffer normalized;
    answer("valid", normalize(text, normalized));
}

void normalized_form(const std::string &text)
{
    Buffer normalized;
    if (!normalize(text, normalized)) {
        throw Failure{"'" + text + "' is neither an address nor an address with a prefix"};
    }
    show("address", normalized.data());
}

void mask_of(const std::string &text)
{
    Buffer mask;
    const bool with_address = text.find('/') != std::string::npos;
    if ((with_address ? ip_addr_prefix_to_addr_mask(text.c_str(), nullptr, mask.data())
                      : ip_prefix_to_mask(text.c_str(), mask.data())) != 0) {
        throw Failure{"'" + text + "': a prefix is 0 to 32"};
    }
    show("mask", mask.data());
}

void prefix_of(const std::string &text)
{
    const int prefix = ip_mask_to_prefix(text.c_str());
    if (prefix < 0) {
        throw Failure{"'" + text + "' is no dotted mask"};
    }
    print({{"prefix", prefix}}, [&] { std::cout << prefix << '\n'; });
}

void host(const std::string &address, const std::string &mask)
{
    answer("host", (mask.empty() ? ip_addr_prefix_is_valid_host(address.c_str())
                                 : ip_addr_mask_is_valid_host(address.c_str(), mask.c_str())) == 1);
}

void mac(const std::string &text, const std::string &separator)
{
    if (separator.size() > 1) {
        throw Failure{"'" + separator + "': a separator is one character"};
    }
    std::array<std::uint8_t, 6> bytes;
    if (parse_mac_address(text.c_str(), bytes.data(), separator.empty() ? '\0' : separator.front()) != 0) {
        throw Failure{"'" + text + "' is no MAC address"};
    }
    std::array<char, 18> normalized;
    (void)std::snprintf(normalized.data(), normalized.size(), "%02X:%02X:%02X:%02X:%02X:%02X", bytes[0], bytes[1],
        bytes[2], bytes[3], bytes[4], bytes[5]);
    show("mac", normalized.data());
}

void uri(const std::string &text)
{
    std::array<std::uint8_t, 16> address;
    std::uint32_t scope = 0;
    std::uint16_t port = 0;
    if (ipv6_parse_uri(text.c_str(), address.data(), &scope, &port) != 0) {
        throw Failure{"'" + text + "': tcp://[address]:port or tcp://[address%interface]:port expected"};
    }
    std::array<char, INET6_ADDRSTRLEN> shown{};
    (void)::inet_ntop(AF_INET6, address.data(), shown.data(), shown.size());
    print({{"address", shown.data()}, {"scope", scope}, {"port", port}}, [&] {
        Table table{{"ADDRESS", "SCOPE", "PORT"}};
        table.add({shown.data(), std::to_string(scope), std::to_string(port)});
        table.print();
    });
}

void add_text_command(
    CLI::App &family, const char *name, const char *about, const char *what, void (*run)(const std::string &text))
{
    auto *command = family.add_subcommand(name, about);
    auto text = std::make_shared<std::string>();
    command->add_option("text", *text, what)->required();
    command->callback([text, run] { run(*text); });
}

} // namespace

void add_address_commands(CLI::App &app)
{
    auto *ip = app.add_subcommand("ip", "IPv4 addresses as the switch reads them");
    ip->require_subcommand(1);
    add_text_command(
        *ip, "check", "Whether an address is accepted; exit status 1 when not", "ADDRESS or ADDRESS/PREFIX", check);
    add_text_command(*ip, "normalize", "The form an address is kept in", "ADDRESS or ADDRESS/PREFIX", normalized_form);
    add_text_command(*ip, "mask", "The mask of a prefix", "PREFIX or ADDRESS/PREFIX", mask_of);
    add_text_command(*ip, "prefix", "The prefix of a mask", "Dotted mask", prefix_of);
    auto *host_command = ip->add_subcommand("host", "Whether an address can be a host's; exit status 1 when not");
    auto address = std::make_shared<std::string>();
    auto mask = std::make_shared<std::string>();
    host_command->add_option("address", *address, "ADDRESS/PREFIX, or ADDRESS with a mask behind it")->required();
    host_command->add_option("mask", *mask, "Dotted mask");
    host_command->callback([=] { host(*address, *mask); });

    auto *mac_family = app.add_subcommand("mac", "MAC addresses as the switch reads them");
    mac_family->require_subcommand(1);
    auto *mac_parse = mac_family->add_subcommand("parse", "Six groups of one or two hexadecimal digits");
    auto text = std::make_shared<std::string>();
    auto separator = std::make_shared<std::string>();
    mac_parse->add_option("text", *text, "MAC address")->required();
    mac_parse->add_option("--separator", *separator, "Character between the groups; found out when not given");
    mac_parse->callback([=] { mac(*text, *separator); });

    auto *uri_family = app.add_subcommand("uri", "IPv6 endpoints as the switch reads them");
    uri_family->require_subcommand(1);
    add_text_command(*uri_family, "parse", "Address, interface and port of an endpoint",
        "tcp://[ADDRESS]:PORT or tcp://[ADDRESS%INTERFACE]:PORT", uri);
}

} // namespace switchcfg::tool
