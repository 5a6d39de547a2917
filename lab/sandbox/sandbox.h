// SPDX-License-Identifier: Apache-2.0
// A command in namespaces of its own.
#ifndef SWITCHCFG_LAB_SANDBOX_SANDBOX_H
#define SWITCHCFG_LAB_SANDBOX_SANDBOX_H

#include "lab/flash/device.h"

#include <string>
#include <vector>

namespace switchlab {

inline constexpr int exit_lab_failed = 125;
inline constexpr int exit_not_executable = 126;
inline constexpr int exit_not_found = 127;

struct RunRequest {
    std::vector<std::string> keep;
    FlashRequest flash;
    std::vector<char *> command; // ends with a null pointer
};

// Runs the command and gives its exit status (128 + n for signal n), or one of the above after a line on standard
// error.
int run_in_lab(RunRequest &request);

} // namespace switchlab

#endif
