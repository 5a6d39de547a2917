// SPDX-License-Identifier: Apache-2.0
// Many real processes, gone again when it is destroyed; the one in the middle is named "the one". They share this
// program's memory, so that thousands are there in a moment, and do nothing but wait.
#pragma once

#include <csignal>
#include <cstdlib>
#include <memory>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace switchcfg::bench {

class Crowd {
  public:
    explicit Crowd(int size) : stacks_(std::make_unique<Stack[]>(static_cast<std::size_t>(size)))
    {
        if (::pipe(told_) != 0) {
            std::abort();
        }
        for (int i = 0; i < size; ++i) {
            Stack &stack = stacks_[static_cast<std::size_t>(i)];
            stack.name = i == size / 2 ? "the one" : "one of many";
            stack.told = told_[1];
            pids_.push_back(::clone(wait_for_the_end, stack.bytes + sizeof stack.bytes, CLONE_VM | SIGCHLD, &stack));
            if (pids_.back() < 0) {
                std::abort();
            }
        }
        char byte = 0;
        for (int i = 0; i < size; ++i) {
            if (::read(told_[0], &byte, 1) != 1) {
                std::abort();
            }
        }
        ::close(told_[0]);
        ::close(told_[1]);
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
    struct alignas(16) Stack {
        char bytes[4096];
        const char *name;
        int told;
    };

    static int wait_for_the_end(void *own)
    {
        const auto &stack = *static_cast<const Stack *>(own);
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::prctl(PR_SET_NAME, stack.name);
        if (::write(stack.told, "", 1) == 1) {
            ::pause();
        }
        return 1;
    }

    std::unique_ptr<Stack[]> stacks_;
    int told_[2];
    std::vector<pid_t> pids_;
};

} // namespace switchcfg::bench
