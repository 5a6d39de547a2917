// SPDX-License-Identifier: Apache-2.0
#include "lab/stack/look_commands.h"
#include "lab/stack/process_tree.h"
#include "lab/stack/progress.h"
#include "lab/stack/visitor.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <unistd.h>

namespace switchlab {
namespace {

using nlohmann::ordered_json;

ordered_json daemon_entry(
    const std::string &name, const std::string &program, const std::string &state, const ProcessInfo *process)
{
    ordered_json entry{{"name", name}, {"program", program}, {"state", state}, {"running", process != nullptr}};
    if (process != nullptr) {
        entry["pid"] = process->pid_inside;
        entry["host_pid"] = process->pid;
    }
    return entry;
}

// What should run by the unit's process list, and what does.
ordered_json daemons_of(const LabPart &part, const std::vector<ProcessInfo> &processes)
{
    ordered_json all = ordered_json::array();
    const auto add = [&](const std::string &name, const std::string &program, const std::string &state) {
        const auto found = std::ranges::find(processes, program, &ProcessInfo::program);
        all.push_back(daemon_entry(name, program, state, found != processes.end() ? &*found : nullptr));
    };
    if (part.number < 0) {
        add("snmptrapd", "snmptrapd", "enabled");
        return all;
    }
    add("process manager", "switchlab-pm", "enabled");
    for (const auto &daemon : part.about["daemons"]) {
        add(daemon.value("name", ""), daemon.value("program", ""), daemon.value("state", ""));
    }
    return all;
}

ordered_json part_entry(const LabPart &part, const ProcessTree &tree)
{
    ordered_json entry;
    if (part.number >= 0) {
        entry["unit"] = part.number;
    }
    entry["name"] = part.name;
    // The lab tells a little later that a unit has ended; nobody may take a dead one for ready.
    const int first = std::max(pid_of(part.process), 0);
    entry["state"] = part.process && first == 0 ? "going off" : part.stage;
    for (const char *key : {"model", "model_name", "management", "control", "stacking"}) {
        if (part.about.contains(key)) {
            entry[key] = part.about[key];
        }
    }
    entry["host_pid"] = first;
    entry["daemons"] = daemons_of(part, tree.below(first));
    return entry;
}

ordered_json state_of_lab(const LabView &lab)
{
    const ProcessTree tree;
    const std::vector<ProcessInfo> all = tree.below(pid_of(lab.process));
    long memory = 0;
    for (const ProcessInfo &process : all) {
        memory += ProcessTree::memory_kib(process.pid);
    }
    ordered_json state{{"name", lab.about["name"]}, {"age_ms", lab.about["age_ms"]},
        {"ready_ms", lab.about["ready_ms"]}, {"keeper_pid", lab.about["keeper"]}, {"processes", all.size()},
        {"memory_kib", memory}, {"units", ordered_json::array()}};
    for (const LabPart &part : lab.parts) {
        if (part.number < 0) {
            state["station"] = part_entry(part, tree);
        } else {
            state["units"].push_back(part_entry(part, tree));
        }
    }
    return state;
}

void print_daemons(const ordered_json &part)
{
    for (const auto &daemon : part["daemons"]) {
        const bool running = daemon["running"];
        const bool wanted = daemon["state"] == "enabled";
        const bool red = !running && wanted && colour_wanted(STDOUT_FILENO);
        std::printf("%-9s %-17s %-20s ", part["name"].get<std::string>().c_str(),
            daemon["name"].get<std::string>().c_str(), daemon["program"].get<std::string>().c_str());
        if (running) {
            std::printf("%6d %9d\n", daemon["pid"].get<int>(), daemon["host_pid"].get<int>());
        } else {
            std::printf("%s%6s %9s%s\n", red ? "\033[31m" : "", "-", wanted ? "down" : "off", red ? "\033[0m" : "");
        }
    }
}

void print_state(const ordered_json &state)
{
    std::printf("lab '%s', up for %lld s, %d processes, %.1f MiB\n\n", state["name"].get<std::string>().c_str(),
        state["age_ms"].get<long long>() / 1000, state["processes"].get<int>(),
        state["memory_kib"].get<double>() / 1024);
    std::printf("%-9s %-6s %-28s %-12s %s\n", "PART", "STATE", "MODEL", "MANAGEMENT", "STACKING");
    const auto row = [](const ordered_json &part, const char *model, const std::string &stacking) {
        std::printf("%-9s %-6s %-28s %-12s %s\n", part["name"].get<std::string>().c_str(),
            part["state"].get<std::string>().c_str(), model, part["management"].get<std::string>().c_str(),
            stacking.c_str());
    };
    for (const auto &unit : state["units"]) {
        row(unit, unit["model_name"].get<std::string>().c_str(), unit["stacking"].get<std::string>() + "%atp");
    }
    row(state["station"], "", "");
    std::printf("\n%-9s %-17s %-20s %6s %9s\n", "PART", "DAEMON", "PROGRAM", "PID", "HOST PID");
    for (const auto &unit : state["units"]) {
        print_daemons(unit);
    }
    print_daemons(state["station"]);
}

} // namespace

void add_status_command(CLI::App &app)
{
    CLI::App *const command = app.add_subcommand("status", "Units, addresses and daemons of a lab");
    const auto name = std::make_shared<std::string>();
    const auto as_json = std::make_shared<bool>(false);
    command->add_option("--name", *name, "Which lab, when there are several")->envname(lab_name_variable);
    command->add_flag("--json", *as_json, "As JSON");
    command->footer("Examples:\n"
                    "  switchlab status\n"
                    "  switchlab status --json | jq '.units[].daemons[] | select(.running) | .name'\n");
    command->callback([=] {
        const ordered_json state = state_of_lab(view_lab(*name));
        if (*as_json) {
            std::puts(state.dump(2).c_str());
        } else {
            print_state(state);
        }
    });
}

} // namespace switchlab
