// SPDX-License-Identifier: Apache-2.0
#include "tools/signal_name.h"

#include "tools/command_line/failure.h"

#include <charconv>
#include <csignal>
#include <cstring>

namespace switchcfg::tool {

int signal_by_name(const std::string &name)
{
    int number = 0;
    const char *const end = name.data() + name.size();
    if (const auto [rest, error] = std::from_chars(name.data(), end, number);
        error == std::errc{} && rest == end && number >= 0 && number <= SIGRTMAX) {
        return number;
    }
    const std::string bare = name.starts_with("SIG") ? name.substr(3) : name;
    for (int signo = 1; signo < SIGRTMIN; ++signo) {
        if (const char *const known = ::sigabbrev_np(signo); known != nullptr && bare == known) {
            return signo;
        }
    }
    throw Failure{"'" + name + "' is no signal: a number, or a name such as TERM"};
}

} // namespace switchcfg::tool
