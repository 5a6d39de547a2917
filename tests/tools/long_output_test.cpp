// SPDX-License-Identifier: Apache-2.0
// Where the tool's listings go; the list of error messages is a long one.
#include "support/overlay.h"
#include "support/terminal.h"
#include "support/tool.h"

namespace {

using namespace switchcfg::testing;
using namespace ::testing;

TEST(LongOutput, IsFilteredAndCut)
{
    const std::string all = tool("error --list").out;
    EXPECT_GT(lines_of(all).size(), 400U);
    EXPECT_EQ(tool("error -1 -8 --grep ^-8").out, "-8    Not found\n");
    EXPECT_EQ(tool("--grep=-8 error -1 -8").out, "-8    Not found\n") << "a pattern may begin with a dash";
    const std::string last = tool("error --list --tail 3").out;
    EXPECT_EQ(lines_of(last).size(), 3U);
    EXPECT_TRUE(all.ends_with(last));
    const std::string filtered = tool("error --list --grep STP --tail 2").out;
    EXPECT_EQ(lines_of(filtered).size(), 2U);
    EXPECT_THAT(filtered, HasSubstr("STP"));
    EXPECT_EQ(tool("error -8 --grep '\"; echo no; $(echo no) `echo no` \\'").out, "") << "nothing for the shell";
    const Outcome partly = tool("error -8 -56 --tail 1");
    EXPECT_EQ(partly.out, "-8    Not found\n") << "what there is comes before the failure";
    EXPECT_EQ(partly.status, 1);

    EXPECT_EQ(tool("error -8 --tail 0").status, 2);
    EXPECT_EQ(tool("error -8 --tail 1 --tftp a:b").status, 2);
    for (const char *const place : {"server", "server:", ":name", "-x:name", "'a:b;c'"}) {
        EXPECT_EQ(tool(std::string{"error -8 --tftp "} + place).status, 1) << place;
    }
}

void run_tool(const char *first, const char *second, const char *third)
{
    ::execl(SWITCHCFG_TOOL, "switchcfg", first, second, third, nullptr);
}

TEST(LongOutput, IsPagedOnATerminalThatIsTooSmall)
{
    Terminal paged{10, 100, [] { run_tool("error", "--list", nullptr); }};
    ASSERT_TRUE(paged.shows("--More--")) << paged.seen();
    paged.press("q");
    paged.rest();
    EXPECT_EQ(paged.join(), 0);
    Terminal straight{10, 100, [] { run_tool("error", "--list", "--no-pager"); }};
    EXPECT_THAT(straight.rest(), Not(HasSubstr("--More--")));
    Terminal fits{10, 100, [] { run_tool("error", "-8", nullptr); }};
    EXPECT_THAT(fits.rest(), Not(HasSubstr("--More--")));
    EXPECT_THAT(fits.seen(), HasSubstr("Not found"));
}

TEST(LongOutput, IsUploadedWholeByTheProgram)
{
    // A /bin/tftp of the test's own keeps what it is given, and how it was called.
    const std::string why = make_folder_private(std::filesystem::canonical("/bin").string());
    if (!why.empty()) {
        GTEST_SKIP() << why;
    }
    std::filesystem::remove("/bin/tftp");
    write_file("/bin/tftp", "#!/bin/sh\necho \"$@\" >/tmp/call\ncat >/tmp/uploaded\n");
    ASSERT_EQ(::chmod("/bin/tftp", 0755), 0);
    const Outcome outcome = tool("error --list --tftp 10.0.0.1:errors.txt");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(file_text("/tmp/call"), "-l - -r errors.txt -p 10.0.0.1\n");
    EXPECT_EQ(file_text("/tmp/uploaded"), tool("error --list").out);
}

} // namespace
