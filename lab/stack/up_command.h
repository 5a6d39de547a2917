// SPDX-License-Identifier: Apache-2.0
// switchlab up, down and power: the life of a lab of units.
#ifndef SWITCHCFG_LAB_STACK_UP_COMMAND_H
#define SWITCHCFG_LAB_STACK_UP_COMMAND_H

namespace CLI {
class App;
}

namespace switchlab {

void add_up_command(CLI::App &app, int &status);
void add_down_command(CLI::App &app);
void add_power_command(CLI::App &app);

} // namespace switchlab

#endif
