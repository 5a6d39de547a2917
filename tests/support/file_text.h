// SPDX-License-Identifier: Apache-2.0
// Whole files as text, for tests.
#ifndef SWITCHCFG_TESTS_SUPPORT_FILE_TEXT_H
#define SWITCHCFG_TESTS_SUPPORT_FILE_TEXT_H

#include <sstream>

#include "support/test.h"

namespace switchcfg::testing {

inline std::string file_text(const std::string &path)
{
    std::ostringstream text;
    text << std::ifstream{path, std::ios::binary}.rdbuf();
    return text.str();
}

inline void write_file(const std::string &path, const std::string &text)
{
    std::ofstream{path, std::ios::binary} << text;
}

inline std::vector<std::string> lines_of(const std::string &text)
{
    std::vector<std::string> lines;
    std::istringstream in{text};
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

} // namespace switchcfg::testing

#endif
