// SPDX-License-Identifier: Apache-2.0
#include "util/process_name.h"

#include <switchcfg/startup.h>

#include <cstring>

char *cfg_get_pid_name(int pid) noexcept
{
    switchcfg::ProcessName name;
    return ::strdup(switchcfg::read_process_name(pid, name) ? name.data() : "unknown");
}

char *cfg_get_translated_pid_name(int pid) noexcept
{
    switchcfg::ProcessName name;
    return switchcfg::read_process_name(pid, name) ? ::strdup(name.data()) : nullptr;
}
