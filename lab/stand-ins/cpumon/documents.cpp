// SPDX-License-Identifier: Apache-2.0
#include "lab/stand-ins/cpumon/documents.h"

#include <algorithm>

namespace switchlab::cpumon {

namespace {

using std::chrono::seconds;

std::string escaped(const std::string &text)
{
    std::string safe;
    for (const char c : text) {
        switch (c) {
        case '&':
            safe += "&amp;";
            break;
        case '<':
            safe += "&lt;";
            break;
        case '>':
            safe += "&gt;";
            break;
        case '"':
            safe += "&quot;";
            break;
        default:
            safe += c;
        }
    }
    return safe;
}

std::string padded(const std::string &text, std::size_t width, bool is_text)
{
    const std::string blanks(width - std::min(width, text.size()), ' ');
    return is_text ? text + blanks : blanks + text;
}

std::string as_text(const Table &table)
{
    std::vector<std::size_t> widths;
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        std::size_t width = table.columns[i].title.size();
        for (const auto &row : table.rows) {
            width = std::max(width, row[i].size());
        }
        widths.push_back(width);
    }
    std::string text;
    const auto add_line = [&](const auto &cell) {
        std::string line;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            line += (i == 0 ? "" : "  ") + padded(cell(i), widths[i], table.columns[i].is_text);
        }
        text += line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
    };
    add_line([&](std::size_t i) { return table.columns[i].title; });
    for (const auto &row : table.rows) {
        add_line([&](std::size_t i) { return row[i]; });
    }
    return text;
}

std::string as_html(const Table &table, const std::string &caption)
{
    std::string text = "<table class=\"cpumon\">\n<caption>" + caption + "</caption>\n<thead>\n<tr>";
    for (const Table::Column &column : table.columns) {
        text += std::string{"<th scope=\"col\""} + (column.is_text ? " class=\"text\">" : ">") + escaped(column.title) +
                "</th>";
    }
    text += "</tr>\n</thead>\n<tbody>\n";
    for (const auto &row : table.rows) {
        text += "<tr>";
        for (std::size_t i = 0; i < row.size(); ++i) {
            text += (table.columns[i].is_text ? "<td class=\"text\">" : "<td>") + escaped(row[i]) + "</td>";
        }
        text += "</tr>\n";
    }
    return text + "</tbody>\n</table>";
}

std::string attribute(const char *name, const std::string &value)
{
    return std::string{" "} + name + "=\"" + escaped(value) + "\"";
}

template<typename Number>
std::string number(const char *name, Number value)
{
    return attribute(name, std::to_string(value));
}

std::string element(const char *name, const std::string &value)
{
    return std::string{"<"} + name + ">" + escaped(value) + "</" + name + ">";
}

std::string memory_element(const char *name, const Memory &memory)
{
    return std::string{"  <"} + name + number("total", memory.total_kib) + number("used", memory.used_kib()) +
           number("free", memory.free_kib) + " unit=\"KiB\"/>\n";
}

constexpr char declaration[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

} // namespace

std::string as_text(const std::vector<Table> &tables)
{
    std::string text;
    for (const Table &table : tables) {
        text += (text.empty() ? "" : "\n") + as_text(table);
    }
    return text;
}

std::string as_html(const std::vector<Table> &tables, unsigned unit)
{
    std::string text;
    for (std::size_t i = 0; i < tables.size(); ++i) {
        const bool is_summary = tables.size() > 1 && i == 0;
        text += (i == 0 ? "" : "\n") +
                as_html(tables[i], "Unit " + std::to_string(unit) + (is_summary ? ", in all" : ", by process"));
    }
    return text;
}

std::string as_xml(const Snapshot &now, const Sampler &sampler, unsigned unit)
{
    std::string text = declaration + std::string{"<cpumon"} + number("unit", unit) + ">\n";
    for (const Processor &one : sampler.recent(now)) {
        const double total = one.total() == 0 ? 1 : static_cast<double>(one.total()) / 100;
        text += "  <processor" + attribute("name", one.name) +
                attribute("user", with_decimal(static_cast<double>(one.user) / total)) +
                attribute("system", with_decimal(static_cast<double>(one.system) / total)) +
                attribute("idle", with_decimal(static_cast<double>(one.idle) / total)) + "/>\n";
    }
    text += memory_element("memory", now.memory) + memory_element("swap", now.swap);
    for (const Process &process : now.processes) {
        text += "  <process" + number("pid", process.pid) + attribute("name", process.name) +
                attribute("state", std::string(1, process.state)) + number("threads", process.threads) +
                attribute("usage", with_decimal(sampler.usage(now, process, seconds{5}))) +
                number("resident", process.resident_kib) + number("virtual", process.virtual_kib) + "/>\n";
    }
    return text + "</cpumon>";
}

std::string as_old_xml(const Snapshot &now, const Sampler &sampler, unsigned unit)
{
    std::string text = declaration + std::string{"<status>\n"} + element("unit", std::to_string(unit)) + "\n" +
                       element("cpu", std::to_string(busy_percent(now, sampler))) + "\n" +
                       element("memory_total", std::to_string(now.memory.total_kib)) + "\n" +
                       element("memory_free", std::to_string(now.memory.free_kib)) + "\n";
    for (const Process &process : now.processes) {
        text += "<process>" + element("pid", std::to_string(process.pid)) + element("name", process.name) +
                element("cpu", with_decimal(sampler.usage(now, process, seconds{5}))) +
                element("memory", std::to_string(process.resident_kib)) + "</process>\n";
    }
    return text + "</status>";
}

} // namespace switchlab::cpumon
