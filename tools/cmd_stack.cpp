// SPDX-License-Identifier: Apache-2.0
// switchcfg stack: puts units into the status region, so that everything that asks for units and ports can be tried
// without a switch, and says what units are to be.
#include "core/status_layout.h"
#include "tools/command_line/failure.h"
#include "tools/commands.h"
#include "tools/lock_hold.h"
#include "tools/models.h"
#include "tools/stack.h"
#include "tools/stack_units.h"

#include <charconv>
#include <cstring>
#include <memory>
#include <switchcfg/config_region.h>
#include <switchcfg/equip.h>
#include <switchcfg/ports.h>
#include <switchcfg/provision.h>
#include <switchcfg/status.h>

namespace switchcfg::tool {
namespace {

namespace layout = status_layout;

constexpr int unit_count = static_cast<int>(layout::max_units);

struct Populate {
    std::string models;
    int version = 10; // boards from revision 10 on have all their uplinks
    int vendor = 1;
    bool plugged = false;
};

void flush()
{
    if (status_sync() != 0) {
        throw system_failure(STATUS_PATH, "msync");
    }
}

void populate(const Populate &how)
{
    const std::vector<int> models = models_by_names(how.models);
    if (models.size() > layout::max_units) {
        throw Failure{std::to_string(models.size()) + " models: a stack has at most 8 units"};
    }
    std::uint8_t *const region = status_of_switch();
    for (int unit = 0; unit < unit_count; ++unit) {
        withdraw_unit(region, unit);
    }
    for (std::size_t unit = 0; unit < models.size(); ++unit) {
        const std::uint8_t number = static_cast<std::uint8_t>(unit);
        announce_unit(region, number,
            {.model = models[unit],
                .version = how.version,
                .mac = {0x02, 0x00, 0x54, 0x51, 0x52, number},
                .plugged = how.plugged});
    }
    store(region, layout::stack_formed, models.size() > 1 ? 1 : 0);
    store(region, layout::vendor_code, how.vendor);
    flush();
    print_units(false);
}

void clear()
{
    std::uint8_t *const region = status_of_switch();
    for (int unit = 0; unit < unit_count; ++unit) {
        withdraw_unit(region, unit);
    }
    store(region, layout::stack_formed, 0);
    flush();
    print_units(false);
}

// The model stays known, as it does while a unit restarts.
void remove(int unit, bool by_command)
{
    check_unit(unit);
    std::uint8_t *const region = status_of_switch();
    if (load(region, layout::unit_present, unit) == 0) {
        throw Failure{"unit " + std::to_string(unit) + " is not in the stack"};
    }
    store(region, layout::unit_present, 0, unit);
    store(region, layout::subunit_mark, 0, unit, 0);
    (void)status_set_logical_removal(unit, by_command ? 1 : 0);
    flush();
    print_units(false);
}

template<typename Change>
void change_configuration(Change change)
{
    const LockHold hold{cfg_lock_table[CFG_LOCK_CFG]};
    change();
    if (cfg_data_sync() != 0) {
        throw system_failure(CFG_DEFAULT_PATH, "msync");
    }
}

void provision(int unit, const std::string &model)
{
    check_unit(unit);
    const int number = model == "none" ? 0 : model_by_name(model);
    (void)status_of_switch();
    change_configuration([&] { (void)cfg_unit_set_provisioned_model(unit, number); });
    print_units(false);
}

// "UNIT/PORT"
void join_channel(const std::string &place, const std::string &channel)
{
    int unit = -1;
    int port = -1;
    int number = 0;
    const char *const end = place.data() + place.size();
    const auto slash = std::from_chars(place.data(), end, unit);
    const bool split = slash.ec == std::errc{} && slash.ptr != end && *slash.ptr == '/';
    const auto rest = split ? std::from_chars(slash.ptr + 1, end, port) : slash;
    if (!split || rest.ec != std::errc{} || rest.ptr != end) {
        throw Failure{"'" + place + "' is not UNIT/PORT"};
    }
    const char *const last = channel.data() + channel.size();
    if (channel != "none") {
        const auto parsed = std::from_chars(channel.data(), last, number);
        if (parsed.ec != std::errc{} || parsed.ptr != last || number == 0) {
            throw Failure{"'" + channel + "' is not a port-channel: 512 to 639, or none"};
        }
    }
    (void)status_of_switch();
    change_configuration([&] {
        switch (cfg_port_set_channel(unit, port, number)) {
        case 0:
            return;
        case -4:
            throw Failure{"port-channel " + channel + ": port-channels are numbered from 512 to 639"};
        default:
            throw Failure{place + ": units are numbered from 0 to 7 and ports from 0 to 51"};
        }
    });
}

} // namespace

void add_stack_commands(CLI::App &app)
{
    auto *stack = app.add_subcommand("stack", "Put units into the status region, or say what they are to be");
    stack->require_subcommand(1);

    auto how = std::make_shared<Populate>();
    auto *populate_command =
        stack->add_subcommand("populate", "Make the stack these units, counted from 0, with everything they announce");
    populate_command->add_option("models", how->models, "MODEL[,MODEL...]: numbers or names")->required();
    populate_command->add_option("--hardware-version", how->version, "Revision of the boards")->capture_default_str();
    populate_command->add_option("--vendor", how->vendor, "Vendor code of the switch")->capture_default_str();
    populate_command->add_flag("--plugged", how->plugged, "With a transceiver in every cage");
    populate_command->callback([how] { populate(*how); });

    stack->add_subcommand("clear", "Take all units out of the status region")->callback(clear);

    auto unit = std::make_shared<int>(-1);
    auto by_command = std::make_shared<bool>(false);
    auto *remove_command = stack->add_subcommand("remove", "Take a unit out of the stack");
    remove_command->add_option("unit", *unit, "Unit, 0 to 7")->required();
    remove_command->add_flag("--by-command", *by_command, "Removed logically, not unplugged");
    remove_command->callback([=] { remove(*unit, *by_command); });

    auto provisioned = std::make_shared<int>(-1);
    auto model = std::make_shared<std::string>();
    auto *provision_command = stack->add_subcommand("provision", "Configure a unit as a model before it is there");
    provision_command->add_option("unit", *provisioned, "Unit, 0 to 7")->required();
    provision_command->add_option("model", *model, "Number or name of the model, or none")->required();
    provision_command->callback([=] { provision(*provisioned, *model); });

    auto place = std::make_shared<std::string>();
    auto channel = std::make_shared<std::string>();
    auto *channel_command = stack->add_subcommand("channel", "Make a port a member of a port-channel");
    channel_command->add_option("port", *place, "UNIT/PORT, both counted from 0")->required();
    channel_command->add_option("channel", *channel, "512 to 639, or none")->required();
    channel_command->callback([=] { join_channel(*place, *channel); });
}

} // namespace switchcfg::tool
