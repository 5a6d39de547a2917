// SPDX-License-Identifier: Apache-2.0
// A process that a test started, and that ends with the test at the latest.
#ifndef SWITCHCFG_TESTS_SUPPORT_CHILD_H
#define SWITCHCFG_TESTS_SUPPORT_CHILD_H

#include <sys/prctl.h>

#include "support/test.h"

namespace switchcfg::testing {

class Child {
  public:
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    pid_t pid() const { return pid_; }
    void kill9() const
    {
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
            join();
        }
    }
    int join() const // the raw wait status
    {
        int status = -1;
        ::waitpid(std::exchange(pid_, -1), &status, 0);
        return status;
    }

  protected:
    Child() = default;
    ~Child() { kill9(); }
    // True in the child.
    bool fork()
    {
        pid_ = ::fork();
        if (pid_ < 0) {
            std::abort();
        }
        if (pid_ == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        }
        return pid_ == 0;
    }

    mutable pid_t pid_ = -1;
};

} // namespace switchcfg::testing

#endif
