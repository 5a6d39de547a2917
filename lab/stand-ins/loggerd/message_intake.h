// SPDX-License-Identifier: Apache-2.0
// The side of the logging daemon that takes messages.
#ifndef SWITCHCFG_LAB_STAND_INS_LOGGERD_MESSAGE_INTAKE_H
#define SWITCHCFG_LAB_STAND_INS_LOGGERD_MESSAGE_INTAKE_H

#include "lab/stand-ins/loggerd/journal.h"

namespace switchlab::loggerd {

// Takes messages from the listening socket for ever. Any number of senders may be stuck: each has its own time-out and
// none holds up another.
[[noreturn]] void take_messages(int listener, Journal &journal);

} // namespace switchlab::loggerd

#endif
