// SPDX-License-Identifier: Apache-2.0
// The flash device as a file of its own little file system: every program sees it, whatever it is linked with.
#ifndef SWITCHCFG_LAB_FLASH_FUSE_H
#define SWITCHCFG_LAB_FLASH_FUSE_H

#include "util/owned.h"

namespace switchlab {

// Mounts at /dev/flash_env; nothing, with errno, when the kernel does not let us. Calls wait until the server runs.
switchcfg::Descriptor mount_flash_fuse();
// Serves the calls in a child process, for as long as the lab lives.
void start_flash_fuse(switchcfg::Descriptor connection);

} // namespace switchlab

#endif
