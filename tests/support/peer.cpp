// SPDX-License-Identifier: Apache-2.0
#include "support/peer.h"

#include <csignal>
#include <cstdlib>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace switchcfg::testing {

void Link::tell() const
{
    const char byte = 1;
    if (::write(out_, &byte, 1) != 1) {
        ::_exit(99);
    }
}

void Link::wait() const
{
    char byte = 0;
    if (::read(in_, &byte, 1) != 1) {
        ::_exit(98);
    }
}

Peer::Peer(const std::function<void(Link &)> &body)
{
    int up[2];
    int down[2];
    if (::pipe(up) != 0 || ::pipe(down) != 0) {
        std::abort();
    }
    pid_ = ::fork();
    if (pid_ < 0) {
        std::abort();
    }
    if (pid_ == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::close(up[0]);
        ::close(down[1]);
        Link link{down[0], up[1]};
        body(link);
        ::_exit(0);
    }
    ::close(up[1]);
    ::close(down[0]);
    from_child_ = up[0];
    to_child_ = down[1];
}

Peer::~Peer()
{
    kill9();
    ::close(from_child_);
    ::close(to_child_);
}

bool Peer::await() const
{
    char byte = 0;
    return ::read(from_child_, &byte, 1) == 1;
}

void Peer::go() const
{
    const char byte = 1;
    if (::write(to_child_, &byte, 1) != 1) {
        std::abort();
    }
}

void Peer::kill9()
{
    if (pid_ > 0) {
        ::kill(pid_, SIGKILL);
        join();
    }
}

int Peer::join()
{
    int status = -1;
    ::waitpid(std::exchange(pid_, -1), &status, 0);
    return status;
}

} // namespace switchcfg::testing
