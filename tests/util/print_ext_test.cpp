// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/ip_addr.h>
#include <switchcfg/print_ext.h>

#include "support/output.h"

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <string>

namespace {

using switchcfg::testing::output_of;

// To a stream; takes formats that the compiler must not check, since it does not know the letters.
int print_to(std::FILE *stream, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vfprintf(stream, format, arguments);
    va_end(arguments);
    return length;
}

template<typename... Arguments>
std::string print(const char *format, Arguments... arguments)
{
    return output_of([=] { print_to(stdout, format, arguments...); });
}

class PrintExtensions : public ::testing::Test {
  protected:
    PrintExtensions()
    {
        EXPECT_EQ(printExts_init(), 0);
        EXPECT_EQ(cfg_print_ip_init(), 0);
    }
    static constexpr std::uint8_t mac[6] = {0x00, 0x1a, 0x2b, 0x3c, 0x4d, 0x5e};
    static constexpr std::uint8_t ipv4[4] = {192, 168, 0, 1};
    static constexpr std::uint8_t ipv6[16] = {0xfe, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x1f};
    static constexpr std::uint8_t mapped[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff, 255, 255, 255, 255};
};

TEST_F(PrintExtensions, EachLetterPrintsItsText)
{
    EXPECT_EQ(print("%M", mac), "00:1A:2B:3C:4D:5E");
    EXPECT_EQ(print("%D", ipv4), "192.168.0.1");
    EXPECT_EQ(print("%B", ipv6), "fe80::1f");
    EXPECT_EQ(print("%B", mapped), "::ffff:255.255.255.255");
    EXPECT_EQ(print("[%B]", static_cast<const void *>(&in6addr_any)), "[::]");
    for (const char *const format : {"%M", "%D", "%B", "%P"}) {
        EXPECT_EQ(print(format, static_cast<void *>(nullptr)), "<null pointer>");
    }
}

TEST_F(PrintExtensions, RecordPrintsByItsLength)
{
    cfg_ip_addr record{{10, 255, 0, 3, 0xaa, 0xbb}, 4};
    EXPECT_EQ(print("%P", &record), "10.255.0.3");
    record.length = 16;
    EXPECT_EQ(print("%P", &record), "aff:3:aabb::");
    for (const int empty : {0, 1, 15, 17, 255}) {
        record.length = static_cast<std::uint8_t>(empty);
        EXPECT_EQ(print("[%P]", &record), "[]");
        EXPECT_EQ(print("[%3P]", &record), "[   ]");
    }
}

TEST_F(PrintExtensions, WidthAndLeftApplyAndNothingElse)
{
    EXPECT_EQ(print("[%20M]", mac), "[   00:1A:2B:3C:4D:5E]");
    EXPECT_EQ(print("[%-20M]", mac), "[00:1A:2B:3C:4D:5E   ]");
    EXPECT_EQ(print("[%*D]", 13, ipv4), "[  192.168.0.1]");
    EXPECT_EQ(print("[%*D]", -13, ipv4), "[192.168.0.1  ]");
    EXPECT_EQ(print("[%-10B|%10B]", ipv6, ipv6), "[fe80::1f  |  fe80::1f]");
    EXPECT_EQ(print("[%2M]", mac), "[00:1A:2B:3C:4D:5E]");
    EXPECT_EQ(print("[%.3M|%+D|%#B|%020D]", mac, ipv4, ipv6, ipv4),
        "[00:1A:2B:3C:4D:5E|192.168.0.1|fe80::1f|         192.168.0.1]");
    EXPECT_EQ(print("[%-16D]", static_cast<void *>(nullptr)), "[<null pointer>  ]");
    EXPECT_EQ(print("%s %d %M %c %lld %D %.2f%%", "port", 7, mac, 'x', 1234567890123LL, ipv4, 1.5),
        "port 7 00:1A:2B:3C:4D:5E x 1234567890123 192.168.0.1 1.50%");
}

TEST_F(PrintExtensions, StreamsReportLengthAndFailure)
{
    EXPECT_EQ(output_of([] { EXPECT_EQ(print_to(stdout, "%20M", mac), 20); }).size(), 20U);
    std::FILE *const full = std::fopen("/dev/full", "w");
    ASSERT_NE(full, nullptr);
    std::setvbuf(full, nullptr, _IONBF, 0);
    for (const char *const format : {"%M", "%D", "%B"}) {
        EXPECT_LT(print_to(full, format, ipv6), 0);
    }
}

} // namespace
