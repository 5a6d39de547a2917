// SPDX-License-Identifier: Apache-2.0
// Bytes as hexadecimal text.
#ifndef SWITCHCFG_TOOLS_HEX_TEXT_H
#define SWITCHCFG_TOOLS_HEX_TEXT_H

#include <cstdint>
#include <string>
#include <vector>

namespace switchcfg::tool {

using Bytes = std::vector<std::uint8_t>;

// Digits in pairs; blanks, colons and dashes between pairs are for the reader. Throws Failure.
Bytes bytes_of_hex(const std::string &text);

std::string hex_of(const Bytes &bytes);

// Sixteen bytes to a line: place, digits, characters.
void print_dump(const Bytes &bytes);

} // namespace switchcfg::tool

#endif
