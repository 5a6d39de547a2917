// SPDX-License-Identifier: Apache-2.0
// Addresses as they stand in the shared records: 16 bytes and their length.
#ifndef SWITCHCFG_FEATURES_ADDRESS_RECORD_H
#define SWITCHCFG_FEATURES_ADDRESS_RECORD_H

#include <switchcfg/ip_addr.h>

#include <algorithm>
#include <arpa/inet.h>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace switchcfg {

using AddressRecord = std::span<std::uint8_t, sizeof(cfg_ip_addr)>;

inline cfg_ip_addr load_address(AddressRecord place) noexcept
{
    cfg_ip_addr address;
    std::memcpy(&address, place.data(), sizeof address);
    return address;
}

inline void store_address(AddressRecord place, const cfg_ip_addr &address) noexcept
{
    std::memcpy(place.data(), &address, sizeof address);
}

// IPv4 first, then IPv6. False, and an empty record, for a text that is neither.
inline bool parse_address(const char *text, cfg_ip_addr &address) noexcept
{
    address = {};
    if (text != nullptr && ::inet_pton(AF_INET, text, address.addr) == 1) {
        address.length = sizeof(in_addr);
    } else if (text != nullptr && ::inet_pton(AF_INET6, text, address.addr) == 1) {
        address.length = sizeof(in6_addr);
    }
    return address.length != 0;
}

// A length that its writer spoilt must not lead out of the record.
inline std::size_t used_bytes(const cfg_ip_addr &address) noexcept
{
    return std::min<std::size_t>(address.length, sizeof address.addr);
}

inline bool same_address(const cfg_ip_addr &one, const cfg_ip_addr &other) noexcept
{
    return one.length == other.length && std::memcmp(one.addr, other.addr, used_bytes(one)) == 0;
}

inline bool is_in_use(const cfg_ip_addr &address) noexcept
{
    return std::any_of(address.addr, address.addr + used_bytes(address), [](std::uint8_t byte) { return byte != 0; });
}

// False, with nothing written, for a record that holds no address. The buffer takes INET_ADDRSTRLEN bytes of an IPv4
// address and INET6_ADDRSTRLEN of an IPv6 one.
inline bool print_address(const cfg_ip_addr &address, char *buffer) noexcept
{
    if (buffer == nullptr) {
        return false;
    }
    switch (address.length) {
    case sizeof(in_addr):
        return ::inet_ntop(AF_INET, address.addr, buffer, INET_ADDRSTRLEN) != nullptr;
    case sizeof(in6_addr):
        return ::inet_ntop(AF_INET6, address.addr, buffer, INET6_ADDRSTRLEN) != nullptr;
    default:
        return false;
    }
}

} // namespace switchcfg

#endif
