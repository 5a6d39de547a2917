// SPDX-License-Identifier: Apache-2.0
// switchcfg units: the stack at a glance; switchcfg status: the status region by field.
#include "core/status_layout.h"
#include "tools/command_line/failure.h"
#include "tools/command_line/output.h"
#include "tools/commands.h"
#include "tools/models.h"
#include "tools/region_commands.h"
#include "tools/stack.h"

#include <memory>
#include <switchcfg/equip.h>
#include <switchcfg/provision.h>
#include <switchcfg/status.h>

namespace switchcfg::tool {
namespace {

namespace layout = status_layout;

struct UnitState {
    int unit;
    bool present;
    bool removed;
    int model;
    int provisioned;

    bool interesting() const { return present || removed || model != 0 || provisioned != 0; }
    std::string state() const
    {
        if (present) {
            return model != provisioned && provisioned != 0 ? "present, not as provisioned" : "present";
        }
        return removed ? "removed by command" : interesting() ? "absent" : "";
    }
};

UnitState state_of(const std::uint8_t *region, int unit)
{
    return {unit, load(region, layout::unit_present, unit) != 0, status_get_logical_removal(unit) != 0,
        status_get_hw_model_num(unit), cfg_unit_get_provisioned_model(unit)};
}

std::string modids_of(const std::uint8_t *region, int unit)
{
    const std::int32_t first = load(region, layout::subunit_first_modid, unit, 0);
    const std::int32_t count = load(region, layout::subunit_modids, unit, 0);
    return count <= 0   ? std::string{}
           : count == 1 ? std::to_string(first)
                        : std::to_string(first) + "-" + std::to_string(std::int64_t{first} + count - 1);
}

} // namespace

void print_units(bool all)
{
    std::uint8_t *const region = status_of_switch();
    Json json = Json::array();
    Table table{{"UNIT", "STATE", "MODEL", "NAME", "PORTS", "STACKING", "HW", "MAC", "CHIP", "MODIDS", "PROVISIONED"}};
    for (int unit = 0; unit < static_cast<int>(layout::max_units); ++unit) {
        const UnitState state = state_of(region, unit);
        if (!all && !state.interesting()) {
            continue;
        }
        const auto number = static_cast<std::uint32_t>(unit);
        const std::string name = model_name_of(state.model, unit);
        const std::string mac = mac_text(bytes(region, layout::unit_mac, unit).data());
        const int ports = cfg_equip_get_user_eth_ports(number);
        const int stack_ports = cfg_equip_get_stack_ports(number);
        const std::int32_t chip = load(region, layout::subunit_physical_unit, unit, 0);
        std::vector<std::string> cells{std::to_string(unit), state.state()};
        if (state.present || state.model != 0) {
            cells.insert(cells.end(),
                {std::to_string(state.model), name, std::to_string(ports), std::to_string(stack_ports),
                    std::to_string(status_get_hw_version(unit)), mac, std::to_string(chip), modids_of(region, unit)});
        }
        cells.resize(10);
        cells.push_back(state.provisioned != 0 ? model_name_of(state.provisioned, unit) : "");
        table.add(std::move(cells));
        json.push_back({{"unit", unit}, {"present", state.present}, {"logically_removed", state.removed},
            {"model", state.model}, {"name", name}, {"ports", ports}, {"stack_ports", stack_ports},
            {"hardware_version", status_get_hw_version(unit)}, {"mac", mac}, {"physical_unit", chip},
            {"first_modid", load(region, layout::subunit_first_modid, unit, 0)},
            {"modids", load(region, layout::subunit_modids, unit, 0)}, {"provisioned_model", state.provisioned}});
    }
    print(json, [&] {
        if (json.empty()) {
            std::puts("no unit is in the stack");
            return;
        }
        table.print();
    });
}

void add_units_command(CLI::App &app)
{
    auto *units = app.add_subcommand("units", "List the units of the stack");
    auto all = std::make_shared<bool>(false);
    units->add_flag("--all", *all, "Also units of which nothing is known");
    units->callback([all] { print_units(*all); });
}

void add_status_commands(CLI::App &app)
{
    auto *status = app.add_subcommand("status", "The status region, the live state of the switch");
    status->require_subcommand(1);
    add_region_commands(*status, {
                                     .what = "status region",
                                     .fields = layout::fields,
                                     .size = layout::size,
                                     .region = status_of_switch,
                                     .change =
                                         [](const std::function<void()> &change) {
                                             change();
                                             if (status_sync() != 0) {
                                                 throw system_failure(STATUS_PATH, "msync");
                                             }
                                         },
                                 });
}

} // namespace switchcfg::tool
