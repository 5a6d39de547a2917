// SPDX-License-Identifier: Apache-2.0
// The management network of a stack in one lab: the processor boards' addresses on an interface of the name they have
// on a switch.
#ifndef SWITCHCFG_TESTS_FEATURES_MPU_NETWORK_H
#define SWITCHCFG_TESTS_FEATURES_MPU_NETWORK_H

#include "support/command.h"

namespace switchcfg::testing {

// An empty text, or why it cannot be.
inline std::string make_network(const std::string &interface, std::initializer_list<const char *> addresses)
{
    std::string commands = "ip link add " + interface +
                           " type veth peer name far && ip link set far up && ip link set " + interface + " up";
    for (const char *const address : addresses) {
        commands += " && ip -6 addr add " + std::string{address} + "/64 dev " + interface + " nodad";
    }
    return run_command(commands).err;
}

} // namespace switchcfg::testing

#endif
