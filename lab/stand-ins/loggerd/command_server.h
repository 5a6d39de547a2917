// SPDX-License-Identifier: Apache-2.0
// The side of the logging daemon that answers commands.
#ifndef SWITCHCFG_LAB_STAND_INS_LOGGERD_COMMAND_SERVER_H
#define SWITCHCFG_LAB_STAND_INS_LOGGERD_COMMAND_SERVER_H

#include "lab/stand-ins/loggerd/journal.h"

namespace switchlab::loggerd {

// Serves the control port for ever; writes a byte to `ready_fd`, unless it is negative, once it does. Comes back only
// when the port cannot be had. A shutdown command ends the process.
void serve_commands(Journal &journal, int ready_fd);

} // namespace switchlab::loggerd

#endif
