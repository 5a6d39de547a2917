// SPDX-License-Identifier: Apache-2.0
// What the daemons of a unit announce in the status region.
#ifndef SWITCHCFG_TOOLS_STACK_UNITS_H
#define SWITCHCFG_TOOLS_STACK_UNITS_H

#include <array>
#include <cstdint>

namespace switchcfg::tool {

struct UnitHardware {
    int model; // of the equipment table
    int version;
    std::array<std::uint8_t, 6> mac;
    bool plugged; // a transceiver in every cage
};

// The unit as its daemons would announce it: the chip has port 0 to the processor, modids in pairs from 2 x unit on,
// and the unit's number as its physical unit and module identifier. It becomes present last.
void announce_unit(std::uint8_t *region, int unit, const UnitHardware &hardware);

// Takes everything back. The model can stay known, as it does while a unit restarts.
enum class Remember : bool { nothing, model };
void withdraw_unit(std::uint8_t *region, int unit, Remember remember = Remember::nothing);

} // namespace switchcfg::tool

#endif
