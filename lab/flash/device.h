// SPDX-License-Identifier: Apache-2.0
// Puts a simulated flash partition at /dev/flash_env of a lab.
#ifndef SWITCHCFG_LAB_FLASH_DEVICE_H
#define SWITCHCFG_LAB_FLASH_DEVICE_H

#include "lab/flash/nor_flash.h"

#include <optional>
#include <string>

namespace switchlab {

struct FlashRequest {
    bool wanted = false;
    std::string image; // where the content outlives the lab; empty: it does not
    std::optional<std::uint32_t> size;
    FlashGeometry geometry;
    std::string library;                     // what is preloaded where FUSE cannot be used
    std::optional<FlashMechanism> mechanism; // none: FUSE when the kernel lets us, else the preloaded library
};

// Outside the lab: completes the request (size and absolute paths) and makes sure that the image file is there.
void prepare_flash(FlashRequest &request);

// In the first process of the lab, with the folders in place: makes the device and starts what serves it. Sets the
// environment of the command where the mechanism needs it.
void start_flash_device(const FlashRequest &request);

} // namespace switchlab

#endif
