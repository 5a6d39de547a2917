// SPDX-License-Identifier: Apache-2.0
#include "tools/command_line/run.h"

#include "tools/command_line/failure.h"
#include "tools/command_line/long_output.h"
#include "tools/command_line/output.h"
#include "tools/command_line/served_words.h"

#include <exception>
#include <iostream>
#include <span>
#include <string>
#include <vector>

namespace switchcfg::tool {

namespace {

// What is wrong, and where to read on: the sub-command that the words lead to.
std::string usage_error(const CLI::App &app, std::span<const std::string> words, const std::string &wrong)
{
    const CLI::App *command = &app;
    std::string path = app.get_name();
    std::string reason = wrong;
    for (const std::string &word : words) {
        const auto known = command->get_subcommands(
            [&](const CLI::App *each) { return !each->get_name().empty() && each->check_name(word); });
        if (!known.empty()) {
            command = known.front();
            path += ' ' + word;
        } else if (command->get_require_subcommand_min() > 0 && !word.starts_with("-")) {
            reason = "'";
            reason.append(word).append("' is no sub-command of ").append(path);
            break;
        }
    }
    return reason + "; see " + path + " --help";
}

} // namespace

int run(CLI::App &app, int argc, char **argv)
{
    app.set_version_flag("--version", SWITCHCFG_VERSION, "Print the version and exit");
    app.add_flag_callback(
           "--json", [] { want_json(true); }, "Print data as JSON")
        ->trigger_on_parse();
    const std::vector<std::string> words(argv + 1, argv + argc);
    try {
        LongOutput output{app};
        if (served_shell_or_packaging(app, words, "0 done, 1 could not be done, 2 wrong usage.")) {
            return 0;
        }
        app.parse_complete_callback([&] { output.begin(); });
        try {
            app.parse(argc, argv);
        } catch (...) {
            output.finish(); // what there is comes before the reason why there is no more
            throw;
        }
        output.finish();
        return 0;
    } catch (const CLI::Success &request) {
        return app.exit(request);
    } catch (const CLI::ParseError &wrong) {
        std::cerr << "switchcfg: " << usage_error(app, words, wrong.what()) << '\n';
        return 2;
    } catch (const CommandStatus &command) {
        return command.status;
    } catch (const std::exception &failure) {
        std::cerr << "switchcfg: " << failure.what() << '\n';
        return 1;
    }
}

} // namespace switchcfg::tool
