// SPDX-License-Identifier: Apache-2.0
// Bitmaps of the ports of a unit.
#include <switchcfg/ports.h>

#include "equip/model_set.h"
#include "equip/unit_words.h"

#include <cstring>

namespace switchcfg {
namespace {

// The ports of a board count from 0, and its transceiver ports are the last ones.
struct Slot {
    std::uint8_t ports;
    std::uint8_t first_transceiver;
};

constexpr Slot no_slot{0, 0};

// clang-format off
constexpr PerModel<Slot> slots{no_slot, {
    {"3 23-24",                                      {24, 0}},
    {"2 4 21-22 25-26",                              {26, 0}},
    {"1 5 19-20 27-28 85",                           {28, 0}},
    {"6 8 29-30 33-34 47 49 52-53 56-57",            {24, 20}},
    {"7 9 31-32 35-36 48 50 54-55 58-59 81 83",      {26, 20}},
    {"10 37-38 51 60-61 82 84",                      {28, 20}},
    {"11 13 39 41 62-63 66-67 78",                   {48, 44}},
    {"12 14 16-17 40 42 44-45 64-65 68-69 72-75 79", {50, 44}},
    {"15 18 43 46 70-71 76-77 80",                   {52, 44}},
}};
// clang-format on

constexpr std::uint64_t ports_below(int port) noexcept
{
    return (std::uint64_t{1} << port) - 1;
}

int slot_bitmap(int unit, uint32_t *pbmp, bool transceivers_only) noexcept
{
    if (pbmp == nullptr) {
        return result::invalid_parameter;
    }
    std::memset(pbmp, 0, CFG_PBMP_WORDS * sizeof *pbmp);
    if (!is_unit(unit)) {
        return result::invalid_parameter;
    }
    const Slot slot = slots[model_number(unit)];
    if (slot.ports == 0) {
        return result::unknown;
    }
    const std::uint64_t ports = ports_below(slot.ports) & ~ports_below(transceivers_only ? slot.first_transceiver : 0);
    pbmp[0] = static_cast<std::uint32_t>(ports);
    pbmp[1] = static_cast<std::uint32_t>(ports >> 32);
    return 0;
}

} // namespace
} // namespace switchcfg

using namespace switchcfg;

int cfg_equip_get_slot_pbmp_tq5200(int unit, uint32_t *pbmp) noexcept
{
    return slot_bitmap(unit, pbmp, false);
}

int cfg_equip_get_slot_pbmp_tcv_tq5200(int unit, uint32_t *pbmp) noexcept
{
    return slot_bitmap(unit, pbmp, true);
}
