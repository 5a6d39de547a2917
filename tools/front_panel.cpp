// SPDX-License-Identifier: Apache-2.0
#include "tools/front_panel.h"

#include <algorithm>

namespace switchcfg::tool {
namespace {

Opening cage_of(PortKind kind)
{
    switch (kind) {
    case PortKind::xfp:
        return Opening::xfp;
    case PortKind::sfp_plus:
        return Opening::sfp_plus;
    case PortKind::stacking:
        return Opening::stacking;
    default:
        return Opening::sfp;
    }
}

const char *title_of(Opening opening)
{
    switch (opening) {
    case Opening::socket:
        return "RJ45";
    case Opening::sfp:
        return "SFP";
    case Opening::xfp:
        return "XFP";
    case Opening::sfp_plus:
        return "SFP+";
    case Opening::stacking:
        return "Stack";
    }
    return "";
}

// Odd numbers above, even ones below; stacking port 1 above stacking port 2.
void add_cell(PanelBlock &block, const PortFacts &port)
{
    const int index = port.stacking_id ? *port.stacking_id - 1 : static_cast<int>(block.cells.size());
    const bool is_socket = block.opening == Opening::socket;
    block.cells.push_back({&port, index % 2, index / 2, !is_socket && port.plugged,
        is_socket && port.kind == PortKind::combo && port.plugged});
    block.columns = std::max(block.columns, index / 2 + 1);
}

} // namespace

std::vector<PanelBlock> front_panel(const UnitPorts &unit)
{
    // Ports of the front group stand together; uplinks have blocks of their own even where they are alike.
    constexpr int fibre_front_ports = 24;
    std::vector<PanelBlock> blocks;
    if (unit.copper_sockets > 0) {
        PanelBlock sockets{title_of(Opening::socket), Opening::socket, 0, {}};
        for (const PortFacts &port : unit.ports) {
            if (port.port < unit.copper_sockets) {
                add_cell(sockets, port);
            }
        }
        blocks.push_back(std::move(sockets));
    }
    bool uplinks = false;
    for (const PortFacts &port : unit.ports) {
        if (!port.cage && port.kind != PortKind::stacking) {
            continue;
        }
        const Opening opening = cage_of(port.kind);
        const bool is_uplink = unit.copper_sockets == 0 && port.port >= fibre_front_ports;
        if (blocks.empty() || blocks.back().opening != opening || is_uplink != uplinks) {
            blocks.push_back({title_of(opening), opening, 0, {}});
            uplinks = is_uplink;
        }
        add_cell(blocks.back(), port);
    }
    return blocks;
}

std::string cell_label(const PanelCell &cell)
{
    return cell.port->stacking_id ? "S" + std::to_string(*cell.port->stacking_id)
                                  : std::to_string(cell.port->front_label());
}

std::string panel_title(const UnitPorts &unit)
{
    return "Unit " + std::to_string(unit.unit) + ": " + unit.name + (unit.provisioned ? " (provisioned)" : "");
}

} // namespace switchcfg::tool
