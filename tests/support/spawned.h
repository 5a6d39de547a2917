// SPDX-License-Identifier: Apache-2.0
// A program that runs beside the test.
#ifndef SWITCHCFG_TESTS_SUPPORT_SPAWNED_H
#define SWITCHCFG_TESTS_SUPPORT_SPAWNED_H

#include "support/child.h"

#include <sched.h>
#include <spawn.h>

namespace switchcfg::testing {

class Spawned : public Child {
  public:
    // Found through PATH; when this returns it is executing, and its command line can be read.
    Spawned(std::initializer_list<std::string> arguments)
    {
        std::vector<char *> argv;
        for (const std::string &argument : arguments) {
            argv.push_back(const_cast<char *>(argument.c_str())); // not written to
        }
        argv.push_back(nullptr);
        if (::posix_spawnp(&pid_, argv[0], nullptr, nullptr, argv.data(), environ) != 0) {
            std::abort();
        }
        // The new program's arguments appear a moment after the call returns; never, when it has ended by then.
        const std::string command_line = "/proc/" + std::to_string(pid_) + "/cmdline";
        siginfo_t ended{};
        while (std::ifstream{command_line}.peek() == std::ifstream::traits_type::eof() &&
               ::waitid(P_PID, static_cast<id_t>(pid_), &ended, WEXITED | WNOWAIT | WNOHANG) == 0 &&
               ended.si_pid == 0) {
            ::sched_yield();
        }
    }
};

} // namespace switchcfg::testing

#endif
