// SPDX-License-Identifier: Apache-2.0
// A program on a terminal of its own: the test reads the screen and presses keys.
#ifndef SWITCHCFG_TESTS_SUPPORT_TERMINAL_H
#define SWITCHCFG_TESTS_SUPPORT_TERMINAL_H

#include "support/child.h"

namespace switchcfg::testing {

class Terminal : public Child {
  public:
    // Runs `body` in a child whose standard input, output and error are the terminal, and which ends with exit(0).
    Terminal(int rows, int columns, const std::function<void()> &body);
    ~Terminal();
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;

    // Reads until the text has appeared since the last press(); false when it has not within ten seconds.
    bool shows(const std::string &text) { return shows_either(text, text); }
    bool shows_either(const std::string &one, const std::string &other);
    // What has appeared since the last press().
    const std::string &seen() const { return seen_; }
    void press(const std::string &keys);
    // Reads until the program has ended; everything since the last press().
    std::string rest();
    bool line_mode() const;

  private:
    bool read_more();
    int master_ = -1;
    std::string seen_;
};

} // namespace switchcfg::testing

#endif
