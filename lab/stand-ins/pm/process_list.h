// SPDX-License-Identifier: Apache-2.0
// Which processes the manager looks after: a text file, one process per line,
//
//     NAME enabled|disabled COMMAND...
//
// The name is at most 31 characters; the shell splits the command into words and executes it. Empty lines and lines
// that begin with "#" count for nothing.
#ifndef SWITCHCFG_LAB_STAND_INS_PM_PROCESS_LIST_H
#define SWITCHCFG_LAB_STAND_INS_PM_PROCESS_LIST_H

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace switchlab::pm {

struct Entry {
    std::string name;
    bool enabled;
    std::string command;
};

// "FILE:LINE: reason"
struct ListError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Throws ListError; `origin` names the text in it.
std::vector<Entry> parse_process_list(std::string_view text, const std::string &origin);
std::vector<Entry> read_process_list(const std::string &path);

} // namespace switchlab::pm

#endif
