// SPDX-License-Identifier: Apache-2.0
// Virtual links between network namespaces; everything throws a Refusal.
#ifndef SWITCHCFG_LAB_SANDBOX_LINKS_H
#define SWITCHCFG_LAB_SANDBOX_LINKS_H

#include <array>
#include <cstdint>
#include <string>
#include <sys/types.h>

namespace switchlab {

using Mac = std::array<std::uint8_t, 6>;

// In this network namespace. Without an address of its own it would change its address with its ports, and be missed
// by all who remember it.
void make_bridge(const std::string &name, const Mac &mac);

// A link from a port of the bridge, here, to the interface `name` in the network namespace of process `pid`.
struct VirtualLink {
    std::string bridge;
    std::string port;
    std::string name;
    Mac mac{};
};
// Takes the place of an earlier one on this port.
void join_to_bridge(const VirtualLink &link, pid_t pid);

// "ADDRESS/LENGTH", of either family, usable at once: nobody else can have it.
void add_address(const std::string &interface, const std::string &address);
// Without an address, a link-local one neither. Allows IPv6, whatever the machine's default is. Needs the namespace's
// own /proc.
void bring_up(const std::string &interface);

} // namespace switchlab

#endif
