// SPDX-License-Identifier: Apache-2.0
// What every sub-command prints on standard output, on its way to the reader: paged on a terminal that is too small for
// it, filtered, cut or uploaded when asked, by the library's pager family.
#ifndef SWITCHCFG_TOOLS_COMMAND_LINE_LONG_OUTPUT_H
#define SWITCHCFG_TOOLS_COMMAND_LINE_LONG_OUTPUT_H

#include <CLI/CLI.hpp>
#include <iosfwd>
#include <sstream>
#include <string>

namespace switchcfg::tool {

// For a sub-command without an end: what it prints goes straight out from now on.
void print_as_it_happens();

class LongOutput {
  public:
    explicit LongOutput(CLI::App &app); // adds the options
    ~LongOutput();
    LongOutput(const LongOutput &) = delete;
    LongOutput &operator=(const LongOutput &) = delete;

    // Holds back what std::cout is given, when it has to go anywhere but straight out. To be called once the options
    // are known. Throws Failure.
    void begin();
    // Sends it on its way.
    void finish();
    void release(); // what was held back and what follows goes straight out

  private:
    void show(const std::string &text) const;

    bool no_pager_ = false;
    std::string pattern_;
    int lines_ = 0;
    std::string upload_;
    std::string server_;
    std::string remote_file_;
    std::ostringstream held_;
    std::streambuf *straight_ = nullptr; // what std::cout had, while it is held back
};

} // namespace switchcfg::tool

#endif
