// SPDX-License-Identifier: Apache-2.0
// The front panel for a terminal.
#include "tools/front_panel.h"

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace switchcfg::tool {
namespace {

constexpr int lines_of_block = 4;
constexpr int wide_cell = 4;   // a blank, two digits, a mark
constexpr int narrow_cell = 3; // without the blank
constexpr int gap = 1;

struct Frame {
    const char *top_left, *top_right, *bottom_left, *bottom_right, *across, *down;
};
constexpr Frame ascii{"+", "+", "+", "+", "-", "|"};
constexpr Frame drawn{"┌", "┐", "└", "┘", "─", "│"};

const char *colour_of(const PortFacts &port)
{
    switch (port.kind) {
    case PortKind::copper:
        return "33";
    case PortKind::combo:
        return "93";
    case PortKind::sfp:
        return "36";
    case PortKind::xfp:
        return "35";
    case PortKind::sfp_plus:
        return "94";
    case PortKind::stacking:
        return "32";
    }
    return "0";
}

struct DrawnBlock {
    int width;
    std::array<std::string, lines_of_block> lines;
};

std::string repeated(const char *text, int count)
{
    std::string all;
    for (int i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

std::string cell_text(const PanelCell &cell, int cell_width, bool colour)
{
    std::string text = cell_label(cell);
    text.insert(0, static_cast<std::size_t>(std::max(0, cell_width - 1 - static_cast<int>(text.size()))), ' ');
    text += cell.filled ? '*' : cell.unused ? '-' : ' ';
    if (!colour) {
        return text;
    }
    const char *const weight = cell.filled ? "7;" : cell.unused ? "2;" : "";
    return std::string{"\033["} + weight + colour_of(*cell.port) + "m" + text + "\033[0m";
}

DrawnBlock draw(const PanelBlock &block, int cell_width, const TextStyle &style)
{
    const Frame &frame = style.box_drawing ? drawn : ascii;
    const int inside = std::max(block.columns * cell_width, static_cast<int>(block.title.size()) + 2);
    DrawnBlock out;
    out.width = inside + 2;
    out.lines[0] = frame.top_left + (" " + block.title + " ") +
                   repeated(frame.across, inside - static_cast<int>(block.title.size()) - 2) + frame.top_right;
    for (int row = 0; row < 2; ++row) {
        std::string &line = out.lines[static_cast<std::size_t>(row) + 1];
        line = frame.down;
        int used = 0;
        for (const PanelCell &cell : block.cells) {
            if (cell.row == row) {
                line.append(static_cast<std::size_t>(cell.column * cell_width - used), ' ');
                line += cell_text(cell, cell_width, style.colour);
                used = (cell.column + 1) * cell_width;
            }
        }
        line.append(static_cast<std::size_t>(inside - used), ' ');
        line += frame.down;
    }
    out.lines[3] = frame.bottom_left + repeated(frame.across, inside) + frame.bottom_right;
    return out;
}

} // namespace

TextStyle style_of_terminal()
{
    constexpr int width_of_a_page = 132;
    winsize size{};
    const bool terminal = ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0;
    (void)std::setlocale(LC_CTYPE, "");
    return {
        colour_wanted(), std::strcmp(::nl_langinfo(CODESET), "UTF-8") == 0, terminal ? size.ws_col : width_of_a_page};
}

std::string panel_as_text(const UnitPorts &unit, const TextStyle &style)
{
    std::string out = panel_title(unit) + "\n";
    const std::vector<PanelBlock> blocks = front_panel(unit);
    const int most_columns = std::ranges::max(blocks, {}, &PanelBlock::columns).columns;
    const int cell_width = most_columns * wide_cell + 2 <= style.width ? wide_cell : narrow_cell;
    bool any_filled = false;
    bool any_unused = false;
    for (auto block = blocks.begin(); block != blocks.end();) {
        std::array<std::string, lines_of_block> lines;
        int used = 0;
        do {
            const DrawnBlock next = draw(*block, cell_width, style);
            if (used != 0 && used + gap + next.width > style.width) {
                break;
            }
            for (std::size_t i = 0; i < lines.size(); ++i) {
                lines[i] += (used != 0 ? " " : "") + next.lines[i];
            }
            used += (used != 0 ? gap : 0) + next.width;
            any_filled = any_filled || std::ranges::any_of(block->cells, &PanelCell::filled);
            any_unused = any_unused || std::ranges::any_of(block->cells, &PanelCell::unused);
        } while (++block != blocks.end());
        for (const std::string &line : lines) {
            out += line + "\n";
        }
    }
    out += "Numbers as on the box: user port + 1.";
    out += any_filled ? "  * transceiver plugged" : "";
    out += any_unused ? "  - socket not in use, its port runs on fibre" : "";
    return out + "\n";
}

} // namespace switchcfg::tool
