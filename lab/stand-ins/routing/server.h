// SPDX-License-Identifier: Apache-2.0
// One connection of the lab's routing stack: commands in, replies out.
#ifndef SWITCHCFG_LAB_STAND_INS_ROUTING_SERVER_H
#define SWITCHCFG_LAB_STAND_INS_ROUTING_SERVER_H

#include "lab/stand-ins/routing/faults.h"
#include "lab/stand-ins/routing/table.h"

namespace switchlab::routing {

// Serves the connection until either side ends it, and closes it.
void serve_connection(int fd, RouteTable &table, Faults &faults);

} // namespace switchlab::routing

#endif
