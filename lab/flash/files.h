// SPDX-License-Identifier: Apache-2.0
// Where the flash device of a lab keeps its state, and how a process of the lab gets at it.
#ifndef SWITCHCFG_LAB_FLASH_FILES_H
#define SWITCHCFG_LAB_FLASH_FILES_H

#include "lab/flash/nor_flash.h"

#include <optional>

namespace switchlab {

inline constexpr char flash_device_path[] = "/dev/flash_env";
inline constexpr char flash_folder_path[] = "/dev/.flash";
inline constexpr char flash_image_path[] = "/dev/.flash/image"; // the bare content
inline constexpr char flash_state_path[] = "/dev/.flash/state"; // FlashState

// Maps both files for the life of the process; nothing, with errno, when this lab has no flash device.
std::optional<NorFlash> attach_flash() noexcept;

} // namespace switchlab

#endif
