// SPDX-License-Identifier: Apache-2.0
// A static route as it travels in the payloads of the lab's routing stack: four big-endian words. Header only: the tool
// speaks it too.
#ifndef SWITCHCFG_LAB_STAND_INS_ROUTING_ROUTE_H
#define SWITCHCFG_LAB_STAND_INS_ROUTING_ROUTE_H

#include <arpa/inet.h>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace switchlab::routing {

// Commands that the lab's routing stack carries out.
enum Command : std::uint32_t {
    add_static_route = 1,
    delete_static_route = 2,
    control_delay = 6, // has no reply
    debug_set = 224,   // takes the text of a fault
    get_rib = 257,
    get_route = 258
};

inline std::string word_of(std::uint32_t value)
{
    value = htonl(value);
    return {reinterpret_cast<const char *>(&value), sizeof value};
}

inline std::uint32_t word_at(const void *place)
{
    std::uint32_t value = 0;
    std::memcpy(&value, place, sizeof value);
    return ntohl(value);
}

struct Route {
    std::uint32_t address = 0; // host order here
    std::uint32_t prefix_length = 0;
    std::uint32_t next_hop = 0;
    std::uint32_t distance = 1;

    static constexpr std::size_t wire_size = 16;

    auto operator<=>(const Route &) const = default; // NOLINT(modernize-use-nullptr): no pointer is meant

    std::uint32_t mask() const
    {
        return prefix_length == 0 ? 0 : static_cast<std::uint32_t>(UINT64_C(0xFFFFFFFF) << (32 - prefix_length));
    }
    bool valid() const
    {
        return prefix_length <= 32 && (address & ~mask()) == 0 && next_hop != 0 && distance >= 1 && distance <= 255;
    }
    std::string to_wire() const
    {
        return word_of(address) + word_of(prefix_length) + word_of(next_hop) + word_of(distance);
    }
    static Route from_wire(const void *bytes)
    {
        const auto *place = static_cast<const char *>(bytes);
        return {word_at(place), word_at(place + 4), word_at(place + 8), word_at(place + 12)};
    }
};

inline std::string address_text(std::uint32_t address)
{
    char text[INET_ADDRSTRLEN];
    const in_addr network{htonl(address)};
    return ::inet_ntop(AF_INET, &network, text, sizeof text);
}

inline std::string prefix_text(const Route &route)
{
    return address_text(route.address) + "/" + std::to_string(route.prefix_length);
}

} // namespace switchlab::routing

#endif
