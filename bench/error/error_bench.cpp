// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/error.h>

#include "bench/support/compare.h"

#include <array>
#include <cstdio>

namespace {

using namespace switchcfg::bench;

// The floor: an exported function that loads one entry of a table, reached as the library's own functions are.
std::array<const char *, 512> table;

[[gnu::noinline, gnu::noipa]] const char *one_load(unsigned index)
{
    return table[index];
}

// Calls with numbers from 0 to below `count`, a power of 2.
template<typename Call>
auto over_numbers(unsigned count, Call call)
{
    return [call, mask = count - 1, number = 0U]() mutable {
        const auto result = call(number);
        number = (number + 7 + zero_after(result)) & mask;
        return result;
    };
}

template<typename Call>
void beside_one_load(benchmark::State &state, const char *title, unsigned count, Call call)
{
    compare(state, {title, "one table load, behind a call", 2}, over_numbers(count, through_pointer(one_load)),
        over_numbers(count, call));
}

void error_message(benchmark::State &state)
{
    beside_one_load(state, "`cfg_strerror`", 512,
        [call = through_pointer(cfg_strerror)](unsigned code) { return call(-static_cast<int>(code)); });
}
SWITCHCFG_ROW(error_message);

void error_from_bcm(benchmark::State &state)
{
    beside_one_load(state, "error code of the switch chip's kit", 16,
        [call = through_pointer(cfg_error_from_bcm)](unsigned code) { return call(-static_cast<int>(code)); });
}
SWITCHCFG_ROW(error_from_bcm);

void error_from_stp(benchmark::State &state)
{
    beside_one_load(state, "error code of spanning tree", 32,
        [call = through_pointer(cfg_error_from_stp)](unsigned code) { return call(static_cast<int>(code)); });
}
SWITCHCFG_ROW(error_from_stp);

void error_from_psm(benchmark::State &state)
{
    beside_one_load(state, "error code of the power-supply manager", 4,
        [call = through_pointer(cfg_error_from_psm)](unsigned code) { return call(-1001 - static_cast<int>(code)); });
}
SWITCHCFG_ROW(error_from_psm);

void error_text(benchmark::State &state)
{
    char text[256];
    int number = 0;
    cfg_set_error_msg_enable(1);
    compare(
        state, {"message on the error channel", "one snprintf"},
        [&] { return std::snprintf(text, sizeof text, "Port %d is not of unit %d", ++number, 3); },
        [&] { return cfg_error_set_msg("Port %d is not of unit %d", ++number, 3); });
}
SWITCHCFG_ROW(error_text);

} // namespace
