// SPDX-License-Identifier: Apache-2.0
// A second process for tests between processes, stepped over pipes: no test sleeps to let the other side get somewhere.
#ifndef SWITCHCFG_TESTS_SUPPORT_PEER_H
#define SWITCHCFG_TESTS_SUPPORT_PEER_H

#include <functional>
#include <sys/types.h>

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

class Peer {
  public:
    // Runs `body` in a forked child, which ends with exit status 0 after it, without running atexit handlers.
    explicit Peer(const std::function<void(Link &)> &body);
    ~Peer(); // kills and reaps a child that still runs
    Peer(const Peer &) = delete;
    Peer &operator=(const Peer &) = delete;

    pid_t pid() const { return pid_; }
    bool await() const; // false when the child ended before it told
    void go() const;
    void kill9();
    int join(); // the raw wait status

  private:
    pid_t pid_ = -1;
    int from_child_ = -1;
    int to_child_ = -1;
};

} // namespace switchcfg::testing

#endif
