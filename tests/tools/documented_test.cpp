// SPDX-License-Identifier: Apache-2.0
// What docs/switchcfg.md says: every command on it is carried out in a lab, and the JSON below it has the shape of what
// is printed. Every sub-command has an example in its help, and every example is on the page.
#include "support/tool.h"

#include <regex>
#include <sstream>

namespace {

using namespace switchcfg::testing;

struct Step {
    std::string command;
    int status = 0;
    std::string language{}; // of the block below it: "json", "text", or empty when nothing is printed
    std::string below{};
};

std::vector<Step> steps_of(std::istream &page)
{
    std::vector<Step> steps;
    std::string block;
    const std::string says_status = "# exit status ";
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with("```")) {
            block = block.empty() ? line.substr(3) + " " : "";
            if (block == "json " || block == "text ") {
                steps.back().language = block.substr(0, 4);
            }
        } else if (block == "console ") {
            const std::size_t status = line.find(says_status);
            steps.push_back({line.substr(2),
                status == std::string::npos ? 0 : std::stoi(line.substr(status + says_status.size()))});
        } else if (block == "json ") {
            steps.back().below += line + '\n';
        }
    }
    return steps;
}

// Every member and element of what is printed is there, with the same type, in what the page shows. Of an array it
// shows one element of each shape.
bool has_shape(const json &printed, const json &shown)
{
    if (printed.is_array() && shown.is_array()) {
        return std::ranges::all_of(printed, [&](const json &element) {
            return std::ranges::any_of(shown, [&](const json &one) { return has_shape(element, one); });
        });
    }
    if (printed.is_object() && shown.is_object()) {
        return printed.size() == shown.size() && std::ranges::all_of(printed.items(), [&](const auto &member) {
            return shown.contains(member.key()) && has_shape(member.value(), shown[member.key()]);
        });
    }
    return (printed.is_number() && shown.is_number()) || printed.type() == shown.type();
}

// One document, or one to a line from a command that goes on.
std::vector<json> documents(const std::string &text)
{
    if (json whole = json::parse(text, nullptr, false); !whole.is_discarded()) {
        return {whole};
    }
    std::vector<json> all;
    for (const std::string &line : lines_of(text)) {
        all.push_back(json::parse(line, nullptr, false));
    }
    return all;
}

// The commands of a help, or the examples at its end.
std::vector<std::string> listed(const std::string &help, const std::string &heading)
{
    std::vector<std::string> found;
    std::istringstream lines{help.substr(std::min(help.size(), help.find('\n' + heading + '\n') + 1))};
    std::string line;
    std::getline(lines, line);
    for (const std::regex name{"  (\\S.*)"}; std::getline(lines, line) && line.starts_with("  ");) {
        if (std::smatch match; std::regex_match(line, match, name)) {
            found.push_back(match[1]);
        }
    }
    return found;
}

void expect_examples(const std::string &path, const std::vector<Step> &steps)
{
    const std::string help = tool(path + " --help").out;
    if (help.find("\nSubcommands:\n") != std::string::npos && path != "trap send") {
        for (const std::string &command : listed(help, "Subcommands:")) {
            expect_examples((path.empty() ? "" : path + ' ') + command.substr(0, command.find(' ')), steps);
        }
        return;
    }
    ASSERT_NE(help.find("\nExamples:\n"), std::string::npos) << path << ": no example in its help";
    for (const std::string &example : listed(help, "Examples:")) {
        EXPECT_TRUE(std::ranges::any_of(
            steps, [&](const Step &step) { return step.command.find(example) != std::string::npos; }))
            << example << ": not on the page";
    }
}

TEST(Documented, CommandsDoAndPrintWhatThePageSays)
{
    std::ifstream page{SWITCHCFG_PAGE};
    const std::vector<Step> steps = steps_of(page);
    ASSERT_GT(steps.size(), 100U);
    expect_examples("", steps);

    const std::string lab = "PATH=$(dirname " SWITCHCFG_TOOL "):$PATH " SWITCHLAB " ";
    const Outcome up = run_command(lab + "up --units 2 --models 17,2 --detach");
    ASSERT_EQ(up.status, 0) << up.err;
    for (const Step &step : steps) {
        write_file("/tmp/step", step.command + '\n');
        const Outcome outcome = run_command(lab + "shell 0 -- bash -c \"$(cat /tmp/step)\"");
        EXPECT_EQ(outcome.status, step.status) << step.command << '\n' << outcome.err;
        EXPECT_EQ(outcome.out.empty(), step.language.empty()) << step.command << '\n' << outcome.out;
        if (step.language != "json") {
            continue;
        }
        const json shown = json::parse(step.below, nullptr, false);
        ASSERT_FALSE(shown.is_discarded()) << step.below;
        for (const json &printed : documents(outcome.out)) {
            EXPECT_TRUE(has_shape(printed, shown)) << step.command << "\nprinted:\n" << printed.dump(1);
        }
    }
    EXPECT_EQ(run_command(lab + "down").status, 0);
}

} // namespace
