// SPDX-License-Identifier: Apache-2.0
#include "support/flash_device.h"

#include "lab/flash/files.h"

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace switchcfg::testing {
namespace {

switchlab::NorFlash device_of_this_lab()
{
    const std::optional<switchlab::NorFlash> flash = switchlab::attach_flash();
    if (!flash) {
        throw std::system_error(errno, std::generic_category(),
            "no flash device here; the test has to run through switchlab run --flash (LAB --flash in switchcfg_test)");
    }
    return *flash;
}

} // namespace

FlashDevice::FlashDevice() : NorFlash(device_of_this_lab()) {}

void FlashDevice::restore(std::span<const std::uint8_t> bytes)
{
    if (bytes.size() != content().size()) {
        throw std::invalid_argument("the content of a flash device has the device's size");
    }
    std::ranges::copy(bytes, content().begin());
}

void FlashDevice::erase_chip()
{
    std::ranges::fill(content(), std::uint8_t{0xFF});
}

} // namespace switchcfg::testing
