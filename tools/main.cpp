// SPDX-License-Identifier: Apache-2.0
// switchcfg: what a process of the switch sees, and how to change it.
#include "tools/command_line/examples.h"
#include "tools/command_line/run.h"
#include "tools/commands.h"

// NOLINTNEXTLINE(bugprone-exception-escape): without memory for its own options the tool can only end
int main(int argc, char **argv)
{
    using namespace switchcfg::tool;

    complete_call(argc, argv);
    CLI::App app{"Inspect and drive the switch: what a process that links libswitchcfg sees.", "switchcfg"};
    app.require_subcommand(1);
    app.fallthrough();
    app.footer("Exit status: 0 done, 1 could not be done, 2 wrong usage.\n"
               "Without a switch, run it in a lab: switchlab run -- switchcfg ...");
    add_init_command(app);
    add_config_commands(app);
    add_lock_commands(app);
    add_env_commands(app);
    add_log_commands(app);
    add_trap_commands(app);
    add_request_command(app);
    add_routing_commands(app);
    add_error_command(app);
    add_units_command(app);
    add_status_commands(app);
    add_equip_commands(app);
    add_stack_commands(app);
    add_ports_commands(app);
    add_sntp_commands(app);
    add_cpumon_commands(app);
    add_process_commands(app);
    add_pm_commands(app);
    add_address_commands(app);
    add_call_command(app, argc, argv);
    add_top_command(app);
    add_examples(app, switchcfg_examples());

    const int status = run(app, argc, argv);
    add_to_manual_of_call(argc, argv);
    return status;
}
