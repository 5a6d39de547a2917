// SPDX-License-Identifier: Apache-2.0
// switchcfg equip: the models that the software knows, and all that it knows of one.
#include "equip/model_facts.h"
#include "tools/commands.h"
#include "tools/equip_fields.h"
#include "tools/failure.h"
#include "tools/models.h"
#include "tools/output.h"

#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <switchcfg/equip.h>
#include <switchcfg/status.h>

namespace switchcfg::tool {
namespace {

enum class Uplink { any, none, gc, xx, xs, stacking };

struct Filter {
    std::optional<Front> kind;
    Uplink uplink = Uplink::any;
    std::optional<Layer> layer;
    bool poe = false;
    int ports = 0;

    bool takes(const ModelFacts &facts) const
    {
        return (!kind || facts.front == *kind) && has_uplink(facts) && (!layer || facts.layer == *layer) &&
               (!poe || facts.poe()) && (ports == 0 || facts.user_ports() == ports);
    }

  private:
    bool has_uplink(const ModelFacts &facts) const
    {
        switch (uplink) {
        case Uplink::any:
            return true;
        case Uplink::none:
            return facts.cages == 0 && !facts.stacks();
        case Uplink::gc:
            return facts.combo_ports != 0;
        case Uplink::xx:
            return facts.cage == Cage::xx;
        case Uplink::xs:
            return facts.cage == Cage::xs;
        case Uplink::stacking:
            return facts.stacks();
        }
        return false;
    }
};

const char *kind_name(Front front)
{
    return front == Front::gx ? "fibre" : front == Front::gt ? "copper" : "copper, PoE";
}

const char *layer_name(Layer layer)
{
    return layer == Layer::l2 ? "L2" : layer == Layer::l3 ? "L3" : "MPLS";
}

std::string uplink_cages(const ModelFacts &facts)
{
    return facts.cages == 0 ? "" : std::to_string(facts.cages) + (facts.cage == Cage::xx ? " XFP" : " SFP+");
}

void list_models(const Filter &filter)
{
    Json json = Json::array();
    Table table{{"MODEL", "NAME", "KIND", "PORTS", "COMBO", "10G", "STACKING", "LAYER", "POE W", "POWER INPUTS"}};
    for (int model = 1; model < CFG_EQUIP_RECORDS; ++model) {
        const ModelFacts &facts = model_facts[model];
        if (!filter.takes(facts)) {
            continue;
        }
        const cfg_equip_record &record = Equip_tq5200[model];
        const std::string inputs = record.power_input_names[0] == nullptr
                                       ? ""
                                       : std::string{record.power_input_names[0]} + ", " + record.power_input_names[1];
        table.add({std::to_string(model), record.name, kind_name(facts.front), std::to_string(record.user_ports),
            facts.combo_ports != 0 ? std::to_string(facts.combo_ports) : "", uplink_cages(facts),
            record.stack_ports != 0 ? std::to_string(record.stack_ports) : "", layer_name(facts.layer),
            facts.poe() ? std::to_string(record.power_available_to_ext_dev / 1000) : "", inputs});
        json.push_back(
            {{"model", model}, {"name", record.name}, {"kind", kind_name(facts.front)}, {"ports", record.user_ports},
                {"front_ports", facts.front_ports}, {"combo_ports", facts.combo_ports}, {"cages", facts.cages},
                {"cage", facts.cage == Cage::none ? Json{} : Json(facts.cage == Cage::xx ? "XFP" : "SFP+")},
                {"stack_ports", record.stack_ports}, {"layer", layer_name(facts.layer)}, {"poe", facts.poe()},
                {"power_inputs", inputs}});
    }
    if (json.empty() && !json_wanted()) {
        throw Failure{"no model is like that"};
    }
    print(json, [&] { table.print(); });
}

void show(int model)
{
    const cfg_equip_record &record = Equip_tq5200[model > 0 && model < CFG_EQUIP_RECORDS ? model : 0];
    Json json = Json::object();
    json["model"] = model;
    Table table{{"FIELD", "VALUE"}};
    table.add({"model", std::to_string(model)});
    for (const EquipField &field : equip_fields()) {
        const Json value = field.value(record);
        std::string line;
        for (const Json &element : value.is_array() ? value : Json::array({value})) {
            line += (line.empty() ? "" : " ") + (element.is_string()    ? element.get<std::string>()
                                                    : element.is_null() ? "-"
                                                                        : element.dump());
        }
        table.add({field.name, std::move(line)});
        json[field.name] = value;
    }
    print(json, [&] { table.print(); });
}

void show_unit(int unit)
{
    check_unit(unit);
    (void)status_of_switch();
    const int model = status_get_hw_model_num(unit);
    if (model <= 0 || model >= CFG_EQUIP_RECORDS) {
        throw Failure{"unit " + std::to_string(unit) + " reports model " + std::to_string(model) +
                      ", which this software does not know"};
    }
    show(model);
}

template<typename Value>
auto choice(const std::map<std::string, Value> &names)
{
    return CLI::CheckedTransformer(names, CLI::ignore_case);
}

} // namespace

void add_equip_commands(CLI::App &app)
{
    auto *equip = app.add_subcommand("equip", "The models that the software knows");
    equip->require_subcommand(1);

    auto filter = std::make_shared<Filter>();
    auto *models = equip->add_subcommand("models", "List the models");
    models->add_option("--kind", filter->kind, "Front ports: fibre, copper, poe")
        ->transform(choice<Front>({{"fibre", Front::gx}, {"copper", Front::gt}, {"poe", Front::gp}}));
    models->add_option("--uplink", filter->uplink, "Has: combo, xfp, sfp+, stacking; or none beyond combo")
        ->transform(choice<Uplink>(
            {{"combo", Uplink::gc}, {"gc", Uplink::gc}, {"xfp", Uplink::xx}, {"xx", Uplink::xx}, {"sfp+", Uplink::xs},
                {"xs", Uplink::xs}, {"stacking", Uplink::stacking}, {"s", Uplink::stacking}, {"none", Uplink::none}}));
    models->add_option("--layer", filter->layer, "L2, L3, MPLS")
        ->transform(choice<Layer>({{"l2", Layer::l2}, {"l3", Layer::l3}, {"mpls", Layer::mpls}}));
    models->add_flag("--poe", filter->poe, "Powers devices");
    models->add_option("--ports", filter->ports, "User ports: 24, 26, 28, 48, 50, 52");
    models->callback([filter] { list_models(*filter); });

    auto *show_command = equip->add_subcommand("show", "Print all that is known of a unit's model, or of any model");
    auto unit = std::make_shared<int>(-1);
    auto name = std::make_shared<std::string>();
    auto *unit_option = show_command->add_option("unit", *unit, "Unit, 0 to 7");
    auto *model_option = show_command->add_option("--model", *name, "Number or name")->excludes(unit_option);
    show_command->callback([=] {
        if (model_option->count() != 0) {
            show(model_by_name(*name));
        } else if (unit_option->count() != 0) {
            show_unit(*unit);
        } else {
            throw Failure{"name a unit, or a model with --model"};
        }
    });
}

} // namespace switchcfg::tool
