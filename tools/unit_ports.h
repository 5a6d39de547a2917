// SPDX-License-Identifier: Apache-2.0
// Everything the port numbering says of the ports of one unit, gathered for printing and drawing.
#ifndef SWITCHCFG_TOOLS_UNIT_PORTS_H
#define SWITCHCFG_TOOLS_UNIT_PORTS_H

#include "tools/command_line/output.h"

#include <optional>
#include <string>
#include <vector>

namespace switchcfg::tool {

enum class PortKind { copper, combo, sfp, xfp, sfp_plus, stacking };

struct PortFacts {
    int port; // user port, from 0
    PortKind kind;
    std::optional<int> speed; // Mbit/s; follows the board alone, so not known before it is there
    std::optional<int> module;
    std::optional<int> chip_port;
    std::optional<int> led; // known for unit 0 alone
    bool cage;              // takes a transceiver
    bool plugged;
    std::optional<int> stacking_id;

    int front_label() const { return port + 1; } // as printed on the box
    bool copper_in_use() const { return kind == PortKind::copper || (kind == PortKind::combo && !plugged); }
};

struct UnitPorts {
    int unit;
    int model;
    std::string name;
    bool provisioned; // the unit is not there: its ports follow from what it is to be, and have no chip ports yet
    int copper_sockets;
    std::vector<PortFacts> ports;
};

// Throws Failure for a bad unit and for one without a known model.
UnitPorts ports_of(int unit);

const char *kind_name(PortKind kind);
std::string kind_text(const PortFacts &port);
std::string speed_text(const PortFacts &port);
std::string transceiver_text(const PortFacts &port);

Json to_json(const PortFacts &port);

} // namespace switchcfg::tool

#endif
