// SPDX-License-Identifier: Apache-2.0
// A unit's model and its equipment record for code inside the library: one load from the status region and one from the
// table, no call.
#ifndef SWITCHCFG_EQUIP_RECORD_H
#define SWITCHCFG_EQUIP_RECORD_H

#include "core/status_region.h"

#include <switchcfg/equip.h>

namespace switchcfg {

// The same object as Equip_tq5200, under a name that is not reached through the GOT.
[[gnu::visibility("hidden")]] extern const cfg_equip_record equip_table[CFG_EQUIP_RECORDS];

inline constexpr bool unit_is_valid(std::uint32_t unit) noexcept
{
    return unit < status_layout::max_units;
}

// Of a valid unit. 0, no model, while the region is not mapped.
inline std::int32_t unit_model(std::uint32_t unit) noexcept
{
    const std::uint8_t *const region = status_base();
    if (region != nullptr) [[likely]] {
        return load(region, status_layout::hardware_model, unit);
    }
    return 0;
}

// Record 0 stands for every number that is no model's, a negative one included.
inline const cfg_equip_record &model_record(std::int32_t model) noexcept
{
    const auto index = static_cast<std::uint32_t>(model);
    if (index < CFG_EQUIP_RECORDS) [[likely]] {
        return equip_table[index];
    }
    return equip_table[0];
}

// Of a valid unit.
inline const cfg_equip_record &unit_record(std::uint32_t unit) noexcept
{
    return model_record(unit_model(unit));
}

// Whether a valid unit is in the stack.
inline bool unit_is_present(std::uint32_t unit) noexcept
{
    const std::uint8_t *const region = status_base();
    return region != nullptr && load(region, status_layout::unit_present, unit) != 0;
}

// The looser test: the unit is in the stack, or its chip's record is in use (it is joining or leaving).
inline bool unit_is_known(std::uint32_t unit) noexcept
{
    const std::uint8_t *const region = status_base();
    return region != nullptr && (load(region, status_layout::unit_present, unit) != 0 ||
                                    load(region, status_layout::subunit_mark, unit) != 0);
}

// What the switch as a whole supports: 2 when unit 0 has stacking ports, else 0.
inline int stacking_support() noexcept
{
    return unit_record(0).stack_ports != 0 ? 2 : 0;
}

} // namespace switchcfg

#endif
