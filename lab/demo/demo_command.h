// SPDX-License-Identifier: Apache-2.0
// switchlab demo: the main story in less than a minute.
#ifndef SWITCHCFG_LAB_DEMO_DEMO_COMMAND_H
#define SWITCHCFG_LAB_DEMO_DEMO_COMMAND_H

namespace CLI {
class App;
}

namespace switchlab {

void add_demo_command(CLI::App &app, int &status);

} // namespace switchlab

#endif
