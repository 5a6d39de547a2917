// SPDX-License-Identifier: Apache-2.0
// Checks of what a user typed; those of numbers explain themselves in the error message.
#include <switchcfg/error.h>
#include <switchcfg/ports.h>

#include "equip/unit_words.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace {

using namespace switchcfg;
using result::invalid_parameter;
using result::invalid_unit_or_port;

constexpr int out_of_limits = -6;

// Sums of what a user typed and a step may leave the range of int; the message then shows the wrapped number.
constexpr int wrapping_sum(int a, int b) noexcept
{
    return static_cast<int>(static_cast<unsigned>(a) + static_cast<unsigned>(b));
}

} // namespace

int cfg_error_power_of_2(const char *what, int value, int min, int max) noexcept
{
    if (value < min || value > max) {
        return out_of_limits;
    }
    if (value > 0 && std::has_single_bit(static_cast<unsigned>(value))) {
        return 0;
    }
    int below = max;
    while (below != 0 && (below & value) == 0) {
        below /= 2;
    }
    if (below == 0) {
        return invalid_parameter; // nothing to recommend for 0 and below
    }
    (void)cfg_error_set_msg("The %s size must be power of 2. Use %d or %d", what, below, wrapping_sum(below, below));
    return invalid_parameter;
}

int cfg_error_granularity(const char *what, int value, int step, int min, int max) noexcept
{
    if (value < min || value > max) {
        return out_of_limits;
    }
    if (step == 0) {
        return invalid_parameter;
    }
    const int lower = step == -1 ? value : value / step * step; // INT_MIN / -1 has no result
    if (value == lower) {
        return 0;
    }
    (void)cfg_error_set_msg(
        "The %s must be multiple of %d. Use %d or %d", what, step, lower, wrapping_sum(lower, step));
    return invalid_parameter;
}

int cfg_error_valid_unit_pbmp(int unit, const std::uint32_t *pbmp) noexcept
{
    // A unit whose chip has reported counts before it has joined the stack.
    if (!is_unit(unit) || (!is_present(unit) && status_word(status_layout::subunit_mark, unit, 0) == 0)) {
        return invalid_unit_or_port;
    }
    std::uint32_t given = 0;
    for (int word = 0; word < CFG_PBMP_WORDS; ++word) {
        given |= pbmp[word];
    }
    if (given == 0) {
        return invalid_unit_or_port;
    }
    std::array<std::uint32_t, CFG_PBMP_WORDS> valid{};
    const int known = cfg_equip_get_slot_pbmp_tq5200(unit, valid.data());
    if (known < 0) {
        return known;
    }
    std::uint32_t beyond = 0;
    for (std::size_t word = 0; word < valid.size(); ++word) {
        beyond |= pbmp[word] & ~valid[word];
    }
    return beyond == 0 ? 0 : invalid_unit_or_port;
}

int cfg_error_complete_group_pbmp(int /*unit*/, ...) noexcept
{
    return 0; // no board of this family has ports that are configured in groups only
}
