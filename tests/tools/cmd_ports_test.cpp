// SPDX-License-Identifier: Apache-2.0
#include "support/tool.h"

#include <regex>

namespace {

using namespace switchcfg::testing;
using ::testing::HasSubstr;

void populate(const std::string &arguments)
{
    ASSERT_EQ(tool("stack populate " + arguments).status, 0);
}

// Matches of a regular expression.
long count_of(const std::string &text, const std::string &pattern)
{
    const std::regex expression{pattern};
    return std::distance(std::sregex_iterator{text.begin(), text.end(), expression}, std::sregex_iterator{});
}

TEST(CmdPorts, TableAndJsonCarryTheNumberingOfTheBoard)
{
    populate("6,9");
    const json unit = json::parse(tool("ports 1 --json").out);
    EXPECT_EQ(unit["name"], "ETH20GT+4GC+2XX+S+L2");
    ASSERT_EQ(unit["ports"].size(), 28U);
    const json expected = {{"port", 27}, {"front_label", 28}, {"kind", "stacking"}, {"medium", "stacking"},
        {"speed_mbps", 10000}, {"module", 1}, {"chip_port", 29}, {"led", nullptr}, {"cage", false}, {"plugged", false},
        {"stacking_id", 1}};
    EXPECT_EQ(unit["ports"][27], expected);
    EXPECT_EQ(unit["ports"][16]["chip_port"], 21);

    const std::string table = tool("ports 0").out;
    EXPECT_THAT(table, HasSubstr("\n16    17      copper         1G     0       21         16   -            -\n"));
    EXPECT_EQ(count_of(table, "combo, copper +1G +0 +[0-9]+ +[0-9]+ +empty"), 4);
}

TEST(CmdPorts, PanelShowsEveryPortOfTheBox)
{
    populate("--plugged 75,85,11");
    const std::string panel = tool("ports 0 --panel").out;
    EXPECT_EQ(count_of(panel, "\033"), 0) << "no colours in a file";
    for (int label = 1; label <= 50; ++label) {
        const bool combo = label >= 45 && label <= 48;
        EXPECT_EQ(count_of(panel, "[ |]" + std::to_string(label) + "[ *-]"), combo ? 2 : 1) << label;
    }
    EXPECT_EQ(count_of(panel, "[0-9]\\*"), 6) << "four combo cages and two for 10G";
    EXPECT_EQ(count_of(panel, "[0-9]-[^-]"), 4) << "the sockets they stand in for";
    EXPECT_EQ(count_of(panel, "S[12]"), 2);
    EXPECT_THAT(tool("ports 1 --panel").out, HasSubstr("+ SFP+ --+"));

    const Outcome narrow =
        run_command("script -qc 'stty cols 80; LC_ALL=C " SWITCHCFG_TOOL " ports 0 --panel' /dev/null");
    ASSERT_EQ(narrow.status, 0) << narrow.err;
    EXPECT_THAT(narrow.out, HasSubstr("\033[7;93m45*\033[0m"));
    for (const std::string &line : lines_of(std::regex_replace(narrow.out, std::regex{"\033[^m]*m|\r"}, ""))) {
        if (line.starts_with("Numbers")) {
            break;
        }
        EXPECT_LE(line.size(), 80U) << line;
    }
    const Outcome plain = run_command("script -qc 'NO_COLOR=1 " SWITCHCFG_TOOL " ports 0 --panel' /dev/null");
    EXPECT_EQ(count_of(plain.out, "\033"), 0);
}

TEST(CmdPorts, DrawingHasOneElementPerOpening)
{
    populate("75");
    ASSERT_EQ(tool("ports 0 --svg /tmp/panel.svg").out, "");
    const std::string drawing = file_text("/tmp/panel.svg");
    EXPECT_EQ(drawing, tool("ports 0 --svg -").out);
    EXPECT_EQ(count_of(drawing, "<g><title>Port "), 48 + 4 + 2 + 2) << "combo ports have a socket and a cage";
    EXPECT_EQ(count_of(drawing, "<g>"), count_of(drawing, "</g>"));
    EXPECT_EQ(
        count_of(drawing, "<title>Port 44: combo, copper, 1G, module 0 chip port 50, transceiver empty</title>"), 2);
    expect_refused("ports 0 --svg /no/such/folder/panel.svg", "/no/such/folder/panel.svg: cannot open: No such file");
}

TEST(CmdPorts, OnePortTheProcessorAndPortChannels)
{
    populate("56,7");
    const json port = json::parse(tool("port 0/20 --json").out);
    EXPECT_EQ(port["powers_devices"], true);
    EXPECT_EQ(port["kind"], "combo");
    EXPECT_EQ(port["port_channel"], nullptr);
    EXPECT_EQ(json::parse(tool("port 1/cpu --json").out)["chip_port"], 0);
    EXPECT_EQ(tool("stack channel 1/25 600").status, 0);
    const json channel = json::parse(tool("port 0/600 --json").out);
    EXPECT_EQ(channel["speed_mbps"], 10000);
    EXPECT_EQ(channel["members"], json::array({"1/25"}));
}

TEST(CmdPorts, BoardsThatAreNotThere)
{
    populate("6");
    EXPECT_EQ(tool("stack provision 3 85").status, 0);
    const json expected = json::parse(tool("ports 3 --json").out);
    EXPECT_EQ(expected["provisioned"], true);
    ASSERT_EQ(expected["ports"].size(), 28U);
    EXPECT_EQ(expected["ports"][27]["kind"], "SFP+");
    EXPECT_EQ(expected["ports"][27]["chip_port"], nullptr);
    EXPECT_EQ(expected["ports"][27]["speed_mbps"], nullptr);
    for (const auto &[arguments, reason] : {std::pair{"ports 2", "no board there"}, {"ports 8", "unit 8"},
             {"ports -1", "unit -1"}, {"port 0/24", "its last one is 23"}, {"port 0", "is no port"},
             {"port 0/1x", "is no port"}, {"port 0/600", "no member"}}) {
        expect_refused(arguments, reason);
    }
}

} // namespace
