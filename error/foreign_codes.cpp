// SPDX-License-Identifier: Apache-2.0
// The error numberings of the switch chip's driver, the spanning-tree engine, the power-supply manager and the process
// manager, translated.
#include <switchcfg/error.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace {

struct Row {
    int foreign;
    std::int8_t ours;
};

// clang-format off
constexpr Row sdk_rows[] = {
    {  0,   0},
    { -2,  -2}, // out of memory
    { -3,  -3}, // bad unit
    { -4,  -7}, // bad parameter
    { -6,  -9}, // table full
    { -7,  -8}, // not found
    { -8,  -5}, // exists
    {-14,  -2}, // no resources
    {-15, -42}, // bad configuration
    {-16, -43}, // feature not available
    {-18,  -3}, // bad port
};
constexpr Row psm_rows[] = {
    {-1001,  -1},
    {-1002,  -7},
    {-1003,  -1},
    {-1004,  -8},
    {-1005,  -7},
    {-1006, -10},
};
constexpr Row pm_rows[] = {
    {-1, -37}, // no answer
    {-2,  -8}, // no such process
    {-3, -43}, // disabled
    {-4, -43}, // no such command
    {-5,  -2}, // cannot be started, or listed
    {-6,  -8}, // no process of that name
    {-7,  -7}, // the caller itself
};
// clang-format on

// A translation indexed directly with (first - code); the foreign codes go down from `first`.
template<int First, std::size_t Size>
struct Translation {
    std::array<std::int8_t, Size> ours;
    std::int8_t unknown;

    template<std::size_t Rows>
    constexpr Translation(const Row (&rows)[Rows], std::int8_t for_unknown) noexcept : ours{}, unknown(for_unknown)
    {
        ours.fill(for_unknown);
        for (const Row &row : rows) {
            ours[static_cast<std::size_t>(First - row.foreign)] = row.ours;
        }
    }

    int operator()(int code) const noexcept
    {
        const unsigned index = static_cast<unsigned>(First) - static_cast<unsigned>(code);
        return index < Size ? ours[index] : unknown;
    }
};

constexpr Translation<0, 19> from_sdk{sdk_rows, -10};
constexpr Translation<-1001, 6> from_psm{psm_rows, -1};
constexpr Translation<-1, 7> from_pm{pm_rows, -1};

} // namespace

int cfg_error_from_bcm(int sdk_code) noexcept
{
    return from_sdk(sdk_code);
}

int cfg_error_from_stp(int stp_code) noexcept
{
    // The engine's codes 1 to 32 have a block of ours to themselves, -60 to -91, in the same order.
    if (stp_code == 0) {
        return 0;
    }
    return stp_code >= 1 && stp_code <= 32 ? -(59 + stp_code) : -1;
}

int cfg_error_from_psm(int psm_code) noexcept
{
    return from_psm(psm_code);
}

int cfg_pmg_err_code_translate(int pm_code) noexcept
{
    return pm_code >= 0 ? 0 : from_pm(pm_code);
}
