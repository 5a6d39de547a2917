// SPDX-License-Identifier: Apache-2.0
// Models and units as people name them on the command line.
#ifndef SWITCHCFG_TOOLS_MODELS_H
#define SWITCHCFG_TOOLS_MODELS_H

#include <cstdint>
#include <string>
#include <vector>

namespace switchcfg::tool {

// The mapped status region, after attaching. Throws Failure.
std::uint8_t *status_of_switch();

// A model number, 1 to 85, from the number or the name in any case; throws Failure.
int model_by_name(const std::string &text);
std::vector<int> models_by_names(const std::string &list); // separated by commas

// As cfg_equip_get_name_tq5200() prints it.
std::string model_name_of(int model, int unit);

// Throws Failure naming the unit when it is not 0 to 7.
void check_unit(int unit);

std::string mac_text(const std::uint8_t *mac);

} // namespace switchcfg::tool

#endif
