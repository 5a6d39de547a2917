// SPDX-License-Identifier: Apache-2.0
#include "tools/call/payload.h"

#include "tools/command_line/failure.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string_view>
#include <unistd.h>

namespace switchcfg::tool {
namespace {

std::string read_all(std::istream &stream)
{
    return {std::istreambuf_iterator<char>{stream}, {}};
}

bool read_hex(std::string_view digits, std::string &bytes)
{
    if (digits.starts_with("0x")) {
        digits.remove_prefix(2);
    }
    if (digits.empty() || digits.size() % 2 != 0) {
        return false;
    }
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        unsigned char byte = 0;
        const char *const pair_end = digits.data() + i + 2;
        const auto [end, error] = std::from_chars(digits.data() + i, pair_end, byte, 16);
        if (error != std::errc{} || end != pair_end) {
            return false;
        }
        bytes += static_cast<char>(byte);
    }
    return true;
}

bool is_printable(char c)
{
    const auto code = static_cast<unsigned char>(c); // the target's char has no sign
    return code >= ' ' && code < 0x7f;
}

} // namespace

std::string read_input(const std::string &from)
{
    constexpr std::string_view text = "text:";
    if (from.starts_with(text)) {
        return from.substr(text.size());
    }
    if (from == "-") {
        return read_all(std::cin);
    }
    if (::access(from.c_str(), F_OK) == 0) {
        std::ifstream file{from, std::ios::binary};
        std::string bytes = read_all(file);
        if (!file.good() && !file.eof()) {
            throw system_failure(from, "read");
        }
        return bytes;
    }
    std::string bytes;
    if (!read_hex(from, bytes)) {
        throw Failure{"--input " + from + ": neither a file nor hexadecimal bytes nor text:TEXT"};
    }
    return bytes;
}

void write_output(const std::string &to, const std::string &bytes)
{
    if (to == "-") {
        std::cout << bytes << std::flush;
        return;
    }
    std::ofstream file{to, std::ios::binary | std::ios::trunc};
    if (!(file << bytes << std::flush)) {
        throw system_failure(to, "write");
    }
}

bool is_text(const std::string &bytes)
{
    std::string_view text = bytes;
    if (text.ends_with('\0')) {
        text.remove_suffix(1);
    }
    return !text.empty() &&
           std::ranges::all_of(text, [](char c) { return is_printable(c) || c == '\n' || c == '\t' || c == '\r'; });
}

std::string to_hex(const std::string &bytes)
{
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const char c : bytes) {
        text += digits[static_cast<unsigned char>(c) >> 4];
        text += digits[static_cast<unsigned char>(c) & 15];
    }
    return text;
}

std::string hex_dump(const std::string &bytes)
{
    constexpr std::size_t row = 16;
    std::string text;
    for (std::size_t at = 0; at < bytes.size(); at += row) {
        const std::string line = bytes.substr(at, row);
        char offset[24];
        (void)std::snprintf(offset, sizeof offset, "%08zx ", at);
        text += offset;
        for (std::size_t i = 0; i < row; ++i) {
            text += i < line.size() ? " " + to_hex(line.substr(i, 1)) : "   ";
        }
        text += "  ";
        for (const char c : line) {
            text += is_printable(c) ? c : '.';
        }
        text += '\n';
    }
    return text;
}

} // namespace switchcfg::tool
