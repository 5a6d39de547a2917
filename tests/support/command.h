// SPDX-License-Identifier: Apache-2.0
// Runs a shell command and keeps what it printed, for tests of the tools.
#ifndef SWITCHCFG_TESTS_SUPPORT_COMMAND_H
#define SWITCHCFG_TESTS_SUPPORT_COMMAND_H

#include "support/file_text.h"

namespace switchcfg::testing {

struct Outcome {
    int status; // exit status, or 128 + signal
    std::string out;
    std::string err;
};

// One run at a time: the output passes through two files in /tmp of the test's own lab.
inline Outcome run_command(const std::string &command)
{
    const int raw = std::system(("( " + command + "\n) >/tmp/command.out 2>/tmp/command.err </dev/null").c_str());
    const int status = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
    return {status, file_text("/tmp/command.out"), file_text("/tmp/command.err")};
}

} // namespace switchcfg::testing

#endif
