// SPDX-License-Identifier: Apache-2.0
// The table of MAC addresses.
#include "lab/stand-ins/bcmd/chip.h"
#include "lab/stand-ins/bcmd/functions.h"

#include <algorithm>
#include <iterator>
#include <switchcfg/address.h>

namespace switchlab::bcmd {
namespace {

constexpr std::uint32_t usual_page = 64;
constexpr std::uint32_t largest_page = 1024;
constexpr std::uint32_t last_vlan = 4094;
constexpr std::uint32_t longest_aging_s = 1000000;

// arg1: index of the first entry; arg2: entries at most, 0 for the usual number. The result is the number of entries.
std::int32_t mac_table_page(std::uint32_t arg1, std::uint32_t arg2, std::uint32_t /*arg3*/, std::uint32_t /*arg4*/,
    const void * /*input*/, void **output, std::uint32_t *output_length)
{
    const std::lock_guard hold{chip().use};
    const auto &macs = chip().macs;
    std::vector<MacEntry> page;
    if (arg1 < macs.size()) {
        const std::uint32_t wanted = arg2 == 0 ? usual_page : std::min(arg2, largest_page);
        for (auto at = std::next(macs.begin(), arg1); at != macs.end() && page.size() < wanted; ++at) {
            page.push_back({at->first.second, at->first.first, at->second.first, at->second.second});
        }
    }
    return hand_out(page.data(), page.size() * sizeof(MacEntry), output, output_length, static_cast<int>(page.size()));
}

bool read_mac(const void *input, Mac &mac)
{
    return input != nullptr && parse_mac_address(static_cast<const char *>(input), mac.data(), ':') == 0;
}

// arg1, arg2: unit and port; arg3: VLAN; input: the address as text
std::int32_t mac_add(std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3, std::uint32_t /*arg4*/,
    const void *input, void ** /*output*/, std::uint32_t * /*output_length*/)
{
    Mac mac;
    const std::lock_guard hold{chip().use};
    if (chip().port(arg1, arg2) == nullptr) {
        return no_such_port;
    }
    if (arg3 < 1 || arg3 > last_vlan || !read_mac(input, mac)) {
        return bad_parameter;
    }
    if (chip().macs.size() >= Chip::most_macs) {
        return table_full;
    }
    chip().macs[{static_cast<std::uint16_t>(arg3), mac}] = {arg1, arg2};
    return 0;
}

// arg3: VLAN; input: the address as text
std::int32_t mac_delete(std::uint32_t /*arg1*/, std::uint32_t /*arg2*/, std::uint32_t arg3, std::uint32_t /*arg4*/,
    const void *input, void ** /*output*/, std::uint32_t * /*output_length*/)
{
    Mac mac;
    if (arg3 < 1 || arg3 > last_vlan || !read_mac(input, mac)) {
        return bad_parameter;
    }
    const std::lock_guard hold{chip().use};
    return chip().macs.erase({static_cast<std::uint16_t>(arg3), mac}) == 1 ? 0 : not_found;
}

// The result is the number of entries that went.
std::int32_t mac_table_flush(std::uint32_t /*arg1*/, std::uint32_t /*arg2*/, std::uint32_t /*arg3*/,
    std::uint32_t /*arg4*/, const void * /*input*/, void ** /*output*/, std::uint32_t * /*output_length*/)
{
    const std::lock_guard hold{chip().use};
    const auto count = static_cast<std::int32_t>(chip().macs.size());
    chip().macs.clear();
    return count;
}

std::int32_t mac_aging_get(std::uint32_t /*arg1*/, std::uint32_t /*arg2*/, std::uint32_t /*arg3*/,
    std::uint32_t /*arg4*/, const void * /*input*/, void ** /*output*/, std::uint32_t * /*output_length*/)
{
    const std::lock_guard hold{chip().use};
    return static_cast<std::int32_t>(chip().mac_aging_s);
}

// arg1: seconds, 0 for never
std::int32_t mac_aging_set(std::uint32_t arg1, std::uint32_t /*arg2*/, std::uint32_t /*arg3*/, std::uint32_t /*arg4*/,
    const void * /*input*/, void ** /*output*/, std::uint32_t * /*output_length*/)
{
    if (arg1 > longest_aging_s) {
        return out_of_limits;
    }
    const std::lock_guard hold{chip().use};
    chip().mac_aging_s = arg1;
    return 0;
}

} // namespace

void register_table_functions(BcmdFunclistServer &server)
{
    server.registerLegacyCallback(BCMD_GENERAL_MAC_TABLE_PAGE, mac_table_page);
    server.registerLegacyCallback(BCMD_GENERAL_MAC_ADD, mac_add);
    server.registerLegacyCallback(BCMD_GENERAL_MAC_DELETE, mac_delete);
    server.registerLegacyCallback(BCMD_GENERAL_MAC_TABLE_FLUSH, mac_table_flush);
    server.registerLegacyCallback(BCMD_GENERAL_MAC_AGING_GET, mac_aging_get);
    server.registerLegacyCallback(BCMD_GENERAL_MAC_AGING_SET, mac_aging_set);
}

} // namespace switchlab::bcmd
