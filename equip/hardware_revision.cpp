// SPDX-License-Identifier: Apache-2.0
// Predicates over the hardware version of a board.
#include "equip/hardware_revision.h"

#include <switchcfg/ports.h>

namespace switchcfg {
namespace {

constexpr ModelSet never_part2 = "5 27-28";
constexpr ModelSet always_part3 = "85";
constexpr ModelSet part3_by_version = "13-15 19-20 25-26 29 33-38 41-43 56 58 60 66 68 70";

bool newer_than(int unit, std::int32_t version) noexcept
{
    return is_unit(unit) && hardware_version(unit) > version;
}

} // namespace
} // namespace switchcfg

using namespace switchcfg;

int cfg_equip_is_quali2_tq5200(int unit) noexcept
{
    return is_quali2(unit) ? 1 : 0;
}

int cfg_equip_is_quali2_part2_tq5200(int unit) noexcept
{
    if (!is_unit(unit)) {
        return result::invalid_parameter;
    }
    return !never_part2.contains(model_number(unit)) && is_quali2(unit) ? 1 : 0;
}

int cfg_equip_is_quali2_part3_tq5200(int unit) noexcept
{
    if (!is_unit(unit)) {
        return result::invalid_parameter;
    }
    const std::int32_t model = model_number(unit);
    return always_part3.contains(model) || (part3_by_version.contains(model) && is_quali2(unit)) ? 1 : 0;
}

int cfg_equip_is_quali1_with_bcc_ech_5200(int unit) noexcept
{
    if (is_quali2(0) || !is_unit(unit)) { // unit 0 decides the qualification for the whole stack
        return 0;
    }
    return status_word(status_layout::hardware_bcc_ech, unit) != 0 ? 1 : 0;
}

int cfg_equip_has_ecc4bit_tq5200(int unit) noexcept
{
    return is_quali2(unit) ? 1 : 0;
}

int cfg_equip_has_usb_console_tq5200(int unit) noexcept
{
    return newer_than(unit, 5) ? 1 : 0;
}

int cfg_equip_has_non_inverted_ddr_spd_tq5200(int unit) noexcept
{
    // Boards that are not known are taken for new ones.
    return !unit_is_one_of(unit, all_models) || newer_than(unit, 5) ? 1 : 0;
}

int cfg_equip_has_spd_v13_tq5200(int unit) noexcept
{
    return newer_than(unit, 7) ? 1 : 0;
}
