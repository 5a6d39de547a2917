// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/error.h>

#include "bench/support/compare.h"

#include <array>
#include <cstdio>

namespace {

using namespace switchcfg::bench;

// The floor: an exported function that loads one entry of a table, reached as the library's own functions are. It is
// given the same codes, most of them negative.
std::array<const char *, 2048> table;

[[gnu::noinline, gnu::noipa]] const char *one_load(int code)
{
    return (table.data() + table.size() / 2)[code];
}

// Calls with the codes from `lowest` to below `lowest + count`, which is a power of 2 and divides `lowest`.
template<typename Call>
auto over_codes(int lowest, int count, Call call)
{
    return [call, lowest, mask = count - 1, code = lowest]() mutable {
        const auto result = call(code);
        code = ((code + 7 + static_cast<int>(zero_after(result))) & mask) | lowest;
        return result;
    };
}

void beside_one_load(benchmark::State &state, const char *title, int lowest, int count, auto function)
{
    compare(state, {title, "one table load, behind a call", 2}, over_codes(lowest, count, through_pointer(one_load)),
        over_codes(lowest, count, through_pointer(function)));
}

void error_message(benchmark::State &state)
{
    beside_one_load(state, "`cfg_strerror`", -512, 512, cfg_strerror);
}
SWITCHCFG_ROW(error_message);

void error_from_bcm(benchmark::State &state)
{
    beside_one_load(state, "error code of the switch chip's kit", -16, 16, cfg_error_from_bcm);
}
SWITCHCFG_ROW(error_from_bcm);

void error_from_stp(benchmark::State &state)
{
    beside_one_load(state, "error code of spanning tree", 0, 32, cfg_error_from_stp);
}
SWITCHCFG_ROW(error_from_stp);

void error_from_psm(benchmark::State &state)
{
    beside_one_load(state, "error code of the power-supply manager", -1004, 4, cfg_error_from_psm);
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
