// SPDX-License-Identifier: Apache-2.0
// A program that runs beside the test.
#ifndef SWITCHCFG_TESTS_SUPPORT_SPAWNED_H
#define SWITCHCFG_TESTS_SUPPORT_SPAWNED_H

#include <initializer_list>
#include <string>
#include <sys/types.h>

namespace switchcfg::testing {

class Spawned {
  public:
    // Found through PATH; when this returns it is executing, and its command line can be read.
    Spawned(std::initializer_list<std::string> arguments);
    ~Spawned(); // kills and reaps it
    Spawned(const Spawned &) = delete;
    Spawned &operator=(const Spawned &) = delete;

    pid_t pid() const { return pid_; }
    int join(); // the raw wait status

  private:
    pid_t pid_ = -1;
};

} // namespace switchcfg::testing

#endif
