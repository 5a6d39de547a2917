// SPDX-License-Identifier: Apache-2.0
// switchlab: the switch on a workstation.
#include "lab/demo/demo_command.h"
#include "lab/flash/command.h"
#include "lab/run_command.h"
#include "lab/sandbox/sandbox.h"
#include "lab/stack/look_commands.h"
#include "lab/stack/shell_command.h"
#include "lab/stack/up_command.h"
#include "tools/command_line/served_words.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr char exit_statuses[] =
    "0 done, 125 could not be done or wrong usage, the reason on standard error. run and\n"
    "shell end with the status of their command, 128 + N when signal N ended it, 127 when\n"
    "it is not found, 126 when it cannot be executed. demo and up -d: 1 when the lab came\n"
    "up but something is amiss.\n";

} // namespace

int main(int argc, char **argv)
try {
    // What stands behind "--" is somebody else's command line.
    char **const end = argv + argc;
    char **const separator = std::find_if(argv, end, [](const char *word) { return std::string_view{word} == "--"; });

    CLI::App app{"The switch on a workstation: private folders, devices, network and processes", "switchlab"};
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
    switchlab::add_demo_command(app, status);
    switchlab::add_flash_command(app);
    app.footer("Examples:\n"
               "  switchlab demo                 what there is, shown and checked\n"
               "  switchlab up --units 3 -d      a stack of three units, in the background\n"
               "  switchlab shell 1              a shell on unit 1 of it\n"
               "  switchlab run -- bash          a shell on an empty switch, without daemons\n\n"
               "Exit status: " +
               std::string{exit_statuses});
    const std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    if (switchcfg::tool::served_shell_or_packaging(app, words, exit_statuses)) {
        return 0;
    }
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
