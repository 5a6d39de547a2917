// SPDX-License-Identifier: Apache-2.0
// A second process for tests between processes, stepped over pipes: no test sleeps to let the other side get somewhere.
#ifndef SWITCHCFG_TESTS_SUPPORT_PEER_H
#define SWITCHCFG_TESTS_SUPPORT_PEER_H

#include "support/child.h"

namespace switchcfg::testing {

// The child's end: tell() lets the parent's await() return, wait() returns at the parent's go().
class Link {
  public:
    Link(int in, int out) : in_(in), out_(out) {}
    void tell() const;
    void wait() const;

  private:
    int in_;
    int out_;
};

class Peer : public Child {
  public:
    // Runs `body` in a forked child, which ends with exit status 0 after it, without running atexit handlers.
    explicit Peer(const std::function<void(Link &)> &body);
    ~Peer();
    Peer(const Peer &) = delete;
    Peer &operator=(const Peer &) = delete;

    bool await() const; // false when the child ended before it told
    void go() const;

  private:
    int from_child_ = -1;
    int to_child_ = -1;
};

} // namespace switchcfg::testing

#endif
