// SPDX-License-Identifier: Apache-2.0
// The front panel of a unit: sockets and cages in blocks of two rows, as on the box.
#ifndef SWITCHCFG_TOOLS_FRONT_PANEL_H
#define SWITCHCFG_TOOLS_FRONT_PANEL_H

#include "tools/unit_ports.h"

#include <string>
#include <vector>

namespace switchcfg::tool {

enum class Opening { socket, sfp, xfp, sfp_plus, stacking };

struct PanelCell {
    const PortFacts *port;
    int row; // 0 upper, 1 lower
    int column;
    bool filled; // what the port uses: a plugged cage
    bool unused; // the socket of a combo port whose cage is in use
};

struct PanelBlock {
    std::string title;
    Opening opening;
    int columns;
    std::vector<PanelCell> cells;
};

// The cells point into `unit`, which must outlive the panel.
std::vector<PanelBlock> front_panel(const UnitPorts &unit);

// What stands in a cell: the number on the box, or S1 and S2 for stacking ports.
std::string cell_label(const PanelCell &cell);

std::string panel_title(const UnitPorts &unit);

struct TextStyle {
    bool colour;
    bool box_drawing; // lines, where the terminal can; ASCII otherwise
    int width;        // columns there are; blocks that do not fit go below
};
TextStyle style_of_terminal();

std::string panel_as_text(const UnitPorts &unit, const TextStyle &style);
std::string panel_as_svg(const UnitPorts &unit);

} // namespace switchcfg::tool

#endif
