// SPDX-License-Identifier: Apache-2.0
// Signals to many processes.
#include <switchcfg/process.h>

#include "util/owned.h"

#include <csignal>
#include <cstdint>

int kill_list(const std::int32_t *list, int signo) noexcept
{
    int signalled = 0;
    for (; list != nullptr && *list > 0; ++list) {
        signalled += ::kill(*list, signo) == 0 ? 1 : 0;
    }
    return signalled;
}

int killall(const char *name, int signo) noexcept
{
    const switchcfg::Malloced<std::int32_t> list{find_pid_by_name(name)};
    return kill_list(list.get(), signo);
}

int kill_regex(const char *expression, int signo) noexcept
{
    const switchcfg::Malloced<std::int32_t> list{pid_by_regex(expression)};
    return kill_list(list.get(), signo);
}
