// SPDX-License-Identifier: Apache-2.0
// switchlab shell: into a unit.
#ifndef SWITCHCFG_LAB_STACK_SHELL_COMMAND_H
#define SWITCHCFG_LAB_STACK_SHELL_COMMAND_H

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace switchlab {

struct ShellRequest {
    std::string lab;
    std::string part = "0";
    std::vector<char *> command; // ends with a null pointer; empty for a shell
};

CLI::App *add_shell_command(CLI::App &app, ShellRequest &request);

// Gives the exit status of the command, as `run` does; exit_lab_failed after a line on standard error.
int enter_lab(ShellRequest &request);

} // namespace switchlab

#endif
