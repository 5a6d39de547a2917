// SPDX-License-Identifier: Apache-2.0
// A program on a terminal of its own: the test reads the screen and presses keys.
#ifndef SWITCHCFG_TESTS_SUPPORT_TERMINAL_H
#define SWITCHCFG_TESTS_SUPPORT_TERMINAL_H

#include <functional>
#include <string>
#include <sys/types.h>

namespace switchcfg::testing {

class Terminal {
  public:
    // Runs `body` in a child whose standard input, output and error are the terminal, and which ends with exit(0).
    Terminal(int rows, int columns, const std::function<void()> &body);
    ~Terminal(); // kills and reaps a child that still runs
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;

    pid_t pid() const { return pid_; }
    // Reads until the text has appeared since the last press(); false when it has not within ten seconds.
    bool shows(const std::string &text) { return shows_either(text, text); }
    bool shows_either(const std::string &one, const std::string &other);
    // What has appeared since the last press().
    const std::string &seen() const { return seen_; }
    void press(const std::string &keys);
    // Reads until the program has ended; everything since the last press().
    std::string rest();
    int join(); // the raw wait status
    bool line_mode() const;

  private:
    bool read_more();
    pid_t pid_ = -1;
    int master_ = -1;
    std::string seen_;
};

} // namespace switchcfg::testing

#endif
