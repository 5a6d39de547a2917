// SPDX-License-Identifier: Apache-2.0
// The programs that stop or restart a machine. A lab is not one: there they only take note.
#ifndef SWITCHCFG_LAB_SANDBOX_POWER_PROGRAMS_H
#define SWITCHCFG_LAB_SANDBOX_POWER_PROGRAMS_H

namespace switchlab {

// Each call of one is a line in this file: its name and its arguments.
inline constexpr char power_log[] = "/tmp/power.log";
// What stands in their place, under all their names.
inline constexpr char power_program_path[] = "/var/lib/power-program";

// After the private folders are in place.
void replace_power_programs();

} // namespace switchlab

#endif
