// SPDX-License-Identifier: Apache-2.0
// The words that port numbering follows from, for units that the caller has checked. All read 0 while the regions are
// not mapped.
#ifndef SWITCHCFG_EQUIP_UNIT_WORDS_H
#define SWITCHCFG_EQUIP_UNIT_WORDS_H

#include "core/config_layout.h"
#include "core/config_region.h"
#include "core/status_layout.h"
#include "equip/model_set.h"
#include "equip/record.h"

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

template<typename T, typename... Index>
[[gnu::always_inline]] inline T status_word(const Field<T> &field, Index... index) noexcept
{
    const std::uint8_t *const region = status_base();
    return region != nullptr ? load(region, field, index...) : T{};
}

inline bool is_present(int unit) noexcept
{
    return unit_is_present(static_cast<unsigned>(unit));
}

inline std::int32_t model_number(int unit) noexcept
{
    return unit_model(static_cast<unsigned>(unit));
}

// The model that is there or, before it is there, the one that the unit is configured as.
inline std::int32_t expected_model_number(int unit) noexcept
{
    const std::int32_t model = model_number(unit);
    const std::uint8_t *const config = running_config;
    return model != 0 || config == nullptr ? model : load(config, config_layout::unit_provisioned_model, unit);
}

inline bool unit_is_one_of(int unit, const ModelSet &models) noexcept
{
    return is_unit(unit) && models.contains(model_number(unit));
}

} // namespace switchcfg

#endif
