// SPDX-License-Identifier: Apache-2.0
// Runs switchlab as a user would, and tells what it said.
#ifndef SWITCHCFG_TESTS_LAB_LAB_RUNNER_H
#define SWITCHCFG_TESTS_LAB_LAB_RUNNER_H

#include "support/peer.h"

#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

namespace switchcfg::testing {

using Words = std::vector<std::string>;

// A program with its standard output and error on a pipe.
class Program {
  public:
    explicit Program(const Words &words);
    ~Program();
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    pid_t pid() const { return peer_->pid(); }
    std::string line() const;   // the next line of output, without its end
    std::string rest() const;   // until every process that holds the output is gone
    int exit_status();          // as a shell shows it
    int send(int signal) const; // kill()'s result

  private:
    int output_ = -1;
    std::unique_ptr<Peer> peer_;
};

struct Outcome {
    int status;
    std::string output;
    bool operator==(const Outcome &) const = default;
};
Outcome run(const Words &words);
// In a lab of its own, inside the one the test runs in: `options` for switchlab, `script` for the shell.
Outcome lab(const std::string &script, const Words &options = {});
// The kernel makes no user namespaces for whoever lives below chroot(), and so no lab without rights.
bool makes_user_namespaces();
// Copies programs to /tmp/user, where a user without rights can reach them. Gives what makes a command that user's:
// nothing when this one has no rights either.
Words plain_user(const Words &programs);
Words lab_words(const std::string &script, const Words &options = {});

} // namespace switchcfg::testing

#endif
