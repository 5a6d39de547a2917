// SPDX-License-Identifier: Apache-2.0
// switchlab: the switch on a workstation.
#include "lab/flash_command.h"
#include "lab/run_command.h"
#include "lab/sandbox.h"

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
    switchlab::RunRequest request;
    const CLI::App *const run = switchlab::add_run_command(app, request);
    switchlab::add_flash_command(app);
    try {
        app.parse(static_cast<int>(separator - argv), argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? 0 : switchlab::exit_lab_failed;
    }
    if (!run->parsed()) {
        return 0;
    }
    if (separator == end || separator + 1 == end) {
        std::fputs("switchlab: no command given: switchlab run [OPTION]... -- COMMAND [ARGUMENT]...\n", stderr);
        return switchlab::exit_lab_failed;
    }
    request.command.assign(separator + 1, end + 1); // with the null pointer that ends argv
    return switchlab::run_in_lab(request);
} catch (const std::exception &why) {
    std::fprintf(stderr, "switchlab: %s\n", why.what());
    return switchlab::exit_lab_failed;
}
