// SPDX-License-Identifier: Apache-2.0
// What must hold whatever has happened.
#ifndef SWITCHCFG_SOAK_INSPECTION_H
#define SWITCHCFG_SOAK_INSPECTION_H

#include "soak/shared.h"

#include <map>
#include <string>
#include <vector>

namespace switchcfg::soak {

class Inspection {
  public:
    explicit Inspection(Shared &shared) : shared_(shared) {}

    // At any time between two faults.
    void glance();
    // With the clients at rest; waits for the daemons that are being started again. The first one, before any fault,
    // says what is normal.
    void thorough();

    int glances() const { return glances_; }
    int thoroughs() const { return thoroughs_; }
    // What was open at most in a process of that name, while all was at rest.
    const std::map<std::string, int> &descriptors() const { return most_descriptors_; }

  private:
    void region_sizes();
    void queue();
    bool clients_rest();
    void processes_are_back();
    void queue_drains();
    void locks_are_free();
    void no_descriptor_is_left();
    void lines_stay_in_flash();
    void calls_succeed();

    Shared &shared_;
    bool first_ = true;
    int glances_ = 0;
    int thoroughs_ = 0;
    std::map<std::string, int> normal_processes_;
    std::map<std::string, int> normal_descriptors_;
    std::map<std::string, int> most_descriptors_;
    std::array<std::uint64_t, calls.size()> done_before_{};
};

} // namespace switchcfg::soak

#endif
