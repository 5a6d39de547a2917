// SPDX-License-Identifier: Apache-2.0
// What can stand on a command line of switchlab.
#include "tools/command_line/completion_values.h"

#include "lab/stack/plan.h"
#include "lab/stack/visitor.h"

#include <cstdlib>
#include <exception>
#include <switchcfg/equip_table.h>

namespace switchcfg::tool {
namespace {

using Values = std::vector<std::string>;

// Of the lab that the command would choose.
Values units_that_are_up(bool station_too)
{
    const char *const name = std::getenv(switchlab::lab_name_variable);
    Values units;
    for (const switchlab::LabPart &part : switchlab::view_lab(name != nullptr ? name : "").parts) {
        if (part.number >= 0) {
            units.push_back(std::to_string(part.number));
        } else if (station_too) {
            units.push_back(part.name);
        }
    }
    return units;
}

Values numbers(int first, int last)
{
    Values all;
    for (int number = first; number <= last; ++number) {
        all.push_back(std::to_string(number));
    }
    return all;
}

Values models()
{
    Values all;
    for (int model = 1; model < CFG_EQUIP_RECORDS; ++model) {
        all.emplace_back(Equip_tq5200[model].name);
    }
    return all;
}

} // namespace

std::vector<std::string> completion_values(
    const std::string &path, const std::string & /*positional*/, const std::string &option)
try {
    if (option == "UNIT") {
        return units_that_are_up(path != "power");
    }
    if (option == "STATE") {
        return {"on", "off", "cycle"};
    }
    if (option == "--name") {
        return path == "up" ? Values{} : switchlab::labs_here();
    }
    if (option == "--units") {
        return numbers(path == "demo" ? 2 : 1, switchlab::most_units);
    }
    if (option == "--models") {
        return models();
    }
    return option == "--flash-via" ? Values{"fuse", "preload"} : Values{};
} catch (const std::exception &) {
    return {}; // no lab, nothing to choose from
}

} // namespace switchcfg::tool
