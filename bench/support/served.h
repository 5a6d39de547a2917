// SPDX-License-Identifier: Apache-2.0
// The other side of an exchange, in a process of its own. It is this program executed anew, because a process that has
// ZeroMQ's threads must not go on in a forked child.
#pragma once

#include <sys/types.h>

namespace switchcfg::bench {

// Says that the server takes requests. Called once by the server.
void serving();

// A static object of it makes `serve` known; that function never returns while all is well.
struct ServeAs {
    ServeAs(const char *name, void (*serve)());
};

// Runs the function of this name, in the process that was started for it.
int serve_as(const char *name);

class Served {
  public:
    explicit Served(const char *name); // returns when the server takes requests, or has failed to
    ~Served();
    Served(const Served &) = delete;
    Served &operator=(const Served &) = delete;
    bool runs() const { return ready_; }

  private:
    pid_t pid_;
    bool ready_ = false;
};

} // namespace switchcfg::bench
