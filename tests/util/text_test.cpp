// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/text.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace {

// A buffer of `size` bytes between bytes that must not change.
struct Guarded {
    explicit Guarded(std::size_t bytes) : size(bytes) { memory.fill('#'); }
    char *get() { return memory.data() + 1; }
    bool intact() const { return memory.front() == '#' && memory[size + 1] == '#'; }
    std::array<char, 34> memory;
    std::size_t size;
};

using HeapText = std::unique_ptr<char, decltype(&std::free)>;

TEST(Text, CopyIsCutTerminatedAndPaddedAtEverySize)
{
    const std::string source = "abcdef";
    for (std::size_t size = 0; size < 12; ++size) {
        Guarded buffer{size};
        EXPECT_EQ(strncpy_safe(buffer.get(), source.c_str(), size), buffer.get());
        EXPECT_TRUE(buffer.intact()) << size;
        if (size > 0) {
            std::string expected = source.substr(0, size - 1);
            expected.resize(size, '\0');
            EXPECT_EQ(std::string(buffer.get(), size), expected);
        }
    }
}

TEST(Text, AppendIsCutAndTerminatedAtEverySize)
{
    const std::string first = "abc";
    const std::string second = "defg";
    for (std::size_t size = 0; size < 12; ++size) {
        Guarded buffer{size};
        if (size > 0) {
            std::memcpy(buffer.get(), first.c_str(), std::min(first.size() + 1, size)); // unterminated below 4
        }
        EXPECT_EQ(strncat_safe(buffer.get(), second.c_str(), size), buffer.get());
        EXPECT_TRUE(buffer.intact()) << size;
        if (size > 0) {
            EXPECT_STREQ(buffer.get(), (first + second).substr(0, size - 1).c_str());
            EXPECT_EQ(buffer.get()[size - 1], '\0');
        }
    }
}

TEST(Text, JoinedTexts)
{
    EXPECT_STREQ(HeapText(strncat_allocate("one", "two"), &std::free).get(), "onetwo");
    EXPECT_STREQ(HeapText(strncat_allocate("", ""), &std::free).get(), "");
    const char *const texts[] = {"a", "", "bc"};
    EXPECT_STREQ(HeapText(string_array_concat(texts, 3, ','), &std::free).get(), "a,,bc");
    EXPECT_STREQ(HeapText(string_array_concat(texts, 1, ','), &std::free).get(), "a");
    EXPECT_STREQ(HeapText(string_array_concat(texts + 1, 1, ','), &std::free).get(), "");
    EXPECT_STREQ(HeapText(string_array_concat(texts, 0, ','), &std::free).get(), "");
    EXPECT_STREQ(HeapText(string_array_concat(nullptr, -1, ','), &std::free).get(), "");
}

TEST(Text, EnvironmentVariableTakesFormattedText)
{
    EXPECT_EQ(vx_setenv("TEXT_TEST", "STD%d:%d", -3, 0), 0);
    EXPECT_STREQ(std::getenv("TEXT_TEST"), "STD-3:0");
    EXPECT_EQ(vx_setenv("TEXT_TEST", "%s", ""), 0);
    EXPECT_STREQ(std::getenv("TEXT_TEST"), "");
    EXPECT_EQ(vx_setenv("TEXT=TEST", "%s", "x"), -1);
    EXPECT_EQ(errno, EINVAL);
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
        EXPECT_EQ(strftime_safe(buffer.get(), size, "%Y-%m-%d", &when), fits ? 10 : 0);
        EXPECT_TRUE(buffer.intact());
        if (size > 0) {
            EXPECT_STREQ(buffer.get(), fits ? "2024-02-29" : "");
        }
    }
}

TEST(Text, MemoryCopy)
{
    const char bytes[] = {'a', '\0', 'b'};
    const HeapText copy{static_cast<char *>(vxmemdup(bytes, sizeof bytes)), &std::free};
    EXPECT_EQ(std::memcmp(copy.get(), bytes, sizeof bytes), 0);
    const HeapText empty{static_cast<char *>(vxmemdup(nullptr, 0)), &std::free};
    EXPECT_NE(empty, nullptr);
}

} // namespace
