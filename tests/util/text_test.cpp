// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/text.h>

#include "support/error_of.h"
#include "support/guarded.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace {

using namespace switchcfg::testing;
using HeapText = std::unique_ptr<char, decltype(&std::free)>;

TEST(Text, CopiesAndAppendedTextsAreCutTerminatedAndHeldInsideAtEverySize)
{
    const std::string first = "abc";
    const std::string second = "defg";
    for (std::size_t size = 0; size < 12; ++size) {
        Guarded copy{size};
        EXPECT_EQ(strncpy_safe(copy.data(), "abcdef", size), copy.data());
        EXPECT_TRUE(copy.intact()) << size;
        Guarded appended{size};
        std::memcpy(appended.data(), first.c_str(), std::min(first.size() + 1, size)); // unterminated below 4
        EXPECT_EQ(strncat_safe(appended.data(), second.c_str(), size), appended.data());
        EXPECT_TRUE(appended.intact()) << size;
        if (size > 0) {
            std::string expected = std::string{"abcdef"}.substr(0, size - 1);
            expected.resize(size, '\0'); // padded
            EXPECT_EQ(std::string(copy.data(), size), expected);
            EXPECT_STREQ(appended.data(), (first + second).substr(0, size - 1).c_str());
            EXPECT_EQ(appended.data()[size - 1], '\0');
        }
    }
}

TEST(Text, AllocatedTextsAndBytes)
{
    const char bytes[] = {'a', '\0', 'b'};
    const HeapText copy{static_cast<char *>(vxmemdup(bytes, sizeof bytes)), &std::free};
    EXPECT_EQ(std::memcmp(copy.get(), bytes, sizeof bytes), 0);
    EXPECT_NE(HeapText(static_cast<char *>(vxmemdup(nullptr, 0)), &std::free), nullptr);
    EXPECT_STREQ(HeapText(strncat_allocate("one", "two"), &std::free).get(), "onetwo");
    EXPECT_STREQ(HeapText(strncat_allocate("", ""), &std::free).get(), "");
    const char *const texts[] = {"a", "", "bc"};
    EXPECT_STREQ(HeapText(string_array_concat(texts, 3, ','), &std::free).get(), "a,,bc");
    EXPECT_STREQ(HeapText(string_array_concat(texts + 1, 1, ','), &std::free).get(), "");
    EXPECT_STREQ(HeapText(string_array_concat(nullptr, -1, ','), &std::free).get(), "");
}

TEST(Text, EnvironmentVariableTakesFormattedText)
{
    EXPECT_EQ(vx_setenv("TEXT_TEST", "STD%d:%d", -3, 0), 0);
    EXPECT_STREQ(std::getenv("TEXT_TEST"), "STD-3:0");
    EXPECT_EQ(vx_setenv("TEXT_TEST", "%s", ""), 0);
    EXPECT_STREQ(std::getenv("TEXT_TEST"), "");
    EXPECT_EQ(error_of(vx_setenv("TEXT=TEST", "%s", "x")), EINVAL);
}

TEST(Text, TimeTextIsTerminatedAtEverySize)
{
    std::tm when{};
    when.tm_year = 124;
    when.tm_mon = 1;
    when.tm_mday = 29;
    for (std::size_t size = 0; size < 14; ++size) {
        Guarded buffer{size};
        const bool fits = size > 10;
        EXPECT_EQ(strftime_safe(buffer.data(), size, "%Y-%m-%d", &when), fits ? 10 : 0);
        EXPECT_TRUE(buffer.intact());
        if (size > 0) {
            EXPECT_STREQ(buffer.data(), fits ? "2024-02-29" : "");
        }
    }
}

} // namespace
