// SPDX-License-Identifier: Apache-2.0
// switchcfg call: a program of its own, because it loads protobuf and ZeroMQ, which would make every other sub-command
// start at half the speed.
#include "tools/command_line/failure.h"
#include "tools/commands.h"

#include <filesystem>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace switchcfg::tool {
namespace {

// Installed in a folder of its own, built in the folder of this program.
constexpr const char *places[] = {SWITCHCFG_CALL_INSTALLED, "switchcfg-call"};

// Returns only when the program is missing.
void hand_on(std::vector<char *> arguments)
{
    arguments.push_back(nullptr);
    std::error_code none;
    const std::filesystem::path folder = std::filesystem::read_symlink("/proc/self/exe", none).parent_path();
    for (const char *const place : places) {
        const std::string program = folder / place;
        if (::access(program.c_str(), X_OK) == 0) {
            ::execv(program.c_str(), arguments.data());
            throw system_failure(program, "execv");
        }
    }
}

bool is(const char *word, std::string_view wanted)
{
    return word == wanted;
}

} // namespace

void add_call_command(CLI::App &app, int argc, char **argv)
{
    auto *call = app.add_subcommand("call", "Call a function of the switch-chip daemon");
    call->prefix_command();
    call->fallthrough(false);
    call->set_help_flag();
    call->callback([call, argc, argv] {
        std::vector<char *> arguments{argv, argv + argc};
        arguments.erase(arguments.end() - static_cast<std::ptrdiff_t>(call->remaining().size()) - 1); // "call" itself
        hand_on(std::move(arguments));
        throw Failure{"call: switchcfg-call is not installed: this switchcfg was built without the chip-daemon calls"};
    });
}

void complete_call(int argc, char **argv)
{
    if (argc > 3 && is(argv[1], "complete-words") && is(argv[2], "call")) {
        std::vector<char *> arguments{argv, argv + argc};
        arguments.erase(arguments.begin() + 2);
        hand_on(std::move(arguments));
    }
}

void add_to_manual_of_call(int argc, char **argv)
{
    if (argc == 3 && is(argv[1], "write-manual")) {
        hand_on({argv, argv + argc});
    }
}

} // namespace switchcfg::tool
