// SPDX-License-Identifier: Apache-2.0
#include "tools/run.h"

#include "tools/completion.h"
#include "tools/failure.h"
#include "tools/long_output.h"
#include "tools/manual.h"
#include "tools/output.h"

#include <exception>
#include <iostream>
#include <span>
#include <string>
#include <vector>

namespace switchcfg::tool {

int run(CLI::App &app, int argc, char **argv)
{
    app.add_flag_callback(
           "--json", [] { want_json(true); }, "Print data as JSON")
        ->trigger_on_parse();
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

} // namespace switchcfg::tool
