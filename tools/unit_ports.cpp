// SPDX-License-Identifier: Apache-2.0
#include "tools/unit_ports.h"

#include "core/status_layout.h"
#include "tools/command_line/failure.h"
#include "tools/models.h"

#include <switchcfg/equip_table.h>
#include <switchcfg/ports.h>
#include <switchcfg/provision.h>
#include <switchcfg/status.h>

namespace switchcfg::tool {
namespace {

constexpr int most_ports = static_cast<int>(status_layout::max_ports);

PortKind kind_of(int unit, int port)
{
    if (cfg_equip_is_combo_port_tq5200(unit, port) == 1) {
        return PortKind::combo;
    }
    switch (cfg_get_port_type_tq5200_up(unit, port)) {
    case CFG_PORT_TYPE_COPPER:
        return PortKind::copper;
    case CFG_PORT_TYPE_XFP:
        return PortKind::xfp;
    case CFG_PORT_TYPE_SFP_PLUS:
        return PortKind::sfp_plus;
    case CFG_PORT_TYPE_STACKING:
        return PortKind::stacking;
    default:
        return PortKind::sfp;
    }
}

// The LED chain is known for unit 0: the first LED that shows the chip port.
std::optional<int> led_of(int unit, const std::optional<int> &chip_port)
{
    for (int led = 0; unit == 0 && chip_port && led < most_ports; ++led) {
        if (cfg_equip_led_offset_to_port_tq5200(led) == *chip_port) {
            return led;
        }
    }
    return std::nullopt;
}

PortFacts facts_of(const std::uint8_t *status, int unit, int port, std::optional<int> stacking_id)
{
    PortFacts facts{};
    facts.port = port;
    facts.kind = stacking_id ? PortKind::stacking : kind_of(unit, port);
    if (status_get_hw_model_num(unit) != 0) {
        facts.speed = cfg_get_port_max_speed_tq5200_up(unit, port);
    }
    int module = 0;
    int chip_port = 0;
    if (cfg_equip_user_to_phys_port_tq5200(unit, port, &module, &chip_port) == 0) {
        facts.module = module;
        facts.chip_port = chip_port;
    }
    facts.led = led_of(unit, facts.chip_port);
    facts.cage = facts.kind != PortKind::copper && facts.kind != PortKind::stacking;
    facts.plugged = facts.cage && load(status, status_layout::transceiver_present, unit, port) != 0;
    facts.stacking_id = stacking_id;
    return facts;
}

} // namespace

UnitPorts ports_of(int unit)
{
    check_unit(unit);
    const std::uint8_t *const status = status_of_switch();
    UnitPorts all{};
    all.unit = unit;
    all.model = status_get_hw_model_num(unit);
    if (all.model == 0) {
        all.model = cfg_unit_get_provisioned_model(unit);
        all.provisioned = all.model != 0;
    }
    if (all.model < 1 || all.model >= CFG_EQUIP_RECORDS) {
        throw Failure{"unit " + std::to_string(unit) + ": " +
                      (all.model == 0 ? std::string{"no board there and none provisioned"}
                                      : "model " + std::to_string(all.model) + " is not known")};
    }
    all.name = model_name_of(all.model, unit);
    const cfg_equip_record &record = Equip_tq5200[all.model];
    all.copper_sockets = record.num_electrical_ports;
    for (int port = 0; port < record.user_eth_ports; ++port) {
        all.ports.push_back(facts_of(status, unit, port, std::nullopt));
    }
    // By identifier, because the stacking ports need not follow the others; behind them while the unit is absent.
    for (int id = record.stack_ports; id >= 1; --id) {
        int port = record.user_eth_ports + record.stack_ports - id;
        (void)cfg_equip_stack_id_to_port_tq5200(unit, id, &port);
        all.ports.push_back(facts_of(status, unit, port, id));
    }
    return all;
}

const char *kind_name(PortKind kind)
{
    switch (kind) {
    case PortKind::copper:
        return "copper";
    case PortKind::combo:
        return "combo";
    case PortKind::sfp:
        return "SFP";
    case PortKind::xfp:
        return "XFP";
    case PortKind::sfp_plus:
        return "SFP+";
    case PortKind::stacking:
        return "stacking";
    }
    return "";
}

std::string kind_text(const PortFacts &port)
{
    const std::string name = kind_name(port.kind);
    return port.kind == PortKind::combo ? name + (port.plugged ? ", fibre" : ", copper") : name;
}

std::string speed_text(const PortFacts &port)
{
    return port.speed ? std::to_string(*port.speed / 1000) + "G" : "-";
}

std::string transceiver_text(const PortFacts &port)
{
    return !port.cage ? "" : port.plugged ? "plugged" : "empty";
}

Json to_json(const PortFacts &port)
{
    const auto or_null = [](const std::optional<int> &value) { return value ? Json(*value) : Json(nullptr); };
    return {{"port", port.port}, {"front_label", port.front_label()}, {"kind", kind_name(port.kind)},
        {"medium", port.copper_in_use()              ? "copper"
                   : port.kind == PortKind::stacking ? "stacking"
                                                     : "fibre"},
        {"speed_mbps", or_null(port.speed)}, {"module", or_null(port.module)}, {"chip_port", or_null(port.chip_port)},
        {"led", or_null(port.led)}, {"cage", port.cage}, {"plugged", port.plugged},
        {"stacking_id", or_null(port.stacking_id)}};
}

} // namespace switchcfg::tool
