// SPDX-License-Identifier: Apache-2.0
// Dotted IPv4 addresses: checks and normal form.
#include <switchcfg/address.h>

#include "util/address_text.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <netinet/in.h>

namespace switchcfg {

bool read_dotted(const char *text, const char *end, DottedParts &parts) noexcept
{
    for (std::size_t i = 0; i < parts.size(); ++i) {
        char *part_end = nullptr;
        parts[i] = std::strtoul(text, &part_end, 10); // it cannot run into the next part, as "." is no blank
        if (part_end == text || parts[i] > 255) {
            return false;
        }
        if (i + 1 == parts.size()) {
            return part_end == end;
        }
        if (*part_end != '.') {
            return false;
        }
        text = part_end + 1;
    }
    return false;
}

namespace {

bool is_host(const DottedParts &parts) noexcept
{
    return parts[0] != 0 && parts[3] != 0 && parts[3] != 255;
}

int normalize(const char *text, char *normalized, bool host_only) noexcept
{
    DottedParts parts;
    if (text == nullptr || !read_dotted(text, text + std::strlen(text), parts) || (host_only && !is_host(parts))) {
        return -1;
    }
    if (normalized != nullptr) {
        const auto part = [&parts](int place) { return static_cast<std::uint8_t>(parts[place]); };
        (void)std::snprintf(normalized, IP_TEXT_SIZE, "%u.%u.%u.%u", part(0), part(1), part(2), part(3));
    }
    return 0;
}

} // namespace
} // namespace switchcfg

int ip_address_normalize(const char *text, char *normalized) noexcept
{
    return switchcfg::normalize(text, normalized, false);
}

int ip_address_normalize_valid_host(const char *text, char *normalized) noexcept
{
    return switchcfg::normalize(text, normalized, true);
}

int str_is_ip(const char *text) noexcept
{
    return switchcfg::normalize(text, nullptr, false) == 0 ? 1 : 0;
}

int ip_uint32_to_str(std::uint32_t address, char *text) noexcept
{
    if (text == nullptr) {
        return -1;
    }
    std::array<char, IP_TEXT_SIZE> dotted{};
    (void)::inet_ntop(AF_INET, &address, dotted.data(), dotted.size());
    std::ranges::copy(dotted, text);
    return 0;
}

int ip_str_to_uint32(const char *text, std::uint32_t *address) noexcept
{
    in_addr converted{};
    if (text == nullptr || ::inet_aton(text, &converted) == 0) {
        return -1;
    }
    *address = converted.s_addr;
    return 0;
}

int ip_str_to_short(const char *text, std::uint16_t pair[2]) noexcept
{
    if (text == nullptr || *text == '\0') {
        pair[0] = 0;
        pair[1] = 0;
        return -1;
    }
    constexpr std::size_t longest_part = 3;
    std::array<int, 4> parts{};
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const std::size_t length = std::strcspn(text, "./");
        const bool last = i + 1 == parts.size();
        if (length > longest_part || (text[length] == '\0' && (!last || length == 0))) {
            return -1;
        }
        parts[i] = std::atoi(text); // NOLINT(cert-err34-c): no number counts as 0; the length rules out overflow
        text += length + (last ? 0 : 1);
    }
    pair[0] = static_cast<std::uint16_t>(parts[0] * 256 + parts[1]);
    pair[1] = static_cast<std::uint16_t>(parts[2] * 256 + parts[3]);
    return 0;
}
