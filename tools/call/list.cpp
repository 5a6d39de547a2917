// SPDX-License-Identifier: Apache-2.0
// switchcfg call list: the functions there are.
#include "tools/call/commands.h"
#include "tools/command_line/output.h"

#include <memory>

namespace switchcfg::tool {
namespace {

void list(const std::string &only)
{
    Json json = Json::array();
    Table table{{"FAMILY", "NUMBER", "FUNCTION", "TIME-OUT"}};
    for (const Family &family : families()) {
        if (!only.empty() && only != family.name) {
            continue;
        }
        const google::protobuf::EnumDescriptor &numbers = *family.numbers();
        for (int i = 0; i < numbers.value_count(); ++i) {
            const auto &function = *numbers.value(i);
            const std::string name = function_name(family, function);
            const std::uint32_t timeout_s = family.timeout_s(function.number());
            json.push_back(
                {{"family", family.name}, {"number", function.number()}, {"function", name}, {"timeout_s", timeout_s}});
            table.add({family.name, std::to_string(function.number()), name, std::to_string(timeout_s) + " s"});
        }
    }
    print(json, [&] { table.print(); });
}

} // namespace

void add_list_command(CLI::App &app)
{
    auto *command = app.add_subcommand("list", "The functions, their numbers and time-outs");
    auto family = std::make_shared<std::string>();
    std::vector<std::string> known;
    for (const Family &each : families()) {
        known.emplace_back(each.name);
    }
    command->add_option("family", *family, "Only this one")->check(CLI::IsMember(known));
    command->callback([=] { list(*family); });
}

} // namespace switchcfg::tool
