// SPDX-License-Identifier: Apache-2.0
#include "support/peer.h"

namespace switchcfg::testing {
namespace {

bool send_byte(int fd)
{
    const char byte = 1;
    return ::write(fd, &byte, 1) == 1;
}

bool take_byte(int fd)
{
    char byte = 0;
    return ::read(fd, &byte, 1) == 1;
}

} // namespace

void Link::tell() const
{
    if (!send_byte(out_)) {
        ::_exit(99);
    }
}

void Link::wait() const
{
    if (!take_byte(in_)) {
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
    if (fork()) {
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
    return take_byte(from_child_);
}

void Peer::go() const
{
    if (!send_byte(to_child_)) {
        std::abort();
    }
}

} // namespace switchcfg::testing
