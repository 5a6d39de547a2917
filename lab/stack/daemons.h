// SPDX-License-Identifier: Apache-2.0
// The daemons of a unit: what its process manager runs.
#ifndef SWITCHCFG_LAB_STACK_DAEMONS_H
#define SWITCHCFG_LAB_STACK_DAEMONS_H

#include "lab/stack/plan.h"

#include <string>
#include <vector>

namespace switchlab {

struct Daemon {
    std::string name;  // the process manager's
    std::string state; // "enabled" or "disabled", in its list
    std::string program;
    std::string command;
    int port; // where it listens once it serves, on TCP; 0 for nowhere
};

// Those that are built and installed; `units` is how many the stack has.
std::vector<Daemon> daemons_of(const UnitPlan &unit, int units);

// In the process manager's form.
std::string process_list(const std::vector<Daemon> &daemons);

// In the network namespace of this process.
bool somebody_listens(int tcp_port);

} // namespace switchlab

#endif
