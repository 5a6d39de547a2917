// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/backtrace.h>

#include "support/file_text.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <unistd.h>

extern "C" __attribute__((noinline, visibility("default"))) int name_my_caller(int depth, char *buf, std::size_t len)
{
    const int written = name_of_caller(depth, buf, len);
    asm volatile(""); // keeps the call from becoming a jump
    return written;
}

extern "C" __attribute__((noinline, visibility("default"))) void call_for_name(char *buf, std::size_t len)
{
    name_my_caller(1, buf, len);
    asm volatile("");
}

namespace {

using namespace switchcfg::testing;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;

// What `print` writes to descriptor 2.
template<typename Print>
std::string on_stderr(Print &&print)
{
    const int saved = ::dup(2);
    ::dup2(::open("/tmp/stderr", O_RDWR | O_CREAT | O_TRUNC, 0600), 2);
    print();
    std::fflush(stderr);
    ::dup2(saved, 2);
    return file_text("/tmp/stderr");
}

TEST(Backtrace, GetCountsItsFramesAndNamesThem)
{
    std::unique_ptr<char, decltype(&std::free)> text{backtrace_get(), &std::free};
    const auto lines = lines_of(text.get());
    ASSERT_GE(lines.size(), 3U);
    EXPECT_EQ(lines[0], "Obtained " + std::to_string(lines.size() - 1) + " stack frames:");
    EXPECT_LE(lines.size(), 11U);
    EXPECT_THAT(lines, ::testing::Contains(HasSubstr("backtrace_get")));
}

TEST(Backtrace, PrintEndsLinesForRawTerminals)
{
    const auto lines = lines_of(on_stderr([] { backtrace_print(); }));
    ASSERT_GE(lines.size(), 2U);
    for (const std::string &line : lines) {
        EXPECT_THAT(line, EndsWith("]\r"));
    }
    EXPECT_THAT(on_stderr([] { backtrace_print_nomalloc(); }), HasSubstr("backtrace_print_nomalloc"));
}

TEST(Backtrace, FileIsAppendedUnderAHeader)
{
    backtrace_print_file("/tmp/no/such/folder/");
    backtrace_print_file("/tmp/prefix-");
    const auto once = lines_of(file_text("/tmp/prefix-backtrace.log"));
    ASSERT_GE(once.size(), 8U);
    const std::string rule(53, '#');
    EXPECT_EQ(once[0], "");
    EXPECT_EQ(once[1], rule);
    EXPECT_EQ(once[2], "# My PID: " + std::to_string(::getpid()));
    EXPECT_THAT(once[3], MatchesRegex("# Date: [A-Z].* [0-9]+"));
    EXPECT_EQ(once[4], "") << "the date keeps its own newline";
    EXPECT_EQ(once[5], rule);
    EXPECT_THAT(once[6], EndsWith("]\r"));
    backtrace_print_file("/tmp/prefix-");
    EXPECT_EQ(lines_of(file_text("/tmp/prefix-backtrace.log")).size(), 2 * once.size());
}

TEST(Backtrace, FunctionsAreNamedWithDistanceAndCutToFit)
{
    char text[256] = {};
    auto *const address = reinterpret_cast<char *>(&call_for_name) + 1;
    char expected[64];
    std::snprintf(expected, sizeof expected, "(call_for_name+0x1)[%p] ", static_cast<void *>(address));
    const int length = name_of_func(address, text, sizeof text);
    EXPECT_THAT(std::string(text), ::testing::StartsWith("@ /"));
    EXPECT_THAT(std::string(text), EndsWith(expected));
    EXPECT_EQ(length, static_cast<int>(std::strlen(text)));

    EXPECT_EQ(name_of_func(reinterpret_cast<void *>(0x10), text, sizeof text), 9);
    EXPECT_STREQ(text, "@ [0x10] ");
    std::memset(text, 'x', sizeof text);
    EXPECT_EQ(name_of_func(address, text, 5), 4);
    EXPECT_EQ(text[4], '\0');
    EXPECT_EQ(text[5], 'x');
    EXPECT_EQ(name_of_func(address, text, 0), 0);
}

TEST(Backtrace, CallersAreNamedByDepth)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizer's own backtrace() puts a frame of its own first";
#endif
    char text[256] = {};
    const int length = name_my_caller(0, text, sizeof text);
    EXPECT_THAT(std::string(text), HasSubstr("(name_my_caller+0x"));
    EXPECT_EQ(length, static_cast<int>(std::strlen(text)));
    call_for_name(text, sizeof text);
    EXPECT_THAT(std::string(text), HasSubstr("(call_for_name+0x"));
    for (const int nonsense : {-1, 61, 62, INT32_MAX}) {
        EXPECT_EQ(name_my_caller(nonsense, text, sizeof text), 0) << nonsense;
        EXPECT_STREQ(text, "");
    }
}

TEST(Backtrace, SegvHandlerPrints)
{
    EXPECT_EQ(sigsegv_backtrace_print(), 0);
    EXPECT_THAT(on_stderr([] { ::raise(SIGSEGV); }), HasSubstr("backtrace_print"));
}

} // namespace
