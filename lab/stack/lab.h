// SPDX-License-Identifier: Apache-2.0
// The first process of a lab of units: the bridges between them, the management station, and who has power.
#ifndef SWITCHCFG_LAB_STACK_LAB_H
#define SWITCHCFG_LAB_STACK_LAB_H

#include "lab/sandbox/inside.h"
#include "lab/stack/events.h"
#include "lab/stack/plan.h"

namespace switchlab {

// In a process of fresh namespaces. `commands` is a channel on which {"power": "on"|"off"|"cycle", "unit": N} arrives.
int run_lab(const LabPlan &plan, Inside &inside, const Events &events, int commands);

} // namespace switchlab

#endif
