// SPDX-License-Identifier: Apache-2.0
// switchcfg-call: what `switchcfg call` runs.
#include "tools/call/commands.h"
#include "tools/command_line/examples.h"
#include "tools/command_line/run.h"

// NOLINTNEXTLINE(bugprone-exception-escape): without memory for its own options the tool can only end
int main(int argc, char **argv)
{
    using namespace switchcfg::tool;

    CLI::App app{"Call a function of the switch-chip daemon.", "switchcfg call"};
    app.require_subcommand(1);
    app.fallthrough();
    app.footer("Exit status: 0 done, 1 could not be done (a negative result too), 2 wrong usage.\n"
               "In a lab: switchlab-bcmd & switchcfg call unit-port state-get 0 1");
    add_function_commands(app);
    add_list_command(app);
    add_stats_command(app);
    add_examples(app, call_examples());
    return run(app, argc, argv);
}
