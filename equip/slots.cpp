// SPDX-License-Identifier: Apache-2.0
// Bitmaps of the ports of a unit.
#include <switchcfg/ports.h>

#include "equip/model_set.h"
#include "equip/unit_words.h"

#include <cstring>

namespace switchcfg {
namespace {

struct Slot {
    std::uint64_t ports; // bit p is user port p
    std::uint64_t transceiver_ports;
};

constexpr Slot no_slot{0, 0};

// clang-format off
constexpr PerModel<Slot> slots{no_slot, {
    {"1 5 19-20 27-28 85",                    {0x000000000FFFFFFF, 0x000000000FFFFFFF}},
    {"2 4 21-22 25-26",                       {0x0000000003FFFFFF, 0x0000000003FFFFFF}},
    {"3 23-24",                               {0x0000000000FFFFFF, 0x0000000000FFFFFF}},
    {"6 8 29-30 33-34 47 49 52-53 56-57",     {0x0000000000FFFFFF, 0x0000000000F00000}},
    {"7 9 31-32 35-36 48 50 54-55 58-59 81 83", {0x0000000003FFFFFF, 0x0000000003F00000}},
    {"10 37-38 51 60-61 82 84",               {0x000000000FFFFFFF, 0x000000000FF00000}},
    {"11 13 39 41 62-63 66-67 78",            {0x0000FFFFFFFFFFFF, 0x0000F00000000000}},
    {"12 14 16-17 40 42 44-45 64-65 68-69 72-75 79", {0x0003FFFFFFFFFFFF, 0x0003F00000000000}},
    {"15 18 43 46 70-71 76-77 80",            {0x000FFFFFFFFFFFFF, 0x000FF00000000000}},
}};
// clang-format on

int slot_bitmap(int unit, uint32_t *pbmp, std::uint64_t Slot::*which) noexcept
{
    if (pbmp == nullptr) {
        return result::invalid_parameter;
    }
    std::memset(pbmp, 0, CFG_PBMP_WORDS * sizeof *pbmp);
    if (!is_unit(unit)) {
        return result::invalid_parameter;
    }
    const Slot &slot = slots[model_number(unit)];
    if (slot.ports == 0) {
        return result::unknown;
    }
    pbmp[0] = static_cast<std::uint32_t>(slot.*which);
    pbmp[1] = static_cast<std::uint32_t>((slot.*which) >> 32);
    return 0;
}

} // namespace
} // namespace switchcfg

using namespace switchcfg;

int cfg_equip_get_slot_pbmp_tq5200(int unit, uint32_t *pbmp) noexcept
{
    return slot_bitmap(unit, pbmp, &Slot::ports);
}

int cfg_equip_get_slot_pbmp_tcv_tq5200(int unit, uint32_t *pbmp) noexcept
{
    return slot_bitmap(unit, pbmp, &Slot::transceiver_ports);
}
