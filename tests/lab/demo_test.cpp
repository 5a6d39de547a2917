// SPDX-License-Identifier: Apache-2.0
// switchlab demo, as a user runs it.
#include "lab/lab_runner.h"
#include "support/terminal.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex>
#include <sys/wait.h>
#include <unistd.h>

namespace switchcfg::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

TEST(LabDemo, TellsTheStoryAndChecksIt)
{
    const Outcome demo = run({SWITCHLAB, "demo"});
    EXPECT_EQ(demo.status, 0) << demo.output;
    EXPECT_TRUE(std::regex_search(demo.output, std::regex{"All (2[5-9]|3[0-9]) checks passed"})) << demo.output;
    EXPECT_THAT(demo.output, AllOf(Not(HasSubstr("FAIL")), Not(HasSubstr("\033")), HasSubstr("Go on from here")));
    std::smatch why; // a program that is missing here takes its chapter along
    for (std::string rest = demo.output; std::regex_search(rest, why, std::regex{"\nLeft out: (.*)"});) {
        std::printf("left out: %s\n", why[1].str().c_str());
        rest = why.suffix();
    }
}

// Units that do not see one another, by a tool that says so.
TEST(LabDemo, SaysWhatWasExpectedAndWhatCame)
{
    fs::create_directory("/tmp/broken");
    for (const char *program : {SWITCHLAB, SWITCHLAB_PM, SWITCHLAB_STACKD, SWITCHLAB_LOGGERD, SWITCHLAB_PRELOAD}) {
        fs::copy(program, "/tmp/broken");
    }
    std::ofstream{"/tmp/broken/switchcfg"}
        << "#!/bin/sh\nif [ \"$*\" = 'units --json' ]; then echo nobody here; else exec " SWITCHCFG_TOOL
           " \"$@\"; fi\n";
    fs::permissions("/tmp/broken/switchcfg", fs::perms::all);
    const auto demo = [] { ::execl("/tmp/broken/switchlab", "switchlab", "demo", "--units", "2", nullptr); };
    Terminal coloured{24, 80, demo};
    EXPECT_THAT(coloured.rest(),
        AllOf(HasSubstr("\033[31m FAIL\033[0m  unit 0 sees all 2"), HasSubstr("2 units that are present"),
            HasSubstr("         nobody here"), HasSubstr("failed, after 2 checks"), Not(HasSubstr("Go on"))));
    EXPECT_EQ(WEXITSTATUS(coloured.join()), 1);
    EXPECT_NE(run({SWITCHLAB, "status"}).status, 0);
    ::setenv("NO_COLOR", "1", 1);
    EXPECT_THAT(Terminal(24, 80, demo).rest(), AllOf(HasSubstr(" FAIL  unit 0 sees all 2"), Not(HasSubstr("\033[3"))));

    fs::remove("/tmp/broken/switchcfg");
    const Outcome incomplete = run({"/tmp/broken/switchlab", "demo"});
    EXPECT_EQ(incomplete.status, 125);
    EXPECT_THAT(incomplete.output, HasSubstr("switchcfg is missing"));
}

} // namespace
} // namespace switchcfg::testing
