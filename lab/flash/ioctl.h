// SPDX-License-Identifier: Apache-2.0
#ifndef SWITCHCFG_LAB_FLASH_IOCTL_H
#define SWITCHCFG_LAB_FLASH_IOCTL_H

#include "lab/flash/nor_flash.h"

namespace switchlab {

inline constexpr std::size_t flash_ioctl_max = 64; // no argument of an MTD request we answer is larger

// The MTD requests of a NOR partition. `argument` is as large as the request's number says; `writable` is how the
// descriptor was opened. Gives the ioctl's result or a negative error number.
int flash_ioctl(NorFlash &flash, unsigned long request, void *argument, bool writable) noexcept;

} // namespace switchlab

#endif
