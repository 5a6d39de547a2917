// SPDX-License-Identifier: Apache-2.0
// Who else is on the stacking link. Each unit says a few times per second, to all, what it is; who falls silent is
// gone.
#ifndef SWITCHCFG_LAB_STACKD_NEIGHBOURS_H
#define SWITCHCFG_LAB_STACKD_NEIGHBOURS_H

#include "util/owned.h"

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <netinet/in.h>
#include <string>

namespace switchlab::stackd {

struct UnitFacts {
    int unit = 0;
    int model = 0;
    int version = 0;
    std::array<std::uint8_t, 6> mac{};
    std::uint64_t generation = 0; // of the configuration that it has
};

struct Neighbour {
    UnitFacts facts;
    sockaddr_in6 address{};
    std::uint64_t heard_at = 0; // hundredths of a second
};

class Neighbours {
  public:
    // Opens the socket on this interface; throws std::runtime_error.
    explicit Neighbours(const std::string &interface);

    int socket() const { return socket_.get(); }
    const sockaddr_in6 &own_address() const { return own_address_; }
    const std::array<std::uint8_t, 6> &own_mac() const { return mac_; }
    const std::map<int, Neighbour> &all() const { return all_; }

    void say(const UnitFacts &facts) const;
    // Takes in what has arrived; `joined` is called for each unit that was not known.
    void listen(int own_unit, const std::function<void(const UnitFacts &)> &joined);
    // Forgets who has been silent.
    void forget_silent(const std::function<void(const UnitFacts &)> &left);

  private:
    void find_interface(const std::string &name);

    switchcfg::Descriptor socket_;
    std::array<std::uint8_t, 6> mac_{};
    sockaddr_in6 own_address_{};
    std::map<int, Neighbour> all_;
};

} // namespace switchlab::stackd

#endif
