// SPDX-License-Identifier: Apache-2.0
#include "tools/command_line/output.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <unistd.h>

namespace switchcfg::tool {
namespace {

bool json_chosen = false;

} // namespace

bool json_wanted()
{
    return json_chosen;
}

void want_json(bool wanted)
{
    json_chosen = wanted;
}

bool colour_wanted()
{
    const char *const refused = std::getenv("NO_COLOR");
    return ::isatty(STDOUT_FILENO) == 1 && (refused == nullptr || *refused == '\0');
}

void print_json(const Json &json)
{
    // Text of the regions is whatever bytes a daemon left there: what is not UTF-8 is replaced, never thrown at.
    std::cout << json.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

void Table::print() const
{
    std::vector<std::size_t> widths;
    for (const auto &row : rows_) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], row[i].size());
        }
    }
    for (const auto &row : rows_) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += row[i];
            if (i + 1 < row.size()) {
                line.append(widths[i] - row[i].size() + 2, ' ');
            }
        }
        line.erase(line.find_last_not_of(' ') + 1);
        std::cout << line << '\n';
    }
}

} // namespace switchcfg::tool
