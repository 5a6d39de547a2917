// SPDX-License-Identifier: Apache-2.0
// switchcfg call list: the functions there are; completion asks it too.
#include "tools/call/commands.h"
#include "tools/output.h"

#include <iostream>
#include <memory>

namespace switchcfg::tool {
namespace {

void list(const std::string &only, bool names)
{
    Json json = Json::array();
    Table table{{"Family", "Number", "Function", "Time-out"}};
    for (const Family &family : families()) {
        if (!only.empty() && only != family.name) {
            continue;
        }
        const google::protobuf::EnumDescriptor &numbers = *family.numbers();
        for (int i = 0; i < numbers.value_count(); ++i) {
            const auto &function = *numbers.value(i);
            const std::string name = function_name(family, function);
            const std::uint32_t timeout_s = family.timeout_s(function.number());
            if (names) {
                std::cout << name << '\n';
            }
            json.push_back(
                {{"family", family.name}, {"number", function.number()}, {"function", name}, {"timeout_s", timeout_s}});
            table.add({family.name, std::to_string(function.number()), name, std::to_string(timeout_s) + " s"});
        }
    }
    if (!names) {
        print(json, [&] { table.print(); });
    }
}

} // namespace

void add_list_command(CLI::App &app)
{
    auto *command = app.add_subcommand("list", "The functions, their numbers and time-outs");
    auto family = std::make_shared<std::string>();
    auto names = std::make_shared<bool>(false);
    std::vector<std::string> known;
    for (const Family &each : families()) {
        known.emplace_back(each.name);
    }
    command->add_option("FAMILY", *family, "Only this one")->check(CLI::IsMember(known));
    command->add_flag("--names", *names, "Only the names, one a line");
    command->callback([=] { list(*family, *names); });
}

} // namespace switchcfg::tool
