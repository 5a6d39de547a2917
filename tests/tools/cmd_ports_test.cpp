// SPDX-License-Identifier: Apache-2.0
#include "support/tool.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <regex.h>
#include <sstream>

namespace {

using nlohmann::json;
using switchcfg::testing::file_text;
using switchcfg::testing::Outcome;
using switchcfg::testing::run_command;
using switchcfg::testing::tool;
using ::testing::HasSubstr;

void populate(const std::string &arguments)
{
    ASSERT_EQ(tool("stack populate " + arguments).status, 0);
}

// Matches of an extended regular expression.
int count_of(const std::string &text, const std::string &pattern)
{
    regex_t expression;
    EXPECT_EQ(::regcomp(&expression, pattern.c_str(), REG_EXTENDED), 0) << pattern;
    int count = 0;
    regmatch_t match;
    for (const char *at = text.c_str(); ::regexec(&expression, at, 1, &match, 0) == 0; at += match.rm_eo) {
        ++count;
    }
    ::regfree(&expression);
    return count;
}

std::string without_colours(std::string text)
{
    for (std::size_t start = 0; (start = text.find('\033', start)) != std::string::npos;) {
        text.erase(start, text.find('m', start) + 1 - start);
    }
    std::erase(text, '\r');
    return text;
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
    std::istringstream lines{without_colours(narrow.out)};
    for (std::string line; std::getline(lines, line) && line.rfind("Numbers", 0) != 0;) {
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
    const Outcome refused = tool("ports 0 --svg /no/such/folder/panel.svg");
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, "switchcfg: /no/such/folder/panel.svg: cannot open: No such file or directory\n");
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
        const Outcome outcome = tool(arguments);
        EXPECT_EQ(outcome.status, 1) << arguments;
        EXPECT_EQ(outcome.out, "") << arguments;
        EXPECT_THAT(outcome.err, HasSubstr(reason)) << arguments;
    }
}

} // namespace
