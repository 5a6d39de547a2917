// SPDX-License-Identifier: Apache-2.0
#include "lab/demo/demo_command.h"

#include "lab/demo/story.h"
#include "lab/refusal.h"
#include "lab/sandbox/programs.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <unistd.h>

namespace switchlab {
namespace {

int play(int units)
{
    for (const char *needed : {"switchlab-pm", "switchlab-stackd", "switchlab-loggerd", "switchcfg"}) {
        if (find_companion(needed).empty()) {
            throw Refusal(std::string{needed} + " is missing: it is built and installed with switchlab, beside it");
        }
    }
    // The commands are shown as one types them with one lab up, and are not to meet another.
    ::setenv("SWITCHLAB_NAME", ("demo-" + std::to_string(::getpid())).c_str(), 1);
    demo::Stage stage;
    try {
        demo::tell_story(stage, units);
    } catch (const std::exception &why) { // by now the lab is gone
        std::printf("\nThe demo has failed, after %d checks that passed: %s\n", stage.checks(), why.what());
        return EXIT_FAILURE;
    }
    stage.finish();
    std::printf("\nGo on from here:\n"
                "  switchlab up --units %d -d    the same lab, to play with\n"
                "  switchlab shell 1            look around on unit 1: switchcfg --help says what there is\n"
                "  switchlab logs -f            watch what happens meanwhile\n"
                "  switchlab down               take it down\n",
        units);
    return EXIT_SUCCESS;
}

} // namespace

void add_demo_command(CLI::App &app, int &status)
{
    CLI::App *const command =
        app.add_subcommand("demo", "Tells the main story in less than a minute, each step checked");
    const auto units = std::make_shared<int>(3);
    command->add_option("--units", *units, "Units of the stack")->check(CLI::Range(2, 8))->capture_default_str();
    command->footer("Ends with status 0 when every check has passed, with 1 when one has not.\n\n"
                    "Examples:\n"
                    "  switchlab demo                a stack of three\n"
                    "  switchlab demo --units 8      the largest stack there is\n"
                    "  NO_COLOR=1 switchlab demo     without colours; they are only for terminals anyway");
    command->callback([units, &status] { status = play(*units); });
}

} // namespace switchlab
