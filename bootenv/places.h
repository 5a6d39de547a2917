// SPDX-License-Identifier: Apache-2.0
// Where the environment and its backup live.
#ifndef SWITCHCFG_BOOTENV_PLACES_H
#define SWITCHCFG_BOOTENV_PLACES_H

namespace switchcfg::bootenv {

inline constexpr char partition[] = "/dev/flash_env";
inline constexpr char backup_mount[] = "/mnt/flash";
inline constexpr char backup_folder[] = "/mnt/flash/bkp/";
inline constexpr char backup_file[] = "/mnt/flash/bkp/env";
inline constexpr char backup_scratch[] = "/mnt/flash/bkp/scratch";

// Set in every environment that the switch's software has written; a boot loader's default environment lacks it.
inline constexpr char own_mark[] = "HV";

} // namespace switchcfg::bootenv

#endif
