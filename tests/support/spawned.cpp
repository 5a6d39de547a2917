// SPDX-License-Identifier: Apache-2.0
#include "support/spawned.h"

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sched.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace switchcfg::testing {

Spawned::Spawned(std::initializer_list<std::string> arguments)
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
           ::waitid(P_PID, static_cast<id_t>(pid_), &ended, WEXITED | WNOWAIT | WNOHANG) == 0 && ended.si_pid == 0) {
        ::sched_yield();
    }
}

Spawned::~Spawned()
{
    if (pid_ > 0) {
        ::kill(pid_, SIGKILL);
        join();
    }
}

int Spawned::join()
{
    int status = -1;
    ::waitpid(std::exchange(pid_, -1), &status, 0);
    return status;
}

} // namespace switchcfg::testing
