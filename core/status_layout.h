// SPDX-License-Identifier: Apache-2.0
// Every named field of the status region. A new region is all zero bytes; words are in the processor's own byte order.
// What is not named here belongs to the daemons that write it.
//
// The names are the ones that `switchcfg status` prints and takes.
#ifndef SWITCHCFG_CORE_STATUS_LAYOUT_H
#define SWITCHCFG_CORE_STATUS_LAYOUT_H

#include "core/field.h"

namespace switchcfg::status_layout {

inline constexpr std::uint32_t size = 11272288;
inline constexpr std::uint32_t max_units = 8;

inline constexpr Dimension per_unit{max_units, 8000};

// clang-format off
inline constexpr Field<std::int32_t>  unit_present{"unit.present", 48, "non-zero when the unit is in the stack", per_unit};
inline constexpr Field<std::int32_t>  unit_subunits{"unit.subunits", 52, "switch chips reported for the unit", per_unit};

inline constexpr Field<std::uint32_t> max_unit_count{"stack.max_units", 9593692, "most units the stack may have"};
// clang-format on

inline constexpr FieldInfo fields[] = {
    unit_present,
    unit_subunits,
    max_unit_count,
};

} // namespace switchcfg::status_layout

#endif
