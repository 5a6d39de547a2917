// SPDX-License-Identifier: Apache-2.0
// What the hardware version of a board says.
#ifndef SWITCHCFG_EQUIP_HARDWARE_REVISION_H
#define SWITCHCFG_EQUIP_HARDWARE_REVISION_H

#include "equip/unit_words.h"

namespace switchcfg {

inline std::int32_t hardware_version(int unit) noexcept
{
    return status_word(status_layout::hardware_version, unit);
}

// The second qualification of the boards changed parts.
inline bool is_quali2(int unit) noexcept
{
    return is_unit(unit) && hardware_version(unit) > 9;
}

} // namespace switchcfg

#endif
