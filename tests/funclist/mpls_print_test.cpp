// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/mpls_print.h>
#include <switchcfg/print_ext.h>

#include "support/test.h"

namespace {

// What was printed since the last call.
std::string taken()
{
    char *buffer = nullptr;
    int length = -1;
    EXPECT_EQ(mpls_prt_get_context(&buffer, &length), 0);
    const switchcfg::testing::Freed<char> owner{buffer};
    if (buffer == nullptr) {
        EXPECT_EQ(length, 0);
        return "(none)";
    }
    std::string text{buffer};
    EXPECT_EQ(length, static_cast<int>(text.size()) + 1);
    return text;
}

template<typename... Values>
std::string printed(const char *format, Values... values)
{
    mpls_cli_printf(format, values...);
    return taken();
}

TEST(MplsPrint, TextBeginsGathersAndIsHandedOver)
{
    EXPECT_EQ(taken(), "(none)");
    EXPECT_EQ(printed(""), "");
    mpls_cli_printf("label %d", 16);
    mpls_cli_printf(" -> %s\n", "pop");
    EXPECT_EQ(taken(), "label 16 -> pop\n");
    EXPECT_EQ(taken(), "(none)");
    mpls_cli_printf("gone");
    mpls_prt_clean_context();
    EXPECT_EQ(taken(), "(none)");
    int length = 0;
    mpls_cli_printf("kept");
    EXPECT_EQ(mpls_prt_get_context(nullptr, &length), -1);
    EXPECT_EQ(taken(), "kept");
}

TEST(MplsPrint, EveryConversionTakesItsOwnKindOfArgument)
{
    ASSERT_EQ(printExts_init(), 0);
    const std::uint8_t mac[] = {0, 0x1a, 0x2b, 0x3c, 0x4d, 0x5e};
    EXPECT_EQ(printed("%s|%5s|%-5s|%.2s|", "abc", "abc", "abc", "abc"), "abc|  abc|abc  |ab|");
    EXPECT_EQ(printed("%d %u %x %X %#06x %+d|", -1, -1, 255, 255, 255, 7), "-1 4294967295 ff FF 0x00ff +7|");
    EXPECT_EQ(printed("%M %20M|", mac, mac), "00:1A:2B:3C:4D:5E    00:1A:2B:3C:4D:5E|");
    EXPECT_EQ(printed("%c%c%3c|", 'a', 0x100 + 'b', 'c'), "ab  c|");
    EXPECT_EQ(printed("%f %.1f %8.2f|", 3, 3, -3), "3.000000 3.0    -3.00|");
    const std::uint8_t address[] = {10, 0, 0, 7};
    EXPECT_EQ(printed("peer %D is up, %d routes|", address, 3), "peer 10.0.0.7 is up, 3 routes|");
    EXPECT_EQ(printed("%D at the end"), "<null pointer> at the end");
    EXPECT_EQ(printed("%hhx %hd|", 0x1ff, 0x10001), "ff 1|");
    EXPECT_EQ(printed("%s", static_cast<const char *>(nullptr)), "(null)");
}

TEST(MplsPrint, LettersLAndRAndPercentSigns)
{
    EXPECT_EQ(printed("%l|%5l|", -7, 42), "-7|   42|");
    EXPECT_EQ(printed("%ld %lu|", 5, 6), "5d 6u|");
    EXPECT_EQ(printed("%r %d|%5r|", 9), "%r 9|%5r|");

    EXPECT_EQ(printed("100%% of %d%%\n", 7), "100% of 7%\n");
    EXPECT_EQ(printed("%%d %d", 3), "%d 3");
    EXPECT_EQ(printed("50%"), "") << "the C library refuses a piece that ends in the middle of a conversion";
    EXPECT_EQ(printed("%d 50%", 1), "1");
}

TEST(MplsPrint, LongPiecesEndTheCall)
{
    const std::string plain(199, 'p');
    EXPECT_EQ(printed((plain + "%d").c_str(), 1), "");
    EXPECT_EQ(printed(plain.c_str()), "");
    EXPECT_EQ(printed(plain.substr(1).c_str()), plain.substr(1));
    EXPECT_EQ(printed((plain.substr(2) + "%d").c_str(), 1), "") << "the conversion counts";
    EXPECT_EQ(printed((plain.substr(3) + "%d!").c_str(), 1), plain.substr(3) + "1!");
    EXPECT_EQ(printed(("%d" + plain + "%d").c_str(), 1, 2), "1") << "what was printed before stays";
    EXPECT_EQ(printed("%s", std::string(1000, 's').c_str()), std::string(1000, 's'));
}

TEST(MplsPrint, ForeignConversionsNeverReachForMissingArguments)
{
    EXPECT_EQ(printed("%i to go"), "0 to go") << "the piece at the end is printed with 0";
    EXPECT_EQ(printed("%i%%d|%d", 5, 6), "5%d|6");
    EXPECT_EQ(printed("%i %d %d|", 1, 2, 3), "1 0 0|");
    EXPECT_EQ(printed("%p %e %i"), "(nil) 0.000000e+00 0");
    EXPECT_EQ(printed("%zd %lld %jx|", -5, 6, 255), "-5 6ld ff|");
    EXPECT_EQ(printed("%*d|%.*s|", 7, "text"), "7|text|");
    EXPECT_EQ(printed("%1$d|", 7), "7|");
    EXPECT_EQ(printed("%n|%d", 7), "|0") << "the sign behind an unknown letter closes it";
    EXPECT_EQ(printed("%i%%s|", "text"), "0%s|");
    EXPECT_EQ(printed("%99999999999d|%d", 1, 2), "|2");
}

TEST(MplsPrint, BufferGrowsAroundItsSteps)
{
    for (int size = 0; size < 600; ++size) {
        const std::string text(static_cast<std::size_t>(size), 'x');
        EXPECT_EQ(printed("%s%s", text.c_str(), "end"), text + "end");
    }
}

TEST(MplsPrint, LackOfMemoryLosesTheTextUntilTheContextIsReset)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the address sanitizer ends the process when memory runs out";
#else
    // Holes in the heap, for the pieces, that the growing text has no use for.
    std::vector<std::unique_ptr<char[]>> blocks;
    for (int i = 0; i < 200; ++i) {
        blocks.push_back(std::make_unique<char[]>(20000));
    }
    for (std::size_t i = 0; i < blocks.size(); i += 2) {
        blocks[i].reset();
    }
    const std::string piece(4000, 'x');
    const rlimit limit{64 << 20, RLIM_INFINITY};
    ASSERT_EQ(::setrlimit(RLIMIT_AS, &limit), 0);
    for (int i = 0; i < 20000; ++i) {
        mpls_cli_printf("%s", piece.c_str());
    }
    mpls_cli_printf("small");
    char *buffer = nullptr;
    int length = 0;
    EXPECT_EQ(mpls_prt_get_context(&buffer, &length), 0);
    EXPECT_EQ(buffer, nullptr);
    EXPECT_GT(length, 1 << 20) << "the length of what was lost";
    EXPECT_EQ(printed("%s", "again"), "again");
#endif
}

} // namespace
