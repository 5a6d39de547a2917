// SPDX-License-Identifier: Apache-2.0
// Lists of models that more than one file asks.
#ifndef SWITCHCFG_EQUIP_MODEL_LISTS_H
#define SWITCHCFG_EQUIP_MODEL_LISTS_H

#include "equip/model_set.h"

namespace switchcfg::models {

inline constexpr ModelSet poe_24_ports = "47-61 83-84";
inline constexpr ModelSet poe_48_ports = "62-77";
inline constexpr ModelSet poe = poe_24_ports | poe_48_ports;

} // namespace switchcfg::models

#endif
