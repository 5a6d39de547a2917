// SPDX-License-Identifier: Apache-2.0
// Range checks that explain themselves in the error message.
#include <switchcfg/error.h>

#include <bit>

namespace {

constexpr int out_of_limits = -6;
constexpr int invalid_parameter = -7;

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
