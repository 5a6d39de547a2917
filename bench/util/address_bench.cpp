// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/address.h>
#include <switchcfg/print_ext.h>

#include "bench/support/compare.h"

#include <arpa/inet.h>
#include <cstdint>
#include <cstdio>

namespace {

using namespace switchcfg::bench;

void address_to_text(benchmark::State &state)
{
    char text[IP_TEXT_SIZE];
    std::uint32_t address = htonl(0xC0A80A01);
    compare(
        state, {"`ip_uint32_to_str`", "inet_ntop"},
        [&] { return ::inet_ntop(AF_INET, &address, text, sizeof text) != nullptr; },
        [&] { return ip_uint32_to_str(address, text) == 0; });
}
SWITCHCFG_ROW(address_to_text);

void address_of_text(benchmark::State &state)
{
    std::uint32_t address = 0;
    const char *const text = "192.168.10.1";
    compare(
        state, {"`ip_str_to_uint32`", "inet_aton"},
        [&] {
            in_addr found{};
            const int good = ::inet_aton(text, &found);
            benchmark::DoNotOptimize(address = found.s_addr);
            return good == 1;
        },
        [&] { return ip_str_to_uint32(text, &address) == 0; });
}
SWITCHCFG_ROW(address_of_text);

void mac_of_text(benchmark::State &state)
{
    unsigned parts[6];
    std::uint8_t mac[6];
    compare(
        state, {"`parse_mac_address`", "one sscanf"},
        [&] {
            return std::sscanf("00:1a:2b:3c:4d:5e", "%2x:%2x:%2x:%2x:%2x:%2x", &parts[0], &parts[1], &parts[2],
                       &parts[3], &parts[4], &parts[5]) == 6;
        },
        [&] { return parse_mac_address("00:1a:2b:3c:4d:5e", mac, ':') == 0; });
}
SWITCHCFG_ROW(mac_of_text);

// A library that registers conversions also slows the C library's own down: printf looks each up. The floor is one
// that prints the same.
void print_mac(benchmark::State &state)
{
    printExts_init();
    const std::uint8_t mac[6] = {0, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E};
    char text[64];
    const char *const ours = "%M"; // a letter the compiler does not know
    compare(
        state, {"`%M` in a print format", "six `%02X`"},
        [&] {
            return std::snprintf(
                text, sizeof text, "%02X:%02X:%02X:%02X:%02X:%02X", mac[0], mac[1], mac[2], mac[3], mac[4], mac[5]);
        },
        [&] {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
            return std::snprintf(text, sizeof text, ours, mac);
#pragma GCC diagnostic pop
        });
}
SWITCHCFG_ROW(print_mac);

} // namespace
