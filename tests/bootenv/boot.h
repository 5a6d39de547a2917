// SPDX-License-Identifier: Apache-2.0
// A switch that starts, for tests: its flash as the boot loader left it, and a status region as new as after a start.
#ifndef SWITCHCFG_TESTS_BOOTENV_BOOT_H
#define SWITCHCFG_TESTS_BOOTENV_BOOT_H

#include "support/flash_device.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace switchcfg::testing {

using Environment = std::vector<std::string>; // name=value texts in their order
using Image = std::vector<std::uint8_t>;

inline constexpr char backup_path[] = "/mnt/flash/bkp/env";
inline constexpr std::size_t area_size = 65532;

Image image_of(const Environment &environment);
bool checksum_holds(const Image &image);

// The simulated partition, from the side of the test bench.
FlashDevice &flash();
void fill_flash(const Image &image); // what does not come from the image is 0xFF

std::optional<Image> backup_content(); // nothing without a file
void make_backup(const Image &image);  // with its folder
void remove_backup();                  // with its folder

// A new status region, as after a start, with what bootenv_init() says of it.
int start_switch();
Environment environment();

} // namespace switchcfg::testing

#endif
