// SPDX-License-Identifier: Apache-2.0
// switchlab status and logs: what a lab is doing.
#ifndef SWITCHCFG_LAB_STACK_LOOK_COMMANDS_H
#define SWITCHCFG_LAB_STACK_LOOK_COMMANDS_H

namespace CLI {
class App;
}

namespace switchlab {

void add_status_command(CLI::App &app);
void add_logs_command(CLI::App &app);

} // namespace switchlab

#endif
