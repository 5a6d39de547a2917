// SPDX-License-Identifier: Apache-2.0
// The front panel as a drawing. Every opening carries a title that viewers show under the pointer.
#include "tools/front_panel.h"

#include <algorithm>
#include <cstdio>

namespace switchcfg::tool {
namespace {

constexpr int margin = 16;
constexpr int title_height = 24;
constexpr int block_gap = 18;
constexpr int row_height = 44;
constexpr int column_gap = 4;
constexpr int legend_height = 30;
constexpr int legend_entry_width = 92;

struct Size {
    int width;
    int height;
};

constexpr Size size_of(Opening opening)
{
    switch (opening) {
    case Opening::socket:
        return {24, 22};
    case Opening::sfp:
    case Opening::sfp_plus:
        return {26, 16};
    case Opening::xfp:
        return {36, 18};
    case Opening::stacking:
        return {40, 18};
    }
    return {};
}

const char *colour_of(PortKind kind)
{
    switch (kind) {
    case PortKind::copper:
        return "#d9a441";
    case PortKind::combo:
        return "#f0d060";
    case PortKind::sfp:
        return "#3fb0c8";
    case PortKind::xfp:
        return "#c070d0";
    case PortKind::sfp_plus:
        return "#7090f0";
    case PortKind::stacking:
        return "#60b860";
    }
    return "#ffffff";
}

std::string escaped(const std::string &text)
{
    std::string out;
    for (const char c : text) {
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        default:
            out += c;
        }
    }
    return out;
}

template<typename... Value>
void add(std::string &out, const char *format, Value... value)
{
    char line[512];
    std::snprintf(line, sizeof line, format, value...);
    out += line;
}

std::string tooltip(const PortFacts &port)
{
    std::string text = "Port " + std::to_string(port.port) + ": " + kind_text(port) + ", " + speed_text(port.speed);
    if (port.chip_port) {
        text += ", module " + std::to_string(*port.module) + " chip port " + std::to_string(*port.chip_port);
    }
    if (port.cage) {
        text += ", transceiver " + transceiver_text(port);
    }
    return text;
}

// A socket opens towards the middle of the panel, so the upper row stands on its head.
void add_opening(std::string &out, const PanelBlock &block, const PanelCell &cell, int x, int y)
{
    const Size size = size_of(block.opening);
    const char *const colour = colour_of(cell.port->kind);
    const char *const fill = cell.filled ? colour : "#14171a";
    const char *const opacity = cell.unused ? "0.4" : "1";
    out += "<g><title>" + escaped(tooltip(*cell.port)) + "</title>";
    if (block.opening == Opening::socket) {
        const int notch = cell.row == 0 ? y + size.height - 5 : y;
        add(out, R"(<rect x="%d" y="%d" width="%d" height="%d" rx="2" fill="%s" stroke="%s" opacity="%s"/>)", x, y,
            size.width, size.height, fill, colour, opacity);
        add(out, R"(<rect x="%d" y="%d" width="10" height="5" fill="%s" opacity="%s"/>)", x + size.width / 2 - 5, notch,
            colour, opacity);
    } else {
        add(out, R"(<rect x="%d" y="%d" width="%d" height="%d" rx="3" fill="%s" stroke="%s"/>)", x, y, size.width,
            size.height, fill, colour);
    }
    const int text_y = cell.row == 0 ? y - 4 : y + size.height + 11;
    add(out, R"(<text x="%d" y="%d" text-anchor="middle">%s</text></g>)", x + size.width / 2, text_y,
        cell_label(cell).c_str());
    out += "\n";
}

constexpr int width_of(const PanelBlock &block)
{
    const int title = static_cast<int>(block.title.size()) * 7;
    return std::max(block.columns * (size_of(block.opening).width + column_gap) - column_gap, title);
}

} // namespace

std::string panel_as_svg(const UnitPorts &unit)
{
    const std::vector<PanelBlock> blocks = front_panel(unit);
    int width = margin;
    std::vector<PortKind> kinds;
    for (const PanelBlock &block : blocks) {
        width += width_of(block) + block_gap;
        for (const PanelCell &cell : block.cells) {
            if (std::ranges::find(kinds, cell.port->kind) == kinds.end()) {
                kinds.push_back(cell.port->kind);
            }
        }
    }
    width += margin - block_gap;
    width = std::max(width, 2 * margin + static_cast<int>(kinds.size()) * legend_entry_width);
    width = std::max(width, 2 * margin + static_cast<int>(panel_title(unit).size()) * 8);
    const int rows_top = margin + 2 * title_height;
    const int height = rows_top + 2 * row_height + legend_height + margin;

    std::string out;
    add(out, R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 %d %d" width="%d" height="%d" role="img")", width,
        height, width, height);
    out += R"( font-family="sans-serif" font-size="10" fill="#e8e8e8" aria-label=")" + escaped(panel_title(unit)) +
           "\">\n";
    add(out, R"(<rect x="1" y="1" width="%d" height="%d" rx="8" fill="#2a2f36" stroke="#0c0e10" stroke-width="2"/>)",
        width - 2, height - 2);
    out += "\n";
    add(out, R"(<text x="%d" y="%d" font-size="14">)", margin, margin + 12);
    out += escaped(panel_title(unit)) + "</text>\n";

    int x = margin;
    for (const PanelBlock &block : blocks) {
        add(out, R"(<text x="%d" y="%d" font-size="11" fill="#9aa4b0">%s</text>)", x, margin + title_height + 12,
            block.title.c_str());
        out += "\n";
        const Size size = size_of(block.opening);
        for (const PanelCell &cell : block.cells) {
            // The rows lean against each other, with the numbers outside.
            const int y = cell.row == 0 ? rows_top + row_height - size.height - 2 : rows_top + row_height + 2;
            add_opening(out, block, cell, x + cell.column * (size.width + column_gap), y);
        }
        x += width_of(block) + block_gap;
    }

    x = margin;
    const int legend_y = rows_top + 2 * row_height + 14;
    for (const PortKind kind : kinds) {
        add(out, R"(<rect x="%d" y="%d" width="10" height="10" rx="2" fill="%s"/><text x="%d" y="%d">%s</text>)", x,
            legend_y, colour_of(kind), x + 15, legend_y + 9, kind_name(kind));
        out += "\n";
        x += legend_entry_width;
    }
    return out + "</svg>\n";
}

} // namespace switchcfg::tool
