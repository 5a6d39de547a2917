// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/debug.h>

#include "support/file_text.h"
#include "support/peer.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using namespace switchcfg::testing;
using ::testing::EndsWith;
using ::testing::MatchesRegex;

// Runs `body` in a process of its own, with its own first look at the environment. What it writes to standard error
// comes back write by write.
std::vector<std::string> errors_of(const char *trace, const std::function<void()> &body)
{
    int ends[2];
    EXPECT_EQ(::pipe2(ends, O_DIRECT), 0); // keeps the writes apart
    Peer process{[&](Link &) {
        ::dup2(ends[1], STDERR_FILENO);
        if (trace != nullptr) {
            ::setenv("SWITCHCFG_TRACE", trace, 1);
        }
        body();
    }};
    ::close(ends[1]);
    std::vector<std::string> writes;
    std::string piece(4096, '\0');
    for (ssize_t count = 0; (count = ::read(ends[0], piece.data(), piece.size())) > 0;) {
        writes.push_back(piece.substr(0, static_cast<std::size_t>(count)));
    }
    EXPECT_EQ(process.join(), 0);
    return writes;
}

void trace(const char *text)
{
    devel_vprint_implementation("systemAPI", 42, "launch", "%s", text);
}

TEST(DebugTrace, SilentUnlessAskedFor)
{
    for (const char *const value : {static_cast<const char *>(nullptr), "", "1", "relative/file", "/no/such/folder"}) {
        const auto written = errors_of(value, [&] {
            errno = ENOTBLK;
            trace("unheard");
            const bool on = value != nullptr && *value == '/';
            if (devel_debug_level() != (on ? 1 : 0) || errno != ENOTBLK) {
                ::_exit(1);
            }
        });
        EXPECT_TRUE(written.empty());
    }
}

TEST(DebugTrace, LineTellsWhoAndWhereInOneWrite)
{
    const auto written = errors_of("stderr", [] {
        errno = ENOTBLK;
        devel_vprint_implementation("systemAPI", 42, "launch", "%s exited, %d\n", "/bin/true", 3);
        ::unsetenv("SWITCHCFG_TRACE");
        trace(std::string(5000, 'x').c_str());
        if (devel_debug_level() != 1 || errno != ENOTBLK) {
            ::_exit(1);
        }
    });
    ASSERT_EQ(written.size(), 2U);
    EXPECT_THAT(written[0], MatchesRegex("\\[ *[0-9]+\\.[0-9]{6}\\] debug_trace_test\\[[0-9]+\\] systemAPI:42 "
                                         "launch\\(\\): /bin/true exited, 3\n"));
    EXPECT_EQ(written[1].size(), 1023U);
    EXPECT_THAT(written[1], EndsWith("xxx\n"));
}

TEST(DebugTrace, FileIsAppendedToAndNeverMistakenForAnother)
{
    const auto written = errors_of("/tmp/trace", [] {
        trace("first");
        ::closefrom(3);
        const int other = ::open("/tmp/other", O_WRONLY | O_CREAT, 0600);
        trace("second");
        ::close(other);
    });
    EXPECT_TRUE(written.empty());
    errors_of("/tmp/trace", [] { trace("third"); });
    EXPECT_THAT(file_text("/tmp/trace"), MatchesRegex(".* first\n.* second\n.* third\n"));
    EXPECT_EQ(file_text("/tmp/other"), "");
}

} // namespace
