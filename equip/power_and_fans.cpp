// SPDX-License-Identifier: Apache-2.0
// Power supplies, power over Ethernet and fans.
#include <switchcfg/ports.h>

#include "equip/model_lists.h"
#include "equip/port_layouts.h"
#include "equip/unit_words.h"

namespace switchcfg {
namespace {

constexpr std::int8_t unknown = result::unknown;

constexpr ModelSet dc_copper_48 = "78-80";
constexpr ModelSet pluggable_supply = "1-5 19-28 78-80 85";
constexpr ModelSet fixed_supply_48 = "11-18 39-46 62-77";
static_assert((models::family_24 | dc_copper_48) == pluggable_supply);
static_assert((models::family_48 - dc_copper_48) == fixed_supply_48);

// clang-format off
constexpr PerModel<std::int8_t> main_power_fixed{unknown, {
    {pluggable_supply,               0},
    {models::family_20 - models::poe, 0},
    {models::family_20 & models::poe, 1},
    {fixed_supply_48,                1},
}};

constexpr PerModel<std::int8_t> fan_control{unknown, {
    {pluggable_supply - dc_copper_48, 0},
    {models::family_20 - models::poe, 0},
    {models::family_20 & models::poe, 1},
    {fixed_supply_48 | dc_copper_48, 1},
}};

// The number of the last fan, counted from 0.
constexpr PerModel<std::int8_t> last_fan{unknown, {
    {models::family_24,              1},
    {models::family_20 - models::poe, 1},
    {models::family_20 & models::poe, 2},
    {models::family_48,              3},
}};
// clang-format on

} // namespace
} // namespace switchcfg

using namespace switchcfg;

int cfg_equip_has_poe_tq5200(int unit) noexcept
{
    return unit_is_one_of(unit, models::poe) ? 1 : 0;
}

int cfg_equip_is_main_power_fixed_tq5200(int unit) noexcept
{
    return is_unit(unit) ? main_power_fixed[model_number(unit)] : result::invalid_parameter;
}

int cfg_equip_has_fan_control_tq5200(int unit) noexcept
{
    return is_unit(unit) ? fan_control[model_number(unit)] : result::invalid_parameter;
}

int cfg_get_equip_fan_present_tq5200(int unit, int fan) noexcept
{
    if (!is_unit(unit)) {
        return result::invalid_parameter;
    }
    const std::int8_t last = last_fan[model_number(unit)];
    if (last == unknown) {
        return result::unknown;
    }
    return fan >= 0 && fan <= last ? 1 : 0;
}

int cfg_equip_get_max_num_fans_tq5200() noexcept
{
    const std::int8_t last = last_fan[model_number(0)];
    return last == unknown ? result::unknown : last + 1;
}
