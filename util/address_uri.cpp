// SPDX-License-Identifier: Apache-2.0
// IPv6 endpoints as URIs.
#include <switchcfg/address.h>

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstdint>
#include <net/if.h>
#include <netinet/in.h>
#include <regex.h>
#include <string_view>

namespace {

enum Group : std::size_t { whole, address_group, interface_part, interface_group, port_group, group_count };

// Not anchored: what stands around the URI does not matter.
constexpr char form[] = R"(tcp://\[([0-9A-Fa-f:]+)(%([a-zA-Z0-9\.]+))?\]:([0-9]+))";

using Groups = std::array<regmatch_t, group_count>;

bool match(const char *text, Groups &groups) noexcept
{
    regex_t expression;
    if (::regcomp(&expression, form, REG_EXTENDED) != 0) {
        return false;
    }
    const bool matched = ::regexec(&expression, text, groups.size(), groups.data(), 0) == 0;
    ::regfree(&expression);
    return matched;
}

std::string_view text_of(const char *text, const regmatch_t &group) noexcept
{
    return {text + group.rm_so, static_cast<std::size_t>(group.rm_eo - group.rm_so)};
}

// False when the text does not fit with its terminator.
template<std::size_t Size>
bool copy_text(std::string_view text, std::array<char, Size> &copy) noexcept
{
    if (text.size() >= Size) {
        return false;
    }
    *std::ranges::copy(text, copy.data()).out = '\0';
    return true;
}

} // namespace

int ipv6_parse_uri(const char *uri, std::uint8_t address[16], std::uint32_t *scope_id, std::uint16_t *port) noexcept
{
    Groups groups;
    if (uri == nullptr || !match(uri, groups) || groups[address_group].rm_so < 0 || groups[port_group].rm_so < 0) {
        return -1;
    }
    std::uint32_t port_number = 0;
    for (const char digit : text_of(uri, groups[port_group])) {
        port_number = (port_number * 10 + static_cast<std::uint32_t>(digit - '0')) & 0xFFFF;
    }
    *port = static_cast<std::uint16_t>(port_number);

    std::fill_n(address, 16, std::uint8_t{0});
    std::array<char, IP_ADDRESS_PART_MAX + 1> address_text;
    in6_addr converted{};
    if (!copy_text(text_of(uri, groups[address_group]), address_text) ||
        ::inet_pton(AF_INET6, address_text.data(), &converted) != 1) {
        return -1;
    }
    std::ranges::copy(converted.s6_addr, address);

    *scope_id = 0;
    std::array<char, IF_NAMESIZE> interface;
    if (groups[interface_group].rm_so >= 1 && copy_text(text_of(uri, groups[interface_group]), interface)) {
        *scope_id = ::if_nametoindex(interface.data());
    }
    return 0;
}
