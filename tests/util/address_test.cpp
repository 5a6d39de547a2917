// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/address.h>

#include "support/guarded.h"

#include <arpa/inet.h>
#include <array>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <net/if.h>
#include <string>

namespace {

using switchcfg::testing::Guarded;

// The text a function writes, "-" when it fails; checks that it stays inside `size` bytes, or writes nothing.
template<typename Function>
std::string written(Function function, const char *text, std::size_t size)
{
    Guarded buffer{size};
    const int result = function(text, buffer.data());
    EXPECT_TRUE(result == 0 ? buffer.intact() : buffer.untouched()) << text;
    EXPECT_EQ(function(text, nullptr), result) << text;
    return result == 0 ? std::string{buffer.data()} : "-";
}

struct Case {
    const char *text;
    const char *expected; // "-" for a reject
};

TEST(Address, NormalFormDropsLeadingZerosAndTakesWhatStrtoulTakes)
{
    for (const auto &[text, expected] : {Case{"192.168.001.010", "192.168.1.10"}, {"0.0.0.0", "0.0.0.0"},
             {"255.255.255.255", "255.255.255.255"}, {" 1. 2.+3.-0", "1.2.3.0"}, {"000000001.2.3.4", "1.2.3.4"},
             {"1.2.3", "-"}, {"1.2.3.", "-"}, {"1.2.3.4.", "-"}, {"1.2.3.4.5", "-"}, {"1.2.3.256", "-"},
             {"1..2.3", "-"}, {".1.2.3", "-"}, {"1.2.3 .4", "-"}, {"0x1.2.3.4", "-"}, {"1.2.3.+", "-"},
             {"1.2.3. ", "-"}, {"1.2.3.-1", "-"}, {"1.2.3.99999999999999999999999", "-"}, {"", "-"}}) {
        EXPECT_EQ(written(ip_address_normalize, text, IP_TEXT_SIZE), expected) << text;
        EXPECT_EQ(str_is_ip(text), std::string{expected} != "-") << text;
    }
    EXPECT_EQ(ip_address_normalize(nullptr, nullptr), -1);
    EXPECT_EQ(str_is_ip(nullptr), 0);
    for (const auto &[text, expected] : {Case{"10.0.255.1", "10.0.255.1"}, {"010.0.0.254", "10.0.0.254"},
             {"0.1.2.3", "-"}, {"10.0.0.0", "-"}, {"10.0.0.255", "-"}}) {
        EXPECT_EQ(written(ip_address_normalize_valid_host, text, IP_TEXT_SIZE), expected) << text;
    }
}

TEST(Address, PrefixIsDigitsUpTo32)
{
    for (const auto &[text, expected] :
        {Case{"10.0.0.1/24", "10.0.0.1/24"}, {"255.255.255.255/32", "255.255.255.255/32"},
            {"010.0.0.1/008", "10.0.0.1/8"}, {"1.2.3.4/0", "1.2.3.4/0"}, {"10.0.0.1/33", "-"}, {"10.0.0.1/2x", "-"},
            {"10.0.0.1/", "-"}, {"10.0.0.1/24/", "-"}, {"10.0.0.1", "-"}, {"/24", "-"}, {"10.0.0/24", "-"},
            {"10.0.0.1/+1", "-"}, {"10.0.0.1/4294967320", "-"}, {"10.0.0.1/18446744073709551640", "-"}}) {
        EXPECT_EQ(written(ip_address_mask_normalize, text, IP_PREFIX_TEXT_SIZE), expected) << text;
    }
    EXPECT_EQ(ip_address_mask_normalize(nullptr, nullptr), -1);
}

TEST(Address, MaskOfPrefixReadsLooselyButNeverWraps)
{
    std::array<char, IP_TEXT_SIZE> mask;
    for (const auto &[prefix, expected] : {Case{"24", "255.255.255.0"}, {"0", "0.0.0.0"}, {"32", "255.255.255.255"},
             {"1", "128.0.0.0"}, {"9 and more", "255.128.0.0"}, {"none", "0.0.0.0"}, {"", "0.0.0.0"}, {"33", "-"},
             {"-1", "-"}, {"4294967320", "-"}, {"18446744073709551640", "-"}}) {
        std::strcpy(mask.data(), "-");
        EXPECT_EQ(ip_prefix_to_mask(prefix, mask.data()), std::string{expected} == "-" ? -1 : 0) << prefix;
        EXPECT_STREQ(mask.data(), expected);
    }
    EXPECT_EQ(ip_prefix_to_mask(nullptr, mask.data()), -1);
    for (int bits = 0; bits <= 32; ++bits) {
        ASSERT_EQ(ip_prefix_to_mask(std::to_string(bits).c_str(), mask.data()), 0);
        EXPECT_EQ(ip_mask_to_prefix(mask.data()), bits);
    }
    EXPECT_EQ(ip_mask_to_prefix("255.0.255.0"), 8) << "nothing behind the first zero bit counts";
    EXPECT_EQ(ip_mask_to_prefix("255. 511.0.0rest"), 16) << "only the low byte of a number counts";
    for (const char *const text :
        {"255.255.255", "255..255.0", "255 .1.1.1", "", "255.255.99999999999.0", static_cast<const char *>(nullptr)}) {
        EXPECT_EQ(ip_mask_to_prefix(text), -1);
    }
}

TEST(Address, SplittingLeavesTheAddressUncheckedAndBothOutputsUntouchedOnFailure)
{
    std::array<char, IP_ADDRESS_PART_MAX + 1> address;
    std::array<char, IP_TEXT_SIZE> mask;
    EXPECT_EQ(ip_addr_prefix_to_addr_mask("any thing/16/9", address.data(), mask.data()), 0);
    EXPECT_STREQ(address.data(), "any thing");
    EXPECT_STREQ(mask.data(), "255.255.0.0");
    const std::string too_long = std::string(128, '1') + "/8";
    for (const char *const wrong : {"other/33", "other", too_long.c_str(), static_cast<const char *>(nullptr)}) {
        EXPECT_EQ(ip_addr_prefix_to_addr_mask(wrong, address.data(), mask.data()), -1);
    }
    EXPECT_STREQ(address.data(), "any thing");
    EXPECT_STREQ(mask.data(), "255.255.0.0");
    EXPECT_EQ(ip_addr_prefix_to_addr_mask("other/33", address.data(), nullptr), 0) << "no mask wanted, none looked at";
    EXPECT_STREQ(address.data(), "other");
    EXPECT_EQ(ip_addr_prefix_to_addr_mask(too_long.c_str() + 1, address.data(), mask.data()), 0);
    EXPECT_EQ(std::strlen(address.data()), 127U);
    EXPECT_EQ(ip_addr_prefix_to_addr_mask((std::string(500, '1') + "/8").c_str(), nullptr, nullptr), 0);
}

TEST(Address, UsableHostIsNeitherNetworkNorBroadcast)
{
    for (const auto &[text, expected] :
        {std::pair{"192.168.1.0/24", 0}, {"192.168.1.1/24", 1}, {"192.168.1.255/24", 0}, {"10.1.0.0/8", 1},
            {"10.0.0.0/31", 0}, {"10.0.0.1/32", 0}, {"1.2.3.4/0", 1}, {"0.0.0.0/0", 0}, {"10.0.0.010/24", 1},
            {"10.0.0.08/24", 0}, {"10.0.0.1/33", 0}, {"10.0.0/24", 0}, {"10.0.0.1", 0}, {"10.0.0.1/x", 1}}) {
        EXPECT_EQ(ip_addr_prefix_is_valid_host(text), expected) << text;
    }
    EXPECT_EQ(ip_addr_mask_is_valid_host("10.9.0.1", "255.0.255.0"), 1) << "masks need not be contiguous";
    EXPECT_EQ(ip_addr_mask_is_valid_host("10.0.0.0", "255.0.255.0"), 0);
    EXPECT_EQ(ip_addr_mask_is_valid_host("10.0.0.1", "255.255.255"), 0);
    EXPECT_EQ(ip_addr_mask_is_valid_host(nullptr, "255.0.0.0"), 0);
    EXPECT_EQ(ip_addr_mask_is_valid_host("10.0.0.1", nullptr), 0);
}

TEST(Address, BinaryFormIsInNetworkOrder)
{
    std::uint32_t address = 7;
    EXPECT_EQ(ip_str_to_uint32("10.1", &address), 0) << "the short forms count here";
    EXPECT_EQ(address, htonl(0x0A000001));
    EXPECT_EQ(ip_str_to_uint32("0x7f.0.0.1", &address), 0);
    EXPECT_EQ(address, htonl(0x7F000001));
    EXPECT_EQ(ip_str_to_uint32("10.0.0.256", &address), -1);
    EXPECT_EQ(ip_str_to_uint32(nullptr, &address), -1);
    EXPECT_EQ(address, htonl(0x7F000001));
    Guarded text{IP_TEXT_SIZE};
    EXPECT_EQ(ip_uint32_to_str(htonl(0x01020304), text.data()), 0);
    EXPECT_STREQ(text.data(), "1.2.3.4");
    EXPECT_EQ(text.data()[IP_TEXT_SIZE - 1], '\0') << "all 17 bytes are written";
    EXPECT_TRUE(text.intact());
    EXPECT_EQ(ip_uint32_to_str(0, nullptr), -1);
}

TEST(Address, PackedPairIsBounded)
{
    struct {
        const char *text;
        int result;
        std::uint16_t first;
        std::uint16_t second;
    } const cases[] = {{"192.168.1.2/24", 0, 0xC0A8, 0x0102}, {"1/2/3/4.", 0, 0x0102, 0x0304},
        {"1.2.3.4", 0, 0x0102, 0x0304}, {"999.1.x.4/", 0, static_cast<std::uint16_t>(999 * 256 + 1), 4},
        {"1...4/", 0, 0x0100, 4}, {"", -1, 0, 0}, {nullptr, -1, 0, 0}, {"1.2.3.", -1, 9, 9}, {"1.2.3.1000/", -1, 9, 9},
        {"1111.2.3.4/", -1, 9, 9}};
    for (const auto &[text, result, first, second] : cases) {
        std::uint16_t pair[2] = {9, 9};
        EXPECT_EQ(ip_str_to_short(text, pair), result) << (text != nullptr ? text : "null");
        EXPECT_EQ(pair[0], first);
        EXPECT_EQ(pair[1], second);
    }
}

struct Endpoint {
    std::array<std::uint8_t, 16> address{0x5A};
    std::uint32_t scope = 77;
    std::uint16_t port = 77;
    int parse(const std::string &uri) { return ipv6_parse_uri(uri.c_str(), address.data(), &scope, &port); }
};

TEST(Address, UriGivesAddressScopeAndPort)
{
    Endpoint end;
    EXPECT_EQ(end.parse("tcp://[::1]:80"), 0);
    EXPECT_EQ(end.address.back(), 1);
    EXPECT_EQ(end.scope, 0U);
    EXPECT_EQ(end.port, 80);
    EXPECT_EQ(end.parse("see tcp://[fe80::1%lo]:65535/more"), 0) << "it may stand anywhere";
    EXPECT_EQ(end.address[0], 0xFE);
    EXPECT_EQ(end.scope, ::if_nametoindex("lo"));
    EXPECT_EQ(end.port, 65535);
    EXPECT_EQ(end.parse("tcp://[fe80::1%there.is.no.such.interface]:65617"), 0);
    EXPECT_EQ(end.scope, 0U);
    EXPECT_EQ(end.port, 81) << "the low 16 bits";
}

TEST(Address, UriRejects)
{
    for (const char *const uri : {"", "tcp://::1:80", "tcp://[::1]", "tcp://[::1]:", "tcp://[]:80", "udp://[::1]:80",
             "tcp://[::1%]:80", "tcp://[::1%a-b]:80", "tcp://[1.2.3.4]:80"}) {
        Endpoint end;
        EXPECT_EQ(end.parse(uri), -1) << uri;
        EXPECT_EQ(end.address[0], 0x5A) << uri;
        EXPECT_EQ(end.port, 77) << uri;
    }
    for (const std::string &address :
        {std::string{"1::2::3"}, std::string{"12345::"}, std::string(127, '1'), std::string(5000, ':')}) {
        Endpoint end;
        EXPECT_EQ(end.parse("tcp://[" + address + "%lo]:99"), -1);
        EXPECT_EQ(end.address, (std::array<std::uint8_t, 16>{})) << "zeroed once the port has been read";
        EXPECT_EQ(end.port, 99);
        EXPECT_EQ(end.scope, 77U);
    }
    EXPECT_EQ(ipv6_parse_uri(nullptr, nullptr, nullptr, nullptr), -1);
}

TEST(Address, MacTakesOneOrTwoDigitsAndOneSeparator)
{
    using Mac = std::array<std::uint8_t, 6>;
    constexpr Mac none{9, 9, 9, 9, 9, 9};
    constexpr Mac usual{0, 0x1B, 0x22, 0x33, 0x44, 0x55};
    struct {
        const char *text;
        char separator;
        Mac expected;
    } const cases[] = {{"00-1B-22-33-44-55", 0, usual}, {"00:1b:22:33:44:55", 0, usual},
        {"00.1b.22.33.44.55", 0, usual}, {"0:1b:2:3:4:5", 0, {0, 0x1B, 2, 3, 4, 5}}, {"00_1B_22_33_44_55", '_', usual},
        {"00:1B:22:33:44:55", ':', usual}, {"00:1B:22:33:44", 0, none}, {"00:1B:22:33:44:", 0, none},
        {"00:1B:22:33:44:55:66", 0, none}, {"00:1B:22:33:44:556", 0, none}, {"00:1B-22:33:44:55", 0, none},
        {"00:1B:22:33:44:55", '-', none}, {"001B22334455", 0, none}, {"0::22:33:44:55", 0, none},
        {"00:1G:22:33:44:55", 0, none}, {"00:1B:22:33:44:55 ", 0, none}, {"", ':', none}, {nullptr, 0, none}};
    for (const auto &[text, separator, expected] : cases) {
        Mac mac = none;
        EXPECT_EQ(parse_mac_address(text, mac.data(), separator), expected == none ? -1 : 0)
            << (text != nullptr ? text : "null");
        EXPECT_EQ(mac, expected);
    }
}

} // namespace
