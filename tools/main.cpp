// SPDX-License-Identifier: Apache-2.0
// switchcfg: what a process of the switch sees, and how to change it.
#include "tools/commands.h"
#include "tools/completion.h"
#include "tools/examples.h"
#include "tools/failure.h"
#include "tools/long_output.h"
#include "tools/manual.h"
#include "tools/output.h"

#include <exception>
#include <iostream>

// NOLINTNEXTLINE(bugprone-exception-escape): without memory for its own options the tool can only end
int main(int argc, char **argv)
{
    using namespace switchcfg::tool;

    CLI::App app{"Inspect and drive the switch: what a process that links libswitchcfg sees.", "switchcfg"};
    app.require_subcommand(1);
    app.fallthrough();
    app.footer("Exit status: 0 done, 1 could not be done, 2 wrong usage.\n"
               "Without a switch, run it in a lab: switchlab run -- switchcfg ...");
    app.add_flag_callback(
           "--json", [] { want_json(true); }, "Print data as JSON")
        ->trigger_on_parse();

    add_init_command(app);
    add_config_commands(app);
    add_lock_commands(app);
    add_env_commands(app);
    add_log_commands(app);
    add_trap_commands(app);
    add_request_command(app);
    add_routing_commands(app);
    add_error_command(app);
    add_units_command(app);
    add_status_commands(app);
    add_equip_commands(app);
    add_stack_commands(app);
    add_ports_commands(app);
    add_sntp_commands(app);
    add_cpumon_commands(app);
    add_process_commands(app);
    add_pm_commands(app);
    add_address_commands(app);
    add_top_command(app);
    add_examples(app);

    try {
        LongOutput output{app};
        // For shells and for packaging: their words are not the tool's own, so they are not parsed.
        const std::vector<std::string> words(argv + 1, argv + argc);
        if (words.size() > 1 && words.front() == "complete-words") {
            for (const std::string &word : completions(app, std::span{words}.subspan(1))) {
                std::cout << word << '\n';
            }
            return 0;
        }
        if (words.size() == 2 && words.front() == "write-manual") {
            write_manual(app, words.back());
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
        std::cerr << "switchcfg: " << wrong.what() << '\n';
        return 2;
    } catch (const CommandStatus &command) {
        return command.status;
    } catch (const std::exception &failure) {
        std::cerr << "switchcfg: " << failure.what() << '\n';
        return 1;
    }
}
