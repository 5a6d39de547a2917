// SPDX-License-Identifier: Apache-2.0
#include "tools/hex_text.h"

#include "tools/command_line/failure.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <iostream>

namespace switchcfg::tool {

Bytes bytes_of_hex(const std::string &text)
{
    Bytes bytes;
    std::string digits;
    for (const char character : text) {
        if (std::isxdigit(static_cast<unsigned char>(character)) != 0) {
            digits += character;
            if (digits.size() == 2) {
                bytes.push_back(static_cast<std::uint8_t>(std::stoul(digits, nullptr, 16)));
                digits.clear();
            }
        } else if (!digits.empty() || std::string{" \t\n:-"}.find(character) == std::string::npos) {
            throw Failure{"'" + text + "' is not hexadecimal: unexpected '" + character + "'"};
        }
    }
    if (!digits.empty()) {
        throw Failure{"'" + text + "' is not hexadecimal: the last byte lacks a digit"};
    }
    return bytes;
}

void print_dump(const Bytes &bytes)
{
    for (std::size_t line = 0; line < bytes.size(); line += 16) {
        std::string hex;
        std::string text;
        for (std::size_t i = line; i < std::min(line + 16, bytes.size()); ++i) {
            char pair[4];
            (void)std::snprintf(pair, sizeof pair, "%02x ", bytes[i]);
            hex += pair;
            text += std::isprint(bytes[i]) != 0 ? static_cast<char>(bytes[i]) : '.';
        }
        hex.resize(48, ' ');
        char place[17];
        (void)std::snprintf(place, sizeof place, "%08zx", line);
        std::cout << place << "  " << hex << ' ' << text << '\n';
    }
}

std::string hex_of(const Bytes &bytes)
{
    constexpr char digits[] = "0123456789abcdef";
    std::string hex;
    for (const std::uint8_t byte : bytes) {
        hex += {digits[byte >> 4], digits[byte & 15]};
    }
    return hex;
}

} // namespace switchcfg::tool
