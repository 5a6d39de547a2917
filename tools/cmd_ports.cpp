// SPDX-License-Identifier: Apache-2.0
// switchcfg ports: the ports of a unit as a table, a picture or a drawing; switchcfg port: one port in full.
#include "tools/command_line/failure.h"
#include "tools/command_line/output.h"
#include "tools/commands.h"
#include "tools/front_panel.h"
#include "tools/models.h"
#include "tools/unit_ports.h"

#include <charconv>
#include <fstream>
#include <iostream>
#include <memory>
#include <switchcfg/equip.h>
#include <switchcfg/ports.h>
#include <switchcfg/provision.h>

namespace switchcfg::tool {
namespace {

struct PortsRequest {
    int unit = 0;
    bool panel = false;
    std::string svg;
};

std::string text_of(const std::optional<int> &value)
{
    return value ? std::to_string(*value) : "-";
}

void print_table(const UnitPorts &unit)
{
    std::cout << panel_title(unit) << ", model " << unit.model << '\n';
    Table table{{"PORT", "ON BOX", "KIND", "SPEED", "MODULE", "CHIP PORT", "LED", "TRANSCEIVER", "STACKING"}};
    for (const PortFacts &port : unit.ports) {
        table.add({std::to_string(port.port), std::to_string(port.front_label()), kind_text(port), speed_text(port),
            text_of(port.module), text_of(port.chip_port), text_of(port.led), port.cage ? transceiver_text(port) : "-",
            text_of(port.stacking_id)});
    }
    table.print();
}

Json to_json(const UnitPorts &unit)
{
    Json ports = Json::array();
    for (const PortFacts &port : unit.ports) {
        ports.push_back(to_json(port));
    }
    return {{"unit", unit.unit}, {"model", unit.model}, {"name", unit.name}, {"provisioned", unit.provisioned},
        {"ports", ports}};
}

void write_svg(const std::string &file, const std::string &drawing)
{
    if (file == "-") {
        std::cout << drawing;
        return;
    }
    std::ofstream out{file, std::ios::binary | std::ios::trunc};
    if (!out) {
        throw system_failure(file, "cannot open");
    }
    if (!(out << drawing).flush()) {
        throw system_failure(file, "cannot write");
    }
}

void show_ports(const PortsRequest &request)
{
    const UnitPorts unit = ports_of(request.unit);
    if (!request.svg.empty()) {
        write_svg(request.svg, panel_as_svg(unit));
        if (!request.panel) {
            return;
        }
    }
    print(to_json(unit), [&] {
        if (request.panel) {
            std::cout << panel_as_text(unit, style_of_terminal());
        } else {
            print_table(unit);
        }
    });
}

struct PortName {
    int unit;
    int port;
};

// "1/23", and "1/cpu" for the processor port.
PortName parse(const std::string &text)
{
    PortName name{};
    const char *const end = text.data() + text.size();
    const auto unit = std::from_chars(text.data(), end, name.unit);
    if (unit.ec == std::errc{} && unit.ptr != end && *unit.ptr == '/') {
        if (std::string_view{unit.ptr + 1, end} == "cpu") {
            name.port = CFG_PORT_CPU;
            return name;
        }
        const auto port = std::from_chars(unit.ptr + 1, end, name.port);
        if (port.ec == std::errc{} && port.ptr == end && name.port >= 0) {
            return name;
        }
    }
    throw Failure{"'" + text +
                  "' is no port: UNIT/PORT such as 1/23, or UNIT/cpu, or UNIT/512 to UNIT/639 for a "
                  "port-channel"};
}

const char *yes_no(bool value)
{
    return value ? "yes" : "no";
}

void print_record(const Json &record)
{
    Table table{{"FIELD", "VALUE"}};
    for (const auto &[key, value] : record.items()) {
        const std::string text = value.is_boolean()  ? yes_no(value.get<bool>())
                                 : value.is_null()   ? "-"
                                 : value.is_string() ? value.get<std::string>()
                                                     : value.dump();
        std::string name = key;
        std::ranges::replace(name, '_', ' ');
        table.add({name, text});
    }
    table.print();
}

void show_processor_port(int unit)
{
    check_unit(unit);
    (void)status_of_switch();
    int module = 0;
    int chip_port = 0;
    (void)cfg_equip_user_to_phys_port_tq5200(unit, CFG_PORT_CPU, &module, &chip_port);
    constexpr int none = 32 * CFG_PBMP_WORDS;
    const Json record{{"unit", unit}, {"port", "cpu"}, {"module", module},
        {"chip_port", chip_port == none ? Json(nullptr) : Json(chip_port)}};
    print(record, [&] { print_record(record); });
}

void show_port_channel(int channel)
{
    (void)status_of_switch();
    Json members = Json::array();
    for (int unit = 0; unit < 8; ++unit) {
        const int ports = cfg_equip_get_max_num_ports_tq5200(unit);
        for (int port = 0; port < ports; ++port) {
            if (cfg_port_get_channel(unit, port) == channel) {
                members.push_back(std::to_string(unit) + "/" + std::to_string(port));
            }
        }
    }
    const int type = cfg_get_port_type_tq5200(0, channel);
    if (type < 0) {
        throw Failure{"port-channel " + std::to_string(channel) + " has no member on a present unit"};
    }
    const Json record{{"port_channel", channel}, {"type", type},
        {"speed_mbps", cfg_get_port_max_speed_tq5200(0, channel)},
        {"transceiver", cfg_equip_is_port_transceiver_tq5200(0, channel) == 1}, {"members", members}};
    print(record, [&] { print_record(record); });
}

void show_port(const std::string &text)
{
    const auto [unit, port] = parse(text);
    if (port == CFG_PORT_CPU) {
        show_processor_port(unit);
        return;
    }
    if (port >= CFG_PORT_CHANNEL_FIRST && port <= CFG_PORT_CHANNEL_LAST) {
        show_port_channel(port);
        return;
    }
    const UnitPorts all = ports_of(unit);
    const auto facts = std::ranges::find(all.ports, port, &PortFacts::port);
    if (facts == all.ports.end()) {
        throw Failure{"unit " + std::to_string(unit) + " (" + all.name + ") has no port " + std::to_string(port) +
                      ": its last one is " + std::to_string(all.ports.back().port)};
    }
    const int channel = cfg_port_get_channel(unit, port);
    Json record{{"unit", unit}, {"name", all.name}, {"provisioned", all.provisioned}};
    record.update(to_json(*facts));
    record.update(Json{{"type", cfg_get_port_type_tq5200_up(unit, port)},
        {"powers_devices", cfg_get_poe_is_capable_port_tq5200(unit, port) == 1},
        {"cable_test", cfg_equip_has_cable_diag_support_tq5200(unit, port) == 1},
        {"lanes_inverted", cfg_equip_is_txrx_inverted(unit, port) == 1},
        {"port_channel", channel > 0 ? Json(channel) : Json(nullptr)},
        {"disabled", cfg_port_get_disabled(unit, port) == 1}});
    print(record, [&] { print_record(record); });
}

} // namespace

void add_ports_commands(CLI::App &app)
{
    auto *ports = app.add_subcommand("ports", "The ports of a unit: kind, speed, chip port, LED, transceiver");
    auto request = std::make_shared<PortsRequest>();
    ports->add_option("unit", request->unit, "Unit, 0 to 7")->required();
    ports->add_flag("--panel", request->panel, "Draw the front panel");
    ports->add_option("--svg", request->svg, "Write the front panel as a drawing to this file, - for standard output");
    ports->callback([request] { show_ports(*request); });

    auto *port = app.add_subcommand("port", "Everything about one port");
    auto name = std::make_shared<std::string>();
    port->add_option("port", *name, "UNIT/PORT, ports counted from 0; UNIT/cpu; UNIT/512 to UNIT/639")->required();
    port->callback([name] { show_port(*name); });
}

} // namespace switchcfg::tool
