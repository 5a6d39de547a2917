// SPDX-License-Identifier: Apache-2.0
// switchcfg equip: the models that the software knows, and all that it knows of one.
#include "equip/model_facts.h"
#include "tools/command_line/failure.h"
#include "tools/command_line/output.h"
#include "tools/commands.h"
#include "tools/equip_fields.h"
#include "tools/models.h"

#include <algorithm>
#include <memory>
#include <span>
#include <switchcfg/equip_table.h>
#include <switchcfg/status.h>

namespace switchcfg::tool {
namespace {

// One choice of an option, and whether a model is so.
struct Choice {
    const char *name;
    bool (*takes)(const ModelFacts &facts);
};

constexpr Choice kinds[] = {
    {"fibre", [](const ModelFacts &facts) { return facts.front == Front::gx; }},
    {"copper", [](const ModelFacts &facts) { return facts.front == Front::gt; }},
    {"poe", [](const ModelFacts &facts) { return facts.front == Front::gp; }},
};
constexpr Choice uplinks[] = {
    {"combo", [](const ModelFacts &facts) { return facts.combo_ports != 0; }},
    {"xfp", [](const ModelFacts &facts) { return facts.cage == Cage::xx; }},
    {"sfp+", [](const ModelFacts &facts) { return facts.cage == Cage::xs; }},
    {"stacking", [](const ModelFacts &facts) { return facts.stacks(); }},
    {"none", [](const ModelFacts &facts) { return facts.cages == 0 && !facts.stacks(); }},
};
constexpr Choice layers[] = {
    {"L2", [](const ModelFacts &facts) { return facts.layer == Layer::l2; }},
    {"L3", [](const ModelFacts &facts) { return facts.layer == Layer::l3; }},
    {"MPLS", [](const ModelFacts &facts) { return facts.layer == Layer::mpls; }},
};

struct Filter {
    std::string kind;
    std::string uplink;
    std::string layer;
    bool poe = false;
    int ports = 0;

    bool takes(const ModelFacts &facts) const
    {
        return chosen(kinds, kind, facts) && chosen(uplinks, uplink, facts) && chosen(layers, layer, facts) &&
               (!poe || facts.poe()) && (ports == 0 || facts.user_ports() == ports);
    }

  private:
    static bool chosen(std::span<const Choice> choices, const std::string &name, const ModelFacts &facts)
    {
        const auto choice = std::ranges::find(choices, name, [](const Choice &each) { return std::string{each.name}; });
        return choice == choices.end() || choice->takes(facts);
    }
};

const char *kind_name(Front front)
{
    return front == Front::gx ? "fibre" : front == Front::gt ? "copper" : "poe";
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
                                       ? std::string{}
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

void add_choice(
    CLI::App &command, const char *option, std::string &name, const char *about, std::span<const Choice> choices)
{
    std::vector<std::string> names;
    std::ranges::transform(choices, std::back_inserter(names), &Choice::name);
    command.add_option(option, name, about)->transform(CLI::IsMember(names, CLI::ignore_case));
}

} // namespace

void add_equip_commands(CLI::App &app)
{
    auto *equip = app.add_subcommand("equip", "The models that the software knows");
    equip->require_subcommand(1);

    auto filter = std::make_shared<Filter>();
    auto *models = equip->add_subcommand("models", "List the models");
    add_choice(*models, "--kind", filter->kind, "What the front ports are", kinds);
    add_choice(*models, "--uplink", filter->uplink, "An uplink that the model has; none beyond combo ports", uplinks);
    add_choice(*models, "--layer", filter->layer, "What the switch chip runs", layers);
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
            throw CLI::RequiredError{"unit or --model"};
        }
    });
}

} // namespace switchcfg::tool
