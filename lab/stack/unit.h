// SPDX-License-Identifier: Apache-2.0
// One unit of the stack: its first process.
#ifndef SWITCHCFG_LAB_STACK_UNIT_H
#define SWITCHCFG_LAB_STACK_UNIT_H

#include "lab/sandbox/inside.h"
#include "lab/stack/events.h"
#include "lab/stack/plan.h"

namespace switchlab {

// What outlives the power of a unit, in the lab's own mounts: its flash.
std::string unit_store(const UnitPlan &unit);

// Exit statuses of a unit that did not just lose its power.
inline constexpr int unit_restarts = 20;
inline constexpr int unit_halted = 21;

struct UnitStart {
    const UnitPlan *plan;
    Inside *inside;
    int units;          // of the stack
    int expected_units; // that the stack has once this one is in it
    int links_made;     // gives a byte when the links are there
};

// In a process of fresh namespaces; for as long as the unit has power.
int run_unit(const UnitStart &start, const Events &events);

} // namespace switchlab

#endif
