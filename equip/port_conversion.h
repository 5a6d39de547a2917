// SPDX-License-Identifier: Apache-2.0
// The conversion of one user port, for the rest of the library.
#ifndef SWITCHCFG_EQUIP_PORT_CONVERSION_H
#define SWITCHCFG_EQUIP_PORT_CONVERSION_H

namespace switchcfg {

// As cfg_equip_user_to_phys_port_tq5200(), with both out-arguments given.
[[gnu::visibility("hidden")]] int user_to_chip_port(int unit, int user_port, int &module, int &chip_port) noexcept;

// As cfg_equip_phys_to_user_port_tq5200(), with both out-arguments given.
[[gnu::visibility("hidden")]] int chip_to_user_port(int module, int chip_port, int &unit, int &user_port) noexcept;

} // namespace switchcfg

#endif
