// SPDX-License-Identifier: Apache-2.0
// IPv4 masks and prefixes.
#include <switchcfg/address.h>

#include "util/address_text.h"
#include "util/digits.h"

#include <arpa/inet.h>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <netinet/in.h>

namespace switchcfg {
namespace {

constexpr int longest_prefix = 32;

// Digits only, as many as there are; -1 when that is no prefix.
int read_prefix(const char *text) noexcept
{
    if (*text == '\0') {
        return -1;
    }
    int value = 0;
    for (; *text != '\0'; ++text) {
        if (!is_digit(*text)) {
            return -1;
        }
        value = value * 10 + (*text - '0');
        if (value > longest_prefix) {
            return -1;
        }
    }
    return value;
}

} // namespace
} // namespace switchcfg

using namespace switchcfg;

int ip_address_mask_normalize(const char *text, char *normalized) noexcept
{
    const char *const slash = text != nullptr ? std::strchr(text, '/') : nullptr;
    DottedParts parts;
    if (slash == nullptr || !read_dotted(text, slash, parts)) {
        return -1;
    }
    const int prefix = read_prefix(slash + 1);
    if (prefix < 0) {
        return -1;
    }
    if (normalized != nullptr) {
        (void)std::snprintf(
            normalized, IP_PREFIX_TEXT_SIZE, "%lu.%lu.%lu.%lu/%d", parts[0], parts[1], parts[2], parts[3], prefix);
    }
    return 0;
}

int ip_prefix_to_mask(const char *prefix, char *mask) noexcept
{
    if (prefix == nullptr || mask == nullptr) {
        return -1;
    }
    const long bits = std::strtol(prefix, nullptr, 10); // saturates, so a huge number is out of range, too
    if (bits < 0 || bits > longest_prefix) {
        return -1;
    }
    const std::uint32_t value = bits == 0 ? 0 : ~std::uint32_t{0} << (longest_prefix - bits);
    (void)std::snprintf(mask, IP_TEXT_SIZE, "%d.%d.%d.%d", static_cast<int>(value >> 24),
        static_cast<int>(value >> 16 & 255), static_cast<int>(value >> 8 & 255), static_cast<int>(value & 255));
    return 0;
}

int ip_addr_prefix_to_addr_mask(const char *text, char *address, char *mask) noexcept
{
    const char *const slash = text != nullptr ? std::strchr(text, '/') : nullptr;
    if (slash == nullptr) {
        return -1;
    }
    const auto length = static_cast<std::size_t>(slash - text);
    if (address != nullptr && length > IP_ADDRESS_PART_MAX) {
        return -1;
    }
    if (mask != nullptr && ip_prefix_to_mask(slash + 1, mask) != 0) {
        return -1;
    }
    if (address != nullptr) {
        std::memmove(address, text, length);
        address[length] = '\0';
    }
    return 0;
}

int ip_mask_to_prefix(const char *mask) noexcept
{
    std::uint32_t value = 0;
    for (int i = 0; mask != nullptr && i < 4; ++i) {
        char *end = nullptr;
        const long long part = std::strtoll(mask, &end, 10); // saturates, beyond int on machines of every width
        const bool is_int = part >= std::numeric_limits<int>::min() && part <= std::numeric_limits<int>::max();
        if (end == mask || !is_int) {
            return -1;
        }
        value = value << 8 | (static_cast<std::uint32_t>(part) & 255);
        if (i == 3) {
            return std::countl_one(value);
        }
        if (*end != '.') {
            return -1;
        }
        mask = end + 1;
    }
    return -1;
}

int ip_addr_mask_is_valid_host(const char *address, const char *mask) noexcept
{
    in_addr binary_address{};
    in_addr binary_mask{};
    if (str_is_ip(address) == 0 || str_is_ip(mask) == 0 || ::inet_aton(address, &binary_address) == 0 ||
        ::inet_aton(mask, &binary_mask) == 0) {
        return 0;
    }
    const in_addr_t host = binary_address.s_addr & ~binary_mask.s_addr;
    return host != 0 && host != static_cast<in_addr_t>(~binary_mask.s_addr) ? 1 : 0;
}

int ip_addr_prefix_is_valid_host(const char *text) noexcept
{
    std::array<char, IP_ADDRESS_PART_MAX + 1> address;
    std::array<char, IP_TEXT_SIZE> mask;
    return ip_addr_prefix_to_addr_mask(text, address.data(), mask.data()) == 0
               ? ip_addr_mask_is_valid_host(address.data(), mask.data())
               : 0;
}
