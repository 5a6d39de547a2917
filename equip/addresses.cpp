// SPDX-License-Identifier: Apache-2.0
// The addresses by which the units of a stack reach one another.
#include "equip/record.h"

#include <cstdio>
#include <iterator>
#include <net/if.h>
#include <switchcfg/text.h>

using namespace switchcfg;

namespace {

// Two for each unit; unit 8 has its own although a stack has eight.
constexpr char management_addresses[][11] = {
    "febf::0001", "febf::0101", //
    "febf::0002", "febf::0102", //
    "febf::0003", "febf::0103", //
    "febf::0004", "febf::0104", //
    "febf::0005", "febf::0105", //
    "febf::0006", "febf::0106", //
    "febf::0007", "febf::0107", //
    "febf::0008", "febf::0108", //
    "febf::0009", "febf::0109", //
};

constexpr std::int32_t chipset_48_ports = 128;
constexpr char stacking_interface[] = "atp";
constexpr char management_vlan[] = ".3";

} // namespace

const char *cfg_equip_get_mgmt_ipv6_address(std::uint32_t unit, std::uint32_t which) noexcept
{
    // Boards with the larger chip have one management processor only. Unit 0 is asked before its model is known.
    if (unit != 0 && unit_is_valid(unit) && unit_record(unit).chipset == chipset_48_ports) {
        which = 0;
    }
    const std::uint64_t place = std::uint64_t{unit} * 2 + which;
    return place < std::size(management_addresses) ? management_addresses[place] : "";
}

char *cfg_equip_get_unit_ipv6_addr(std::uint32_t unit, int *ifindex_out, char *dst, std::size_t len) noexcept
{
    std::uint8_t *const region = status_base();
    if (!unit_is_valid(unit) || region == nullptr) {
        return nullptr;
    }
    if (stacking_support() == 2) {
        char address[sizeof "fe80::0200:00ff:fe00:0000"];
        const auto mac = bytes(region, status_layout::unit_mac, unit);
        (void)std::snprintf(address, sizeof address, "fe80::%02x%02x:%02xff:fe%02x:%02x%02x", mac[0] ^ 2U, mac[1],
            mac[2], mac[3], mac[4], mac[5]);
        *ifindex_out = static_cast<int>(::if_nametoindex(stacking_interface));
        return strncpy_safe(dst, address, len);
    }
    char interface[IF_NAMESIZE] = "";
    if (const char *management = cfg_equip_get_mgmt_eth(0); management != nullptr) {
        (void)std::snprintf(interface, sizeof interface, "%s%s", management, management_vlan);
    }
    *ifindex_out = static_cast<int>(::if_nametoindex(interface));
    const std::uint32_t which = load(region, status_layout::mpu_slot) == 0 ? 1 : 0;
    return strncpy_safe(dst, cfg_equip_get_mgmt_ipv6_address(unit, which), len);
}
