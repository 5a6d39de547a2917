// SPDX-License-Identifier: Apache-2.0
#include "lab/stand-ins/routing/table.h"

namespace switchlab::routing {

bool RouteTable::add(const Route &route)
{
    const std::lock_guard lock{mutex_};
    if (routes_.size() >= limit_ && !routes_.contains(route)) {
        return false;
    }
    routes_.insert(route);
    return true;
}

bool RouteTable::remove(const Route &route)
{
    const std::lock_guard lock{mutex_};
    return routes_.erase(route) != 0;
}

std::optional<Route> RouteTable::best_for(std::uint32_t address) const
{
    const std::lock_guard lock{mutex_};
    std::optional<Route> best;
    for (const Route &route : routes_) {
        const bool covers = (address & route.mask()) == route.address;
        if (covers && (!best || route.prefix_length > best->prefix_length ||
                          (route.prefix_length == best->prefix_length && route.distance < best->distance))) {
            best = route;
        }
    }
    return best;
}

std::vector<Route> RouteTable::all() const
{
    const std::lock_guard lock{mutex_};
    return {routes_.begin(), routes_.end()};
}

} // namespace switchlab::routing
