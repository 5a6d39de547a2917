// SPDX-License-Identifier: Apache-2.0
// switchlab run: the options of a lab.
#ifndef SWITCHCFG_LAB_RUN_COMMAND_H
#define SWITCHCFG_LAB_RUN_COMMAND_H

#include "lab/sandbox/sandbox.h"

namespace CLI {
class App;
}

namespace switchlab {

CLI::App *add_run_command(CLI::App &app, RunRequest &request);

} // namespace switchlab

#endif
