// SPDX-License-Identifier: Apache-2.0
// MAC addresses as text.
#include <switchcfg/address.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace {

int hex_value(char c) noexcept
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const int letter = c | 0x20;
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

// The first of the three that the text holds; 0 when it holds none.
char separator_in(const char *text) noexcept
{
    for (const char candidate : {'-', ':', '.'}) {
        if (std::strchr(text, candidate) != nullptr) {
            return candidate;
        }
    }
    return '\0';
}

} // namespace

int parse_mac_address(const char *text, std::uint8_t mac[6], char separator) noexcept
{
    if (text == nullptr) {
        return -1;
    }
    if (separator == '\0') {
        separator = separator_in(text);
        if (separator == '\0') {
            return -1;
        }
    }
    std::array<std::uint8_t, 6> bytes;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        int value = hex_value(*text);
        if (value < 0) {
            return -1;
        }
        ++text;
        if (const int second = hex_value(*text); second >= 0) {
            value = value * 16 + second;
            ++text;
        }
        bytes[i] = static_cast<std::uint8_t>(value);
        const bool last = i + 1 == bytes.size();
        if (*text != (last ? '\0' : separator)) {
            return -1;
        }
        text += last ? 0 : 1;
    }
    std::ranges::copy(bytes, mac);
    return 0;
}
