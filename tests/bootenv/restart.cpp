// SPDX-License-Identifier: Apache-2.0
#include "bootenv/restart.h"

#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <unistd.h>
#include <utility>

namespace switchcfg::testing {
namespace {

std::vector<std::string> commands;

// Were libc's found first, a test would really restart the machine.
const bool ours_come_first = [] {
    if (::dlsym(RTLD_DEFAULT, "system") != reinterpret_cast<void *>(&::system) ||
        ::dlsym(RTLD_DEFAULT, "sleep") != reinterpret_cast<void *>(&::sleep)) {
        std::fputs("system() and sleep() are libc's here: not a place for these tests\n", stderr);
        std::abort();
    }
    return true;
}();

} // namespace

std::vector<std::string> take_commands()
{
    return std::exchange(commands, {});
}

} // namespace switchcfg::testing

#pragma GCC visibility push(default)
unsigned sleep(unsigned seconds)
{
    switchcfg::testing::commands.push_back("sleep " + std::to_string(seconds));
    return 0;
}

int system(const char *command)
{
    switchcfg::testing::commands.emplace_back(command);
    return 0;
}
#pragma GCC visibility pop
