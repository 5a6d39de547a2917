// SPDX-License-Identifier: Apache-2.0
#include "bench/support/served.h"

#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace switchcfg::bench {
namespace {

constexpr int ready_fd = 3;

std::vector<std::pair<std::string_view, void (*)()>> &known()
{
    static std::vector<std::pair<std::string_view, void (*)()>> list;
    return list;
}

} // namespace

void serving()
{
    (void)!::write(ready_fd, "", 1);
    ::close(ready_fd);
}

ServeAs::ServeAs(const char *name, void (*serve)())
{
    known().emplace_back(name, serve);
}

int serve_as(const char *name)
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (const auto &[its_name, serve] : known()) {
        if (its_name == name) {
            serve();
        }
    }
    return 1;
}

Served::Served(const char *name)
{
    const std::string argument = std::string{"--serve="} + name;
    int ready[2];
    if (::pipe(ready) != 0) {
        std::abort();
    }
    pid_ = ::vfork();
    if (pid_ == 0) {
        if (ready[1] != ready_fd) {
            ::dup2(ready[1], ready_fd);
            ::close(ready[1]);
        }
        if (ready[0] != ready_fd) {
            ::close(ready[0]);
        }
        ::execl("/proc/self/exe", "switchcfg-bench", argument.c_str(), static_cast<char *>(nullptr));
        ::_exit(127);
    }
    ::close(ready[1]);
    char byte = 0;
    ready_ = pid_ > 0 && ::read(ready[0], &byte, 1) == 1;
    ::close(ready[0]);
}

Served::~Served()
{
    if (pid_ > 0) {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
}

} // namespace switchcfg::bench
