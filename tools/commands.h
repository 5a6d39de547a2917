// SPDX-License-Identifier: Apache-2.0
// The families of sub-commands. Each adds its own to the application; what a sub-command does runs in its callback and
// throws Failure when it cannot be done.
#ifndef SWITCHCFG_TOOLS_COMMANDS_H
#define SWITCHCFG_TOOLS_COMMANDS_H

#include <CLI/CLI.hpp>

namespace switchcfg::tool {

void add_init_command(CLI::App &app);
void add_config_commands(CLI::App &app);
void add_lock_commands(CLI::App &app);
void add_env_commands(CLI::App &app);
void add_log_commands(CLI::App &app);
void add_trap_commands(CLI::App &app);
void add_request_command(CLI::App &app);
void add_routing_commands(CLI::App &app);
void add_error_command(CLI::App &app);
void add_process_commands(CLI::App &app);
void add_pm_commands(CLI::App &app);
void add_address_commands(CLI::App &app);
void add_units_command(CLI::App &app);
void add_status_commands(CLI::App &app);
void add_equip_commands(CLI::App &app);
void add_stack_commands(CLI::App &app);
void add_top_command(CLI::App &app);
void add_ports_commands(CLI::App &app);
void add_sntp_commands(CLI::App &app);
void add_cpumon_commands(CLI::App &app);
// Hands the whole command line on to a program of its own,
void add_call_command(CLI::App &app, int argc, char **argv);
// and completion of it,
void complete_call(int argc, char **argv);
// and the writing of its manual page, which replaces the one that knows nothing of it.
void add_to_manual_of_call(int argc, char **argv);

} // namespace switchcfg::tool

#endif
