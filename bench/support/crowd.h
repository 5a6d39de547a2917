// SPDX-License-Identifier: Apache-2.0
// Many real processes, gone again when it is destroyed; the one in the middle is named "the one".
#pragma once

#include <csignal>
#include <cstdlib>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace switchcfg::bench {

class Crowd {
  public:
    explicit Crowd(int size)
    {
        int told[2];
        if (::pipe(told) != 0) {
            std::abort();
        }
        for (int i = 0; i < size; ++i) {
            const pid_t child = ::fork();
            if (child == 0) {
                ::prctl(PR_SET_PDEATHSIG, SIGKILL);
                ::prctl(PR_SET_NAME, i == size / 2 ? "the one" : "one of many");
                ::_exit(::write(told[1], "", 1) == 1 ? ::pause() : 1);
            }
            if (child < 0) {
                std::abort();
            }
            pids_.push_back(child);
        }
        char byte = 0;
        for (int i = 0; i < size; ++i) {
            if (::read(told[0], &byte, 1) != 1) {
                std::abort();
            }
        }
        ::close(told[0]);
        ::close(told[1]);
    }
    ~Crowd()
    {
        for (const pid_t pid : pids_) {
            ::kill(pid, SIGKILL);
        }
        for (const pid_t pid : pids_) {
            ::waitpid(pid, nullptr, 0);
        }
    }
    Crowd(const Crowd &) = delete;
    Crowd &operator=(const Crowd &) = delete;

  private:
    std::vector<pid_t> pids_;
};

} // namespace switchcfg::bench
