// SPDX-License-Identifier: Apache-2.0
// A stand-in daemon of the lab, started as its own program.
#ifndef SWITCHCFG_TESTS_SUPPORT_DAEMON_H
#define SWITCHCFG_TESTS_SUPPORT_DAEMON_H

#include "support/child.h"

namespace switchcfg::testing {

class Daemon : public Child {
  public:
    // The program is given --ready-fd beside the arguments, and writes a byte there once it serves.
    explicit Daemon(const std::string &program, const std::vector<std::string> &arguments = {});
    ~Daemon() { ::close(ready_); }
    Daemon(const Daemon &) = delete;
    Daemon &operator=(const Daemon &) = delete;

    bool ready() const;      // waits; false when the program ended first
    int exit_status() const; // waits for its end; -1 when a signal ended it

  private:
    int ready_ = -1;
};

// One that serves when it is constructed.
class ServingDaemon : public Daemon {
  public:
    explicit ServingDaemon(const std::string &program, const std::vector<std::string> &arguments = {})
        : Daemon(program, arguments)
    {
        EXPECT_TRUE(ready());
    }
};

} // namespace switchcfg::testing

#endif
