// SPDX-License-Identifier: Apache-2.0
// Keeps a restart of the switch from becoming one of this machine: the program that links this file has its own
// system() and sleep(), which only take note.
#ifndef SWITCHCFG_TESTS_BOOTENV_RESTART_H
#define SWITCHCFG_TESTS_BOOTENV_RESTART_H

#include <string>
#include <vector>

namespace switchcfg::testing {

// What was asked for since the last call, sleeps as "sleep 2".
std::vector<std::string> take_commands();

} // namespace switchcfg::testing

#endif
