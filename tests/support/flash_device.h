// SPDX-License-Identifier: Apache-2.0
// The flash partition of the lab that a test case runs in: its content, and the bench that makes it fail.
// For tests made with switchcfg_test(NAME ... LAB --flash): each case finds an erased device of its own at
// /dev/flash_env.
#ifndef SWITCHCFG_TESTS_SUPPORT_FLASH_DEVICE_H
#define SWITCHCFG_TESTS_SUPPORT_FLASH_DEVICE_H

#include "lab/flash/files.h"
#include "lab/flash/nor_flash.h"
#include "support/test.h"

#include <span>

namespace switchcfg::testing {

// What it inherits needs no system call: fail_erase(), fail_program(), cut_after(), power_on(), rot(), operations(),
// and content(), the bytes in the chip whether it has power or not.
class FlashDevice : public switchlab::NorFlash {
  public:
    static constexpr const char *path = "/dev/flash_env";

    FlashDevice() : NorFlash(switchlab::attach_flash().value()) {} // throws when this lab has no flash device
    std::vector<std::uint8_t> copy() const { return {content().begin(), content().end()}; }
    // Exactly these, as if taken out and put into a programmer; as many as the device has.
    void restore(std::span<const std::uint8_t> bytes) { std::ranges::copy(bytes, content().begin()); }
    void erase_chip() { std::ranges::fill(content(), std::uint8_t{0xFF}); }
};

} // namespace switchcfg::testing

#endif
