// SPDX-License-Identifier: Apache-2.0
// The static routes of the lab's routing stack. Shared by the threads that serve connections.
#ifndef SWITCHCFG_LAB_STAND_INS_ROUTING_TABLE_H
#define SWITCHCFG_LAB_STAND_INS_ROUTING_TABLE_H

#include "lab/stand-ins/routing/route.h"

#include <mutex>
#include <optional>
#include <set>
#include <vector>

namespace switchlab::routing {

class RouteTable {
  public:
    explicit RouteTable(std::size_t limit) : limit_(limit) {}
    bool add(const Route &route); // false when the table is full; adding what is there succeeds
    bool remove(const Route &route);
    std::optional<Route> best_for(std::uint32_t address) const; // longest prefix, then smallest distance
    std::vector<Route> all() const;

  private:
    mutable std::mutex mutex_;
    std::size_t limit_;
    std::set<Route> routes_;
};

} // namespace switchlab::routing

#endif
