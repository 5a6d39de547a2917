// SPDX-License-Identifier: Apache-2.0
// The configuration of the stack: every unit has its own copy of both regions, the master's is the one that counts.
//
// A unit that joins gets the master's whole content. From then on a change on any unit goes to the master, and from it
// to all in one order, so that all end up with the same.
#ifndef SWITCHCFG_LAB_STACKD_CONFIGURATION_H
#define SWITCHCFG_LAB_STACKD_CONFIGURATION_H

#include "lab/stackd/link.h"
#include "lab/stackd/replica.h"

#include <list>
#include <netinet/in.h>
#include <optional>
#include <poll.h>
#include <vector>

namespace switchlab::stackd {

class Configuration {
  public:
    // Listens on this link-local address; throws std::runtime_error.
    explicit Configuration(const sockaddr_in6 &own_address);

    std::uint64_t generation() const { return generation_; } // changes that the stack has seen

    // Whether this unit has all that the unit at this address has, as its follower.
    bool in_step_with(const sockaddr_in6 &unit) const;

    // With no address this unit is the master itself.
    void follow(const std::optional<sockaddr_in6> &master);

    // Looks for changes made on this unit. Gives the time this took, in microseconds.
    std::uint64_t look();

    void add_to_poll(std::vector<pollfd> &awaited) const;
    void serve(); // whatever has happened on the sockets

  private:
    void admit_members();
    void send_snapshot(Link &member);
    bool take_from_member(const Frame &frame);
    bool take_from_master(const Frame &frame);
    void publish(std::uint32_t region, std::uint32_t offset, Bytes bytes);

    switchcfg::Descriptor listener_;
    std::vector<Replica> regions_;
    std::list<Link> members_;
    std::optional<sockaddr_in6> master_address_;
    std::optional<Link> master_;
    std::uint64_t next_try_ = 0; // hundredths of a second
    bool in_step_ = false;       // the master's snapshots have arrived
    std::uint64_t generation_ = 0;
};

} // namespace switchlab::stackd

#endif
