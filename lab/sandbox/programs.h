// SPDX-License-Identifier: Apache-2.0
// Where programs are: those a user names, and switchlab's own companions.
#ifndef SWITCHCFG_LAB_SANDBOX_PROGRAMS_H
#define SWITCHCFG_LAB_SANDBOX_PROGRAMS_H

#include "lab/sandbox/kept_places.h"

#include <filesystem>
#include <string>

namespace switchlab {

// As the shell looks it up; empty when there is no such command, which exec will then say better.
std::string find_command(const std::string &name);

// Becomes the command; where that fails a line on standard error says why, and the status is the one a shell would
// give.
[[noreturn]] void execute(char *const command[]);

// The folder of switchlab itself.
std::filesystem::path own_folder();

// A program that is built and installed with switchlab: beside it, or where a build folder has it. Empty when there is
// none.
std::string find_companion(const std::string &name);

// The folders that have companions, in PATH's form.
std::string companion_folders();

// Keeps the folder of a program visible, or the program alone when it lies directly in /tmp.
void keep_program(KeptPlaces &kept, const std::filesystem::path &program);

} // namespace switchlab

#endif
