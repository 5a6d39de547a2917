// SPDX-License-Identifier: Apache-2.0
// The management station: receives the notifications of all units.
#ifndef SWITCHCFG_LAB_STACK_STATION_H
#define SWITCHCFG_LAB_STACK_STATION_H

#include "lab/sandbox/inside.h"
#include "lab/stack/events.h"

namespace switchlab {

inline constexpr char notification_log[] = "/var/log/notifications.log";

// In a process of fresh namespaces, but in the network of the lab; for as long as the lab lives.
int run_station(Inside &inside, const Events &events);

} // namespace switchlab

#endif
