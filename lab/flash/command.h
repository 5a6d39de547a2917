// SPDX-License-Identifier: Apache-2.0
// switchlab flash: the test bench of the flash device, from inside its lab.
#ifndef SWITCHCFG_LAB_FLASH_COMMAND_H
#define SWITCHCFG_LAB_FLASH_COMMAND_H

namespace CLI {
class App;
}

namespace switchlab {

void add_flash_command(CLI::App &app);

} // namespace switchlab

#endif
