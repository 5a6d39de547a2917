// SPDX-License-Identifier: Apache-2.0
// Which notification a queued trap is.
#ifndef SWITCHLAB_STAND_INS_AGENT_NOTIFICATIONS_H
#define SWITCHLAB_STAND_INS_AGENT_NOTIFICATIONS_H

#include <cstdint>

namespace switchlab::agent {

struct Notification {
    std::uint32_t id; // in the trap queue
    const char *name; // in packaging/mibs and the standard modules
    const char *oid;
};

// Null when nothing is known of the identifier.
const Notification *notification_of(std::uint32_t id);

} // namespace switchlab::agent

#endif
