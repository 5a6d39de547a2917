// SPDX-License-Identifier: Apache-2.0
// switchcfg trap: raise notifications, say which are wanted, look at the queue and drain it.
#include "tools/attach.h"
#include "tools/command_line/failure.h"
#include "tools/command_line/output.h"
#include "tools/commands.h"
#include "tools/trap_senders.h"

#include "core/config_layout.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <map>
#include <memory>
#include <stdexcept>
#include <switchcfg/config_region.h>
#include <switchcfg/error.h>
#include <switchcfg/ports.h>
#include <switchcfg/trap.h>
#include <unistd.h>

namespace switchcfg::tool {
namespace {

using Words = std::vector<std::string>;

std::string name_of(std::uint32_t id)
{
    for (const TrapSender &sender : trap_senders()) {
        if (std::ranges::find(sender.ids, static_cast<int>(id)) != sender.ids.end()) {
            return sender.name;
        }
    }
    return id == TRAP_OVERFLOW ? "(traps were lost)" : "(unknown)";
}

const char *type_name(char type)
{
    switch (type) {
    case 'i':
        return "integer";
    case 'u':
        return "unsigned";
    case 's':
        return "string";
    case 'a':
        return "address";
    default:
        return "object";
    }
}

std::vector<trap_entry> queued(int (*take)(trap_entry *, int) noexcept)
{
    std::vector<trap_entry> traps(TRAP_QUEUE_LENGTH);
    const int count = take(traps.data(), TRAP_QUEUE_LENGTH);
    if (count < 0) {
        throw system_failure("trap queue", "cannot be had");
    }
    traps.resize(static_cast<std::size_t>(count));
    return traps;
}

Json json_of(const trap_entry &trap)
{
    Json bindings = Json::array();
    const char *at = trap.text;
    trap_varbind binding{};
    while (trap_queue_next_varbind(&at, &binding) > 0) {
        bindings.push_back({{"oid", binding.oid}, {"type", type_name(binding.type)}, {"value", binding.value}});
    }
    Json json{{"id", trap.id}, {"name", name_of(trap.id)}, {"bindings", bindings}};
    if (*at != '\0') {
        json["unreadable"] = at;
    }
    return json;
}

void print_trap(const trap_entry &trap)
{
    const Json json = json_of(trap);
    std::cout << trap.id << ' ' << json["name"].get<std::string>() << '\n';
    for (const Json &binding : json["bindings"]) {
        std::cout << "    " << binding["oid"].get<std::string>() << " = " << binding["type"].get<std::string>() << ' '
                  << binding["value"].get<std::string>() << '\n';
    }
    if (json.contains("unreadable")) {
        std::cout << "    unreadable: " << json["unreadable"].get<std::string>() << '\n';
    }
}

void show(int (*take)(trap_entry *, int) noexcept)
{
    attach();
    const std::vector<trap_entry> traps = queued(take);
    Json json = Json::array();
    for (const trap_entry &trap : traps) {
        json.push_back(json_of(trap));
    }
    print(json, [&] { std::ranges::for_each(traps, print_trap); });
}

// Takes the traps as an agent would, and prints each as it comes.
void watch(double interval_s, unsigned count)
{
    attach();
    for (unsigned printed = 0; count == 0 || printed < count;) {
        std::vector<trap_entry> traps(
            count == 0 ? TRAP_QUEUE_LENGTH : std::min<std::size_t>(count - printed, TRAP_QUEUE_LENGTH));
        const int taken = trap_queue_drain(traps.data(), static_cast<int>(traps.size()));
        if (taken < 0) {
            throw system_failure("trap queue", "cannot be had");
        }
        for (int i = 0; i < taken; ++i, ++printed) {
            const trap_entry &trap = traps[static_cast<std::size_t>(i)];
            if (json_wanted()) {
                std::cout << json_of(trap).dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
            } else {
                print_trap(trap);
            }
        }
        std::cout.flush();
        if (taken == 0) {
            (void)::usleep(static_cast<useconds_t>(interval_s * 1e6));
        }
    }
}

void send(const TrapSender &sender, const Words &words)
{
    attach();
    int result = 0;
    try {
        result = sender.call(words);
    } catch (const std::invalid_argument &wrong) {
        throw Failure{sender.name + ": " + wrong.what()};
    }
    if (result != 0) {
        throw Failure{sender.name + ": not queued: " + cfg_strerror(result) + " (" + std::to_string(result) + ")"};
    }
}

struct PortChoice {
    std::uint32_t unit = 0;
    std::uint32_t port = 0;
    std::uint32_t channel = 0; // 512 to 639, instead of both
};

PortChoice port_of(const std::string &text)
{
    unsigned unit = 0;
    unsigned port = 0;
    char more = 0;
    if (std::sscanf(text.c_str(), "%1u/%2u%c", &unit, &port, &more) == 2 && unit >= 1 && unit <= 8 && port >= 1 &&
        port <= 52) {
        return {unit - 1, port - 1};
    }
    unsigned channel = 0;
    if (std::sscanf(text.c_str(), "%3u%c", &channel, &more) == 1 && channel >= CFG_PORT_CHANNEL_FIRST &&
        channel <= CFG_PORT_CHANNEL_LAST) {
        return {0, 0, channel};
    }
    throw Failure{"'" + text + "' is no port: UNIT/PORT, from 1/1 to 8/52, or a port-channel, 512 to 639"};
}

// Of port-channels only the transceivers' flag is looked at.
bool has_flag(const TrapSender &sender, const PortChoice &port)
{
    return sender.port_byte >= 0 && (port.channel == 0 || sender.name == "sfp_changed");
}

void enable_by_port(std::uint8_t *config, const TrapSender &sender, const PortChoice &port, std::uint8_t value)
{
    const auto flag = static_cast<std::size_t>(sender.port_byte);
    if (port.channel != 0) {
        bytes(config, config_layout::trap_channel_enable, port.channel - CFG_PORT_CHANNEL_FIRST)[flag] = value;
        return;
    }
    bytes(config, config_layout::trap_port_enable, port.unit, port.port)[flag] = value;
    // The two link traps have one more flag in common, which also is the port's.
    if (value != 0 && (sender.name == "linkUp" || sender.name == "linkDown")) {
        store(config, config_layout::trap_link_enable, 1, port.unit, port.port);
    }
}

void enable(const std::string &name, const std::string &port_text, bool enabled)
{
    attach();
    auto *config = static_cast<std::uint8_t *>(cfg_get_cfg());
    const auto value = static_cast<std::uint8_t>(enabled ? 1 : 0);
    const bool by_port = !port_text.empty();
    const PortChoice port = by_port ? port_of(port_text) : PortChoice{};
    bool found = false;
    for (const TrapSender &sender : trap_senders()) {
        if (name != "all" && name != sender.name) {
            continue;
        }
        found = true;
        if (!by_port) {
            for (const int id : sender.ids) {
                store(config, config_layout::trap_enable, value, id);
            }
            continue;
        }
        if (has_flag(sender, port)) {
            enable_by_port(config, sender, port, value);
        } else if (name != "all") {
            throw Failure{name + ": has no flag by " + (port.channel != 0 ? "port-channel" : "port")};
        }
    }
    if (!found) {
        throw Failure{"'" + name + "' is no trap; 'switchcfg trap send --help' lists them"};
    }
    if (cfg_data_sync() != 0) {
        throw system_failure(CFG_RUNNING_PATH, "cannot write back");
    }
}

std::string help_of(TrapArgument type)
{
    switch (type) {
    case TrapArgument::integer:
        return "NUMBER";
    case TrapArgument::unsigned_integer:
        return "NUMBER, not negative";
    case TrapArgument::mac:
        return "MAC address, 00:1A:2B:3C:4D:5E";
    case TrapArgument::link:
        return "up or down";
    default:
        return "TEXT";
    }
}

const char *example_of(TrapArgument type)
{
    switch (type) {
    case TrapArgument::integer:
    case TrapArgument::unsigned_integer:
        return " 1";
    case TrapArgument::mac:
        return " 00:1A:2B:3C:4D:5E";
    case TrapArgument::link:
        return " down";
    default:
        return " name";
    }
}

void add_send(CLI::App &trap)
{
    auto *send_command = trap.add_subcommand("send", "Raise a notification, as a daemon does");
    send_command->require_subcommand(1);
    send_command->footer("Units and ports count from 0 here, as in the library's interface.");
    for (const TrapSender &sender : trap_senders()) {
        std::string ids;
        for (const int id : sender.ids) {
            ids += (ids.empty() ? "Trap " : " or ") + std::to_string(id);
        }
        auto *one = send_command->add_subcommand(sender.name, ids);
        auto words = std::make_shared<Words>(sender.arguments.size());
        std::string example = sender.name;
        for (std::size_t i = 0; i < sender.arguments.size(); ++i) {
            one->add_option(sender.arguments[i] + ",--" + sender.arguments[i], (*words)[i])
                ->type_name(help_of(sender.types[i]))
                ->required();
            example += example_of(sender.types[i]);
        }
        one->footer(send_command->get_footer() + "\n\nExamples:\n  switchcfg trap send " + example);
        one->callback([&sender, words] { send(sender, *words); });
    }
}

} // namespace

void add_trap_commands(CLI::App &app)
{
    auto *trap = app.add_subcommand("trap", "SNMP notifications and the queue they wait in");
    trap->require_subcommand(1);
    trap->add_subcommand("list", "The queue, oldest first")->callback([] { show(trap_queue_peek); });
    trap->add_subcommand("drain", "Take everything out of the queue and print it")->callback([] {
        show(trap_queue_drain);
    });
    add_send(*trap);

    auto name = std::make_shared<std::string>();
    auto port = std::make_shared<std::string>();
    for (const bool enabled : {true, false}) {
        auto *command = trap->add_subcommand(
            enabled ? "enable" : "disable", enabled ? "Let notifications be sent" : "Let notifications be dropped");
        command->add_option("name", *name, "NAME as for send, or all")->required();
        command->add_option("--port", *port, "UNIT/PORT, from 1/1, or a port-channel: its flags instead");
        command->callback([=] { enable(*name, *port, enabled); });
    }

    auto interval_s = std::make_shared<double>(0.1);
    auto count = std::make_shared<unsigned>(0);
    auto *watch_command = trap->add_subcommand("watch", "Take traps out of the queue as they come, and print them");
    watch_command->add_option("--interval", *interval_s, "Seconds between two looks")
        ->check(CLI::Range(0.01, 3600.0))
        ->capture_default_str();
    watch_command->add_option("--count", *count, "End after so many traps");
    watch_command->callback([=] { watch(*interval_s, *count); });
}

} // namespace switchcfg::tool
