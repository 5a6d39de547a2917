// SPDX-License-Identifier: Apache-2.0
#ifndef SWITCHCFG_UTIL_DIGITS_H
#define SWITCHCFG_UTIL_DIGITS_H

namespace switchcfg {

// Decimal digits in every locale.
constexpr bool is_digit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

} // namespace switchcfg

#endif
