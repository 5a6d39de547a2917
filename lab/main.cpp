// SPDX-License-Identifier: Apache-2.0
// switchlab: the switch on a workstation.
#include "lab/sandbox.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <string_view>

int main(int argc, char **argv)
{
    // What stands behind "--" is somebody else's command line.
    char **const end = argv + argc;
    char **const separator = std::find_if(argv, end, [](const char *word) { return std::string_view{word} == "--"; });

    CLI::App app{"The switch on a workstation: private folders, network and processes"};
    app.require_subcommand(1);

    switchlab::RunRequest request;
    CLI::App *run = app.add_subcommand(
        "run", "Runs a command in a lab of its own: switchlab run [--keep DIR]... -- COMMAND [ARGUMENT]...");
    run->add_option("--keep", request.keep, "Folder below /var, /tmp, /mnt or /dev that stays visible (repeatable)")
        ->allow_extra_args(false);
    run->footer(
        "Exit status: the command's own, 128 + N when signal N ended it, 127 when it is not found, 126 when it cannot\n"
        "be executed, 125 when the lab cannot be made.");

    try {
        app.parse(static_cast<int>(separator - argv), argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? 0 : switchlab::exit_lab_failed;
    }
    if (separator == end || separator + 1 == end) {
        std::fputs("switchlab: no command given: switchlab run [--keep DIR]... -- COMMAND [ARGUMENT]...\n", stderr);
        return switchlab::exit_lab_failed;
    }
    request.command.assign(separator + 1, end + 1); // with the null pointer that ends argv
    return switchlab::run_in_lab(request);
}
