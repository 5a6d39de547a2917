// SPDX-License-Identifier: Apache-2.0
#include "lab/power_programs.h"

#include "lab/mounts.h"
#include "lab/refusal.h"
#include "util/owned.h"

#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace switchlab {
namespace {

constexpr char stand_in[] = "/var/lib/power-program";
constexpr const char *programs[] = {"/sbin/shutdown", "/sbin/reboot", "/sbin/halt", "/sbin/poweroff"};

void write_stand_in()
{
    const std::string script = std::string{"#!/bin/sh\nprintf '%s %s\\n' \"${0##*/}\" \"$*\" >>"} + power_log + "\n";
    const switchcfg::Descriptor file{::open(stand_in, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0755)};
    if (!file || ::write(file.get(), script.data(), script.size()) != static_cast<ssize_t>(script.size())) {
        throw refusal("write", stand_in);
    }
}

} // namespace

void replace_power_programs()
{
    write_stand_in();
    // A machine without such a program needs no replacement. Several may be one file under many names, which is then
    // covered more than once.
    for (const char *const program : programs) {
        if (::access(program, F_OK) == 0) {
            bind_mount(stand_in, program);
        }
    }
}

} // namespace switchlab
