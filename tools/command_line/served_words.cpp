// SPDX-License-Identifier: Apache-2.0
#include "tools/command_line/served_words.h"

#include "tools/command_line/completion.h"
#include "tools/command_line/manual.h"

#include <iostream>

namespace switchcfg::tool {

bool served_shell_or_packaging(const CLI::App &app, std::span<const std::string> words, const std::string &exit_status)
{
    if (words.size() > 1 && words.front() == "complete-words") {
        for (const std::string &word : completions(app, words.subspan(1))) {
            std::cout << word << '\n';
        }
        return true;
    }
    if (words.size() == 2 && words.front() == "write-manual") {
        write_manual(app, words.back(), exit_status);
        return true;
    }
    return false;
}

} // namespace switchcfg::tool
