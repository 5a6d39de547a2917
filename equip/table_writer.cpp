// SPDX-License-Identifier: Apache-2.0
// Writes the table of all models into docs/equipment.md, between its markers; with --check only says whether the file
// is current. A development program, not part of the library.
#include "equip/model_facts.h"
#include "equip/port_layouts.h"

#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <switchcfg/equip_table.h>

namespace {

using namespace switchcfg;

constexpr char first_marker[] = "<!-- models: written by the target equipment-table -->\n";
constexpr char last_marker[] = "<!-- end of models -->\n";

const char *layout_name(int model)
{
    switch (layout_of[model]) {
    case Layout::f24:
        return "F24";
    case Layout::f24x:
        return "F24X";
    case Layout::c20:
        return "C20";
    case Layout::c20s:
        return "C20S";
    case Layout::c20x:
        return "C20X";
    case Layout::c48:
        return "C48";
    case Layout::c48x:
        return "C48X";
    case Layout::none:
        break;
    }
    return "";
}

std::string watts(std::int32_t milliwatts)
{
    return milliwatts != 0 ? std::to_string(milliwatts / 1000) : "";
}

std::string models_table()
{
    std::ostringstream out;
    out << "| No. | Name | Layout | Ports | 10G | Stacking | Chip | Layer | L2 entries | L3 entries | Power inputs | "
           "Supply W | PoE W | LEDs | FPGA ports | sysObjectID arc | SNMP id |\n"
        << "|--:|---|---|--:|---|--:|--:|---|--:|--:|---|--:|--:|--:|--:|--:|--:|\n";
    for (int model = 1; model < model_limit; ++model) {
        const ModelFacts &facts = model_facts[model];
        const cfg_equip_record &record = Equip_tq5200[model];
        out << "| " << model << " | " << record.name << " | " << layout_name(model) << " | " << record.user_ports
            << " | ";
        if (facts.cages != 0) {
            out << +facts.cages << (facts.cage == Cage::xx ? " XFP" : " SFP+");
        }
        out << " | " << (record.stack_ports != 0 ? std::to_string(record.stack_ports) : "") << " | " << record.chipset
            << " | "
            << (facts.layer == Layer::l2      ? "L2"
                   : facts.layer == Layer::l3 ? "L3"
                                              : "MPLS")
            << " | " << record.int_memory_l2 << " | " << record.int_memory_l3 << " | ";
        if (record.power_input_names[0] != nullptr) {
            out << record.power_input_names[0] << ", " << record.power_input_names[1];
        }
        out << " | " << watts(record.psu_power) << " | " << watts(record.power_available_to_ext_dev) << " | "
            << record.leds[0] << " | " << record.fpga_num_ports << " | " << record.int_oid << " | "
            << record.snmp_model_id << " |\n";
    }
    return out.str();
}

std::string contents_of(const std::string &path)
{
    std::ifstream file{path};
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

} // namespace

int main(int argc, char **argv)
{
    const bool check = argc == 3 && std::string{argv[1]} == "--check";
    if (argc != 2 && !check) {
        std::cerr << "usage: equipment-table-writer [--check] docs/equipment.md\n";
        return 2;
    }
    const std::string path = argv[argc - 1];
    const std::string before = contents_of(path);
    const std::size_t first = before.find(first_marker);
    const std::size_t last = before.find(last_marker);
    if (first == std::string::npos || last == std::string::npos || last < first) {
        std::cerr << path << ": cannot be read, or lacks the markers around the table\n";
        return 1;
    }
    const std::string after =
        before.substr(0, first) + first_marker + "\n" + models_table() + "\n" + before.substr(last);
    if (after == before) {
        return 0;
    }
    if (check) {
        std::cerr << path << ": the table of models is not current; build the target equipment-table\n";
        return 1;
    }
    std::ofstream file{path};
    file << after;
    file.close();
    if (!file) {
        std::cerr << path << ": cannot be written\n";
        return 1;
    }
    return 0;
}
