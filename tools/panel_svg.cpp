// SPDX-License-Identifier: Apache-2.0
// The front panel as a drawing. Every opening carries a title that viewers show under the pointer.
#include "tools/front_panel.h"

#include <algorithm>
#include <sstream>

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

// Writes elements; attributes are name="value" pairs in front of what they belong to.
class Drawing {
  public:
    struct Box {
        int x, y, width, height;
    };

    void rect(const Box &box, int radius, const char *fill, const std::string &more = "")
    {
        out_ << "<rect x=\"" << box.x << "\" y=\"" << box.y << "\" width=\"" << box.width << "\" height=\""
             << box.height << "\" rx=\"" << radius << "\" fill=\"" << fill << '"' << more << "/>\n";
    }
    void text(int x, int y, const std::string &content, const std::string &more = "")
    {
        out_ << "<text x=\"" << x << "\" y=\"" << y << '"' << more << '>' << escaped(content) << "</text>\n";
    }
    void raw(const std::string &markup) { out_ << markup << '\n'; }
    std::string str() const { return out_.str(); }

  private:
    std::ostringstream out_;
};

std::string tooltip(const PortFacts &port)
{
    std::string text =
        "Port " + std::to_string(port.port) + ": " + kind_text(port) + (port.speed ? ", " + speed_text(port) : "");
    if (port.chip_port) {
        text += ", module " + std::to_string(*port.module) + " chip port " + std::to_string(*port.chip_port);
    }
    if (port.cage) {
        text += ", transceiver " + transceiver_text(port);
    }
    return text;
}

// The latch of a socket points to the middle of the panel, so the upper row stands on its head.
void add_opening(Drawing &drawing, const PanelBlock &block, const PanelCell &cell, int x, int y)
{
    const Size size = size_of(block.opening);
    const char *const colour = colour_of(cell.port->kind);
    const std::string opacity = cell.unused ? " opacity=\"0.4\"" : "";
    drawing.raw("<g><title>" + escaped(tooltip(*cell.port)) + "</title>");
    drawing.rect({x, y, size.width, size.height}, 3, cell.filled ? colour : "#14171a",
        std::string{" stroke=\""} + colour + '"' + opacity);
    if (block.opening == Opening::socket) {
        constexpr Size latch{10, 5};
        const int latch_y = cell.row == 0 ? y + size.height - latch.height : y;
        drawing.rect({x + (size.width - latch.width) / 2, latch_y, latch.width, latch.height}, 0, colour, opacity);
    }
    drawing.text(
        x + size.width / 2, cell.row == 0 ? y - 4 : y + size.height + 11, cell_label(cell), " text-anchor=\"middle\"");
    drawing.raw("</g>");
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

    const std::string size_text = std::to_string(width) + ' ' + std::to_string(height);
    Drawing drawing;
    drawing.raw("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " + size_text + "\" width=\"" +
                std::to_string(width) + "\" height=\"" + std::to_string(height) +
                "\" role=\"img\" font-family=\"sans-serif\" font-size=\"10\" fill=\"#e8e8e8\" aria-label=\"" +
                escaped(panel_title(unit)) + "\">");
    drawing.rect({1, 1, width - 2, height - 2}, 8, "#2a2f36", " stroke=\"#0c0e10\" stroke-width=\"2\"");
    drawing.text(margin, margin + 12, panel_title(unit), " font-size=\"14\"");

    int x = margin;
    for (const PanelBlock &block : blocks) {
        drawing.text(x, margin + title_height + 12, block.title, " font-size=\"11\" fill=\"#9aa4b0\"");
        const Size size = size_of(block.opening);
        for (const PanelCell &cell : block.cells) {
            // The rows lean against each other, with the numbers outside.
            const int y = cell.row == 0 ? rows_top + row_height - size.height - 2 : rows_top + row_height + 2;
            add_opening(drawing, block, cell, x + cell.column * (size.width + column_gap), y);
        }
        x += width_of(block) + block_gap;
    }

    x = margin;
    const int legend_y = rows_top + 2 * row_height + 14;
    for (const PortKind kind : kinds) {
        drawing.rect({x, legend_y, 10, 10}, 2, colour_of(kind));
        drawing.text(x + 15, legend_y + 9, kind_name(kind));
        x += legend_entry_width;
    }
    drawing.raw("</svg>");
    return drawing.str();
}

} // namespace switchcfg::tool
