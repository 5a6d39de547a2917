// SPDX-License-Identifier: Apache-2.0
// switchcfg call stats: what the daemon did lately.
#include "tools/call/commands.h"
#include "tools/command_line/failure.h"
#include "tools/command_line/output.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <switchcfg/funclist.h>

namespace switchcfg::tool {
namespace {

Json json_of(const funclist_stats &stats)
{
    Json commands = Json::array();
    for (std::uint32_t i = 0; i < FUNCLIST_STATS_COMMANDS; ++i) {
        const funclist_command &command = stats.commands[(stats.next + i) % FUNCLIST_STATS_COMMANDS];
        if (command.start_s == 0) {
            continue;
        }
        Json json{{"family", command.family}, {"function", command.function},
            {"arguments", {command.arg1, command.arg2, command.arg3, command.arg4}},
            {"start", command.start_s + command.start_us / 1e6}};
        if (command.end_s != 0) {
            json["end"] = command.end_s + command.end_us / 1e6;
            json["result"] = command.result;
        }
        commands.push_back(json);
    }
    return {{"executed", stats.executed}, {"keep_alive_time", stats.keep_alive_time}, {"commands", commands}};
}

std::string text_of(const funclist_stats &stats)
{
    char *text = nullptr;
    std::size_t size = 0;
    std::FILE *const stream = ::open_memstream(&text, &size);
    if (stream == nullptr) {
        throw system_failure("statistics", "open_memstream");
    }
    dumpFunclistStats(&stats, stream);
    (void)std::fclose(stream);
    const std::unique_ptr<char, decltype(&std::free)> owner{text, &std::free};
    return {text, size};
}

void stats()
{
    const Family &general = families().front();
    const Outcome outcome = general.call(BCMD_GENERAL_COMMAND_STATS, {}, {});
    require_success("stats", outcome);
    funclist_stats stats{};
    if (outcome.output.size() != sizeof stats) {
        throw Failure{"stats: the daemon keeps none in a form known here"};
    }
    std::memcpy(&stats, outcome.output.data(), sizeof stats);
    print(json_of(stats), [&] { std::cout << text_of(stats); });
}

} // namespace

void add_stats_command(CLI::App &app)
{
    app.add_subcommand("stats", "The last commands of the daemon; the request for them is the one that runs")
        ->callback(stats);
}

} // namespace switchcfg::tool
