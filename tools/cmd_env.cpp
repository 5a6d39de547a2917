// SPDX-License-Identifier: Apache-2.0
// switchcfg env: the boot loader's variables, in the switch or in an image file.
#include "core/status_layout.h"
#include "tools/attach.h"
#include "tools/command_line/failure.h"
#include "tools/command_line/output.h"
#include "tools/commands.h"
#include "tools/env_access.h"
#include "tools/env_commands.h"
#include "tools/env_text.h"
#include "tools/lock_hold.h"

#include <fstream>
#include <iostream>
#include <memory>
#include <switchcfg/bootenv.h>
#include <switchcfg/status.h>

namespace switchcfg::tool {
namespace {

constexpr char own_mark[] = "HV";

struct Arguments {
    std::string image; // empty: the switch
    std::string name;
    std::string value;
    std::string file;
    bool save = false;
    bool replace = false;
    bool force = false;
    FeatureChange features;

    bool offline() const { return !image.empty(); }
    std::unique_ptr<EnvironmentAccess> access(bool may_be_missing = false) const
    {
        return offline() ? image_access(image, may_be_missing) : shadow_access();
    }
};

Json json_of(const Variables &variables)
{
    Json json = Json::object();
    for (const Variable &variable : variables) {
        json[variable.name] = variable.value;
    }
    return json;
}

void list(const Arguments &arguments)
{
    const Variables variables = arguments.access()->variables();
    print(json_of(variables), [&] {
        Table table{{"VARIABLE", "VALUE"}};
        for (const Variable &variable : variables) {
            table.add({escaped(variable.name), escaped(variable.value)});
        }
        table.print();
    });
}

void get(const Arguments &arguments)
{
    const auto value = value_in(arguments.access()->variables(), arguments.name);
    if (!value) {
        throw Failure{"no variable is named '" + arguments.name + "'"};
    }
    print({{arguments.name, *value}}, [&] { std::cout << *value << '\n'; });
}

void change(const Arguments &arguments, const std::vector<Change> &changes, bool may_be_missing = false)
{
    arguments.access(may_be_missing)->change(changes);
    if (arguments.save) {
        save_environment();
    }
}

void unset(const Arguments &arguments)
{
    if (!value_in(arguments.access()->variables(), arguments.name)) {
        throw Failure{"no variable is named '" + arguments.name + "'"};
    }
    if (arguments.name == own_mark && !arguments.force) {
        throw Failure{"HV marks the environment as the switch's own: saved without it, flash is written from the "
                      "backup at every start, and the switch restarts each time. --force removes it all the same"};
    }
    change(arguments, {{arguments.name, {}}});
}

void export_text(const Arguments &arguments)
{
    const Variables variables = arguments.access()->variables();
    if (arguments.file.empty()) {
        print(json_of(variables), [&] { write_text(std::cout, variables); });
        return;
    }
    std::ofstream file{arguments.file};
    write_text(file, variables);
    file.close();
    if (!file) {
        throw system_failure(arguments.file, "cannot write");
    }
}

void import_text(const Arguments &arguments)
{
    Variables read;
    if (arguments.file.empty() || arguments.file == "-") {
        read = read_text(std::cin, "standard input");
    } else {
        std::ifstream file{arguments.file};
        if (!file) {
            throw system_failure(arguments.file, "cannot open");
        }
        read = read_text(file, arguments.file);
    }
    std::vector<Change> changes;
    if (arguments.replace) {
        for (const Variable &old : arguments.access(true)->variables()) {
            if (!value_in(read, old.name) && old.name != own_mark) {
                changes.push_back({old.name, {}});
            }
        }
    }
    for (const Variable &variable : read) {
        changes.push_back({variable.name, variable.value});
    }
    change(arguments, changes, true);
}

void check(const Arguments &arguments)
{
    if (arguments.offline()) {
        check_image(arguments.image);
        return;
    }
    // Even a switch that could load nothing has something to tell.
    attach();
    check_switch(bootenv_init() == 0 ? shadow_access()->variables() : Variables{});
}

void features(const Arguments &arguments)
{
    const auto access = arguments.access();
    if (arguments.features.on.empty() && arguments.features.off.empty()) {
        print_features(access->variables(), !arguments.offline());
    } else if (arguments.offline()) {
        change_features_of_image(*access, arguments.features);
    } else {
        change_features_of_switch(*access, arguments.features);
    }
}

void back_up(const Arguments & /*arguments*/)
{
    attach();
    const LockHold hold{cfg_lock_table[CFG_LOCK_CFG]};
    expect_done(bootenv_boot_to_flash(), "/mnt/flash/bkp/env", "the backup cannot be made");
}

void restore(const Arguments & /*arguments*/)
{
    attach();
    const LockHold hold{cfg_lock_table[CFG_LOCK_CFG]};
    expect_done(bootenv_flash_to_boot(), "/dev/flash_env", "the backup cannot be written to flash");
    // The shadow is loaded anew: the next save must not bring back what was there before.
    bytes(static_cast<std::uint8_t *>(get_status()), status_layout::boot_environment)[0] = 0;
    expect_done(bootenv_init(), "/dev/flash_env", "what was written cannot be loaded");
}

void start(const Arguments & /*arguments*/)
{
    attach();
    const LockHold hold{cfg_lock_table[CFG_LOCK_CFG]};
    if (const int result = bootenv_backup(); result != -1) {
        expect_done(result, "/mnt/flash/bkp/env", "the backup cannot be made");
    }
}

using Action = void (*)(const Arguments &);

CLI::App *add(CLI::App &env, const std::shared_ptr<Arguments> &arguments, const char *name, const char *about,
    Action action, bool offline_too)
{
    auto *command = env.add_subcommand(name, about);
    command->callback([=] {
        if (arguments->offline() && !offline_too) {
            throw Failure{std::string{name} + " is for the switch, not for an image file"};
        }
        if (arguments->offline() && arguments->save) {
            throw Failure{"--save is for the switch: an image file is written at once"};
        }
        action(*arguments);
    });
    return command;
}

} // namespace

void add_env_commands(CLI::App &app)
{
    auto *env = app.add_subcommand("env", "The boot loader's variables");
    env->require_subcommand(1);
    env->footer("Changes are made in memory, where every process sees them; save writes them to flash and backup.");
    auto arguments = std::make_shared<Arguments>();
    env->add_option("--image", arguments->image, "Act on an image file instead of the switch");
    const auto add_save = [&](CLI::App *command) {
        command->add_flag("--save", arguments->save, "Save at once");
        return command;
    };

    add(*env, arguments, "list", "Print all variables", list, true);
    add(*env, arguments, "get", "Print the value of a variable", get, true)
        ->add_option("name", arguments->name)
        ->required();

    auto *set_command = add_save(add(
        *env, arguments, "set", "Set a variable",
        [](const Arguments &given) {
            change(given, {{given.name, given.value}});
        },
        true));
    set_command->add_option("name", arguments->name)->required();
    set_command->add_option("value", arguments->value, "Its value; put -- in front of one that begins with -")
        ->required();

    auto *unset_command = add_save(add(*env, arguments, "unset", "Remove a variable", unset, true));
    unset_command->add_option("name", arguments->name)->required();
    unset_command->add_flag("--force", arguments->force, "Even HV, which marks the environment as the switch's own");

    add(
        *env, arguments, "save", "Write the variables to flash, and to the backup",
        [](const Arguments &) { save_environment(); }, false);
    add(*env, arguments, "backup", "Copy flash to the backup file", back_up, false);
    add(*env, arguments, "restore", "Write the backup file to flash and load it", restore, false);
    add(*env, arguments, "start",
        "The decision of a starting switch: keep flash and backup in step, or restore and RESTART", start, false);
    add(*env, arguments, "check",
        "Check CRC and space, and compare memory, flash and backup; exit status 1 when something is wrong", check,
        true);

    auto *fbmp =
        add(*env, arguments, "fbmp", "Print the feature bitmap, or change it by name and save", features, true);
    fbmp->add_option("--on", arguments->features.on, "Features to enable: " + feature_names());
    fbmp->add_option("--off", arguments->features.off, "Features to disable");
    fbmp->add_flag("--anyway", arguments->features.anyway, "Whatever the hardware of unit 0 can do");

    add(*env, arguments, "export", "Print the variables as text that import takes", export_text, true)
        ->add_option("file", arguments->file, "File to write instead of standard output");
    auto *import_command = add_save(add(*env, arguments, "import", "Set variables from text", import_text, true));
    import_command->add_option(
        "file", arguments->file, "Text of lines NAME=VALUE; standard input without one or for -");
    import_command->add_flag("--replace", arguments->replace, "Remove all others but HV");
}

} // namespace switchcfg::tool
