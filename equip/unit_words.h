// SPDX-License-Identifier: Apache-2.0
// The words of a unit that its port numbering follows from. Callers check the unit first.
#ifndef SWITCHCFG_EQUIP_UNIT_WORDS_H
#define SWITCHCFG_EQUIP_UNIT_WORDS_H

#include "core/config_layout.h"
#include "core/config_region.h"
#include "core/status_layout.h"
#include "core/status_region.h"
#include "equip/equipment_table.h"
#include "equip/model_set.h"

namespace switchcfg {

namespace result {
inline constexpr int unknown = -1;
inline constexpr int invalid_unit_or_port = -3;
inline constexpr int invalid_parameter = -7;
inline constexpr int not_found = -8;
inline constexpr int unavailable = -43;
} // namespace result

inline constexpr int unit_count = static_cast<int>(status_layout::max_units);

constexpr bool is_unit(int unit) noexcept
{
    return static_cast<unsigned>(unit) < static_cast<unsigned>(unit_count);
}

inline bool is_present(int unit) noexcept
{
    return load(status_base(), status_layout::unit_present, unit) != 0;
}

// Present, or at least known to the stack by its first chip.
inline bool is_known_to_stack(int unit) noexcept
{
    return is_present(unit) || load(status_base(), status_layout::subunit_mark, unit, 0) != 0;
}

inline std::int32_t hardware_version(int unit) noexcept
{
    return load(status_base(), status_layout::hardware_version, unit);
}

inline std::int32_t model_number(int unit) noexcept
{
    return load(status_base(), status_layout::hardware_model, unit);
}

// The model that is there or, before it is there, the one that the unit is configured as.
inline std::int32_t expected_model_number(int unit) noexcept
{
    const std::int32_t model = model_number(unit);
    if (model != 0 || running_config() == nullptr) {
        return model;
    }
    return load(running_config(), config_layout::unit_provisioned_model, unit);
}

inline bool unit_is_one_of(int unit, const ModelSet &models) noexcept
{
    return is_unit(unit) && models.contains(model_number(unit));
}

} // namespace switchcfg

#endif
