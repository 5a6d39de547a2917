// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/funclist.pb.h>
#include <switchcfg/funclist_stats.h>

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

namespace {

std::string dumped(const funclist_stats &stats)
{
    ::setenv("TZ", "UTC", 1);
    char *text = nullptr;
    std::size_t size = 0;
    std::FILE *const stream = ::open_memstream(&text, &size);
    EXPECT_EQ(dumpFunclistStats(&stats, stream), '\n');
    EXPECT_EQ(std::fclose(stream), 0);
    const std::unique_ptr<char, decltype(&std::free)> owner{text, &std::free};
    return {text, size};
}

const std::string head = "\n"
                         "Last commands executed:\n"
                         "Exec Start               | Duration     | Type     | Function (Parameters) and result\n"
                         "-------------------------|--------------|----------|---------------------------------\n";

TEST(FunclistStats, NothingYet)
{
    EXPECT_EQ(dumped({}), "Total amount of command processed: 0\n" + head + "\n");
    EXPECT_EQ(dumpFunclistStats(nullptr, stdout), EOF);
    const funclist_stats stats{};
    EXPECT_EQ(dumpFunclistStats(&stats, nullptr), EOF);
    std::FILE *const full = std::fopen("/dev/full", "w");
    (void)std::setvbuf(full, nullptr, _IONBF, 0);
    EXPECT_EQ(dumpFunclistStats(&stats, full), EOF);
    (void)std::fclose(full);
}

TEST(FunclistStats, CommandsOfEveryFamilyOldestFirst)
{
    funclist_stats stats{};
    stats.executed = 20;
    stats.next = 4;
    stats.keep_alive_time = 86400;
    const auto command = [](int family, int function, std::uint32_t end_s, std::uint32_t end_us, int result) {
        return funclist_command{1000000000, 900000, end_s, end_us, family, function, 1, 2, 0xffffffff, 4, result};
    };
    stats.commands[0] = command(3, BCMD_PORT_STATE_SET, 1000000012, 900001, 0);
    stats.commands[1] = command(4, BCMD_MPLS_LABEL_ADD, 1000000001, 100000, -5);
    stats.commands[2] = command(6, BCMD_VHW_INIT, 1000000000, 900000, 7);
    stats.commands[14] = command(1, BCMD_GENERAL_ECHO, 1000012345, 900000, -37);
    stats.commands[15] = command(2, BCMD_UNIT_RESET, 0, 0, 0);
    stats.commands[3] = command(1, 99999, 1000000001, 0, 0);
    const std::string start = "Sun Sep  9 01:46:40 2001";
    const std::string expected =
        "Total amount of command processed: 20\n" + head +                                 //
        start + " | 12345.000000s | General  | BCMD_GENERAL_ECHO 2 (1, 2, -1, 4): -37\n" + //
        start + " |      Running | Unit     | BCMD_UNIT_RESET 3 (1, 2, -1, 4)\n" +         //
        start + " |   12.000001s | UnitPort | BCMD_PORT_STATE_SET 2 (1, 2, -1, 4): 0\n" +  //
        start + " |    0.200000s | Mpls     | BCMD_PORT_STATE_SET 2 (1, 2, -1, 4): -5\n" + //
        start + " |    0.000000s | 6        |  1 (1, 2, -1, 4): 7\n" +                     //
        start + " |    0.100000s | General  |  99999 (1, 2, -1, 4): 0\n" +                 //
        "\nThere are pending operations. Last keep alive message sent Fri Jan  2 00:00:00 1970\n\n";
    EXPECT_EQ(dumped(stats), expected);
    stats.next = 4 + 16 * 1000; // from a block that somebody spoiled
    EXPECT_EQ(dumped(stats), expected);
}

} // namespace
