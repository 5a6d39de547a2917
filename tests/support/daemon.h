// SPDX-License-Identifier: Apache-2.0
// A stand-in daemon of the lab, started as its own program.
#ifndef SWITCHCFG_TESTS_SUPPORT_DAEMON_H
#define SWITCHCFG_TESTS_SUPPORT_DAEMON_H

#include <string>
#include <sys/types.h>
#include <vector>

namespace switchcfg::testing {

class Daemon {
  public:
    // The program is given --ready-fd beside the arguments, and writes a byte there once it serves.
    explicit Daemon(const std::string &program, const std::vector<std::string> &arguments = {});
    ~Daemon(); // kills and reaps it
    Daemon(const Daemon &) = delete;
    Daemon &operator=(const Daemon &) = delete;

    pid_t pid() const { return pid_; }
    bool ready() const; // waits; false when the program ended first
    void kill9();
    int exit_status() const; // waits for its end; -1 when a signal ended it

  private:
    mutable pid_t pid_ = -1;
    int ready_ = -1;
};

} // namespace switchcfg::testing

#endif
