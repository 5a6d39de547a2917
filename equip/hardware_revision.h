// SPDX-License-Identifier: Apache-2.0
// What the hardware version of a board says.
#ifndef SWITCHCFG_EQUIP_HARDWARE_REVISION_H
#define SWITCHCFG_EQUIP_HARDWARE_REVISION_H

#include "equip/unit_words.h"

namespace switchcfg {

// The second qualification of the boards changed parts.
inline bool is_quali2(int unit) noexcept
{
    return is_unit(unit) && hardware_version(unit) > 9;
}

} // namespace switchcfg

#endif
