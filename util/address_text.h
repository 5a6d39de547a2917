// SPDX-License-Identifier: Apache-2.0
// The one reader of dotted addresses.
#ifndef SWITCHCFG_UTIL_ADDRESS_TEXT_H
#define SWITCHCFG_UTIL_ADDRESS_TEXT_H

#include <array>

namespace switchcfg {

using DottedParts = std::array<unsigned long, 4>;

// Reads four parts that fill the text up to `end`, where a character stands that is no digit.
bool read_dotted(const char *text, const char *end, DottedParts &parts) noexcept;

} // namespace switchcfg

#endif
