// SPDX-License-Identifier: Apache-2.0
// /dev: the devices every program expects, terminals of the lab's own, and room for devices that are put there.
#ifndef SWITCHCFG_LAB_SANDBOX_DEVICE_FOLDER_H
#define SWITCHCFG_LAB_SANDBOX_DEVICE_FOLDER_H

#include <string>

namespace switchlab {

// Puts the folder together below `scaffold`, a folder of a private mount, and moves it to /dev.
void mount_device_folder(const std::string &scaffold);

} // namespace switchlab

#endif
