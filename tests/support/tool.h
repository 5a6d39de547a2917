// SPDX-License-Identifier: Apache-2.0
// The switchcfg command as its users meet it. For tests that define SWITCHCFG_TOOL, its path.
#ifndef SWITCHCFG_TESTS_SUPPORT_TOOL_H
#define SWITCHCFG_TESTS_SUPPORT_TOOL_H

#include "support/command.h"

#include <nlohmann/json.hpp>

namespace switchcfg::testing {

using nlohmann::json;

inline Outcome tool(const std::string &arguments)
{
    return run_command("LC_ALL=C " SWITCHCFG_TOOL " " + arguments);
}

// A message that names the tool, what and why; nothing on standard output.
inline void expect_refused(const std::string &arguments, const std::string &reason, int status = 1)
{
    const Outcome outcome = tool(arguments);
    EXPECT_EQ(outcome.status, status) << arguments;
    EXPECT_EQ(outcome.out, "") << arguments;
    EXPECT_THAT(outcome.err, ::testing::StartsWith("switchcfg: ")) << arguments;
    EXPECT_THAT(outcome.err, ::testing::HasSubstr(reason)) << arguments;
    EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << arguments;
}

#ifdef SWITCHCFG_COMPLETION // the file that bash loads
// The words that bash would offer for the last of `words`, as an array in bash's notation.
inline std::string offered(const std::string &words)
{
    return run_command(
        "bash -c 'PATH=$(dirname " SWITCHCFG_TOOL "):$PATH; . " SWITCHCFG_COMPLETION "; COMP_WORDS=(switchcfg " +
        words + "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _switchcfg; printf \"%s \" \"${COMPREPLY[@]}\"'")
        .out;
}
#endif

} // namespace switchcfg::testing

#endif
