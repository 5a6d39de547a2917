// SPDX-License-Identifier: Apache-2.0
// One piece of an mpls_printf format: plain text and at most one conversion that was given an argument.
#ifndef SWITCHCFG_FUNCLIST_MPLS_SUB_FORMAT_H
#define SWITCHCFG_FUNCLIST_MPLS_SUB_FORMAT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace switchcfg {

struct NoValue {};
using MplsValue = std::variant<NoValue, std::int32_t, double, const void *>;

// The piece printed with the value; nothing when the C library cannot print it. Safe with any piece: the first
// conversion that takes an argument prints the value where its kind fits, all others print zero.
std::optional<std::string> expand_mpls_piece(std::string_view piece, MplsValue value);

} // namespace switchcfg

#endif
