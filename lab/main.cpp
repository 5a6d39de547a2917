// SPDX-License-Identifier: Apache-2.0
// switchlab: the switch on a workstation.
#include "lab/flash_command.h"
#include "lab/run_command.h"
#include "lab/sandbox.h"
#include "lab/stack/look_commands.h"
#include "lab/stack/shell_command.h"
#include "lab/stack/up_command.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <string_view>

int main(int argc, char **argv)
try {
    // What stands behind "--" is somebody else's command line.
    char **const end = argv + argc;
    char **const separator = std::find_if(argv, end, [](const char *word) { return std::string_view{word} == "--"; });

    CLI::App app{"The switch on a workstation: private folders, devices, network and processes"};
    app.require_subcommand(1);
    int status = 0;
    switchlab::RunRequest run_request;
    switchlab::ShellRequest shell_request;
    const CLI::App *const run = switchlab::add_run_command(app, run_request);
    switchlab::add_up_command(app, status);
    const CLI::App *const shell = switchlab::add_shell_command(app, shell_request);
    switchlab::add_status_command(app);
    switchlab::add_logs_command(app);
    switchlab::add_power_command(app);
    switchlab::add_down_command(app);
    switchlab::add_flash_command(app);
    try {
        app.parse(static_cast<int>(separator - argv), argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? 0 : switchlab::exit_lab_failed;
    }
    const bool command_given = separator != end && separator + 1 != end;
    if (shell->parsed()) {
        if (command_given) {
            shell_request.command.assign(separator + 1, end + 1); // with the null pointer that ends argv
        }
        return switchlab::enter_lab(shell_request);
    }
    if (!run->parsed()) {
        return status;
    }
    if (!command_given) {
        std::fputs("switchlab: no command given: switchlab run [OPTION]... -- COMMAND [ARGUMENT]...\n", stderr);
        return switchlab::exit_lab_failed;
    }
    run_request.command.assign(separator + 1, end + 1);
    return switchlab::run_in_lab(run_request);
} catch (const std::exception &why) {
    std::fprintf(stderr, "switchlab: %s\n", why.what());
    return switchlab::exit_lab_failed;
}
