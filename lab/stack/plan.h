// SPDX-License-Identifier: Apache-2.0
// What a lab with whole units is to be: the units, their models and their addresses. docs/lab.md has the plan of
// addresses.
#ifndef SWITCHCFG_LAB_STACK_PLAN_H
#define SWITCHCFG_LAB_STACK_PLAN_H

#include "lab/sandbox/links.h"

#include <string>
#include <string_view>
#include <vector>

namespace switchlab {

inline constexpr int most_units = 8;
inline constexpr char stacking_interface[] = "atp";
inline constexpr char station_address[] = "10.0.0.1";

struct UnitPlan {
    int number = 0;
    int model = 0; // of the equipment table
    std::string model_name;
    Mac mac{};                        // the unit's base address, and that of its stacking link
    std::string management_interface; // out of band, with `management`
    std::string management;           // IPv4
    std::string control_interface;    // VLAN 3 of the management link, with `control`
    std::vector<std::string> control; // one for each of two processor boards
    std::string stacking;             // link-local, of the stacking link
    std::string host_name() const { return "unit" + std::to_string(number); }
};

struct LabPlan {
    std::string name;
    std::vector<std::string> keep;
    std::vector<UnitPlan> units;
};

// `models` are numbers or names of the equipment table, in any case; what is missing of `count` units (0: as many as
// there are models, at least 1) gets models that show different boards. Throws a Refusal.
std::vector<UnitPlan> plan_units(int count, const std::vector<std::string> &models);

} // namespace switchlab

#endif
