// SPDX-License-Identifier: Apache-2.0
#include "lab/sandbox/power_programs.h"

#include "lab/mounts.h"
#include "lab/text_file.h"

#include <string>
#include <unistd.h>

namespace switchlab {
namespace {

constexpr const char *programs[] = {"/sbin/shutdown", "/sbin/reboot", "/sbin/halt", "/sbin/poweroff"};

void write_stand_in()
{
    const std::string script = std::string{"#!/bin/sh\nprintf '%s %s\\n' \"${0##*/}\" \"$*\" >>"} + power_log + "\n";
    write_file(power_program_path, script, 0755);
}

} // namespace

void replace_power_programs()
{
    write_stand_in();
    // A machine without such a program needs no replacement. Several may be one file under many names, which is then
    // covered more than once.
    for (const char *const program : programs) {
        if (::access(program, F_OK) == 0) {
            bind_mount(power_program_path, program);
        }
    }
}

} // namespace switchlab
