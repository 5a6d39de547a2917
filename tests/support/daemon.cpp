// SPDX-License-Identifier: Apache-2.0
#include "support/daemon.h"

namespace switchcfg::testing {

Daemon::Daemon(const std::string &program, const std::vector<std::string> &arguments)
{
    int ready[2];
    if (::pipe2(ready, O_CLOEXEC) != 0) {
        std::abort();
    }
    std::vector<std::string> words{program, "--ready-fd", std::to_string(ready[1])};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char *> argv;
    for (std::string &word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    if (fork()) {
        ::fcntl(ready[1], F_SETFD, 0);
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }
    ::close(ready[1]);
    ready_ = ready[0];
}

bool Daemon::ready() const
{
    char byte = 0;
    return ::read(ready_, &byte, 1) == 1;
}

int Daemon::exit_status() const
{
    const int status = join();
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace switchcfg::testing
