// SPDX-License-Identifier: Apache-2.0
// Runs switchlab as a user would, and tells what it said.
#ifndef SWITCHCFG_TESTS_LAB_LAB_RUNNER_H
#define SWITCHCFG_TESTS_LAB_LAB_RUNNER_H

#include <string>
#include <sys/types.h>
#include <vector>

namespace switchcfg::testing {

using Words = std::vector<std::string>;

// A program with its standard output and error on a pipe.
class Program {
  public:
    explicit Program(const Words &words);
    ~Program(); // kills and reaps one that still runs
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    pid_t pid() const { return pid_; }
    std::string line() const;   // the next line of output, without its end
    std::string rest() const;   // until every process that holds the output is gone
    int exit_status();          // as a shell shows it
    int send(int signal) const; // kill()'s result

  private:
    pid_t pid_ = -1;
    int output_ = -1;
};

struct Outcome {
    int status;
    std::string output;
};
Outcome run(const Words &words);
// In a lab of its own, inside the one the test runs in: `options` for switchlab, `script` for the shell.
Outcome lab(const std::string &script, const Words &options = {});
// The kernel makes no user namespaces for whoever lives below chroot(), and so no lab without rights.
bool makes_user_namespaces();
Words lab_words(const std::string &script, const Words &options = {});

} // namespace switchcfg::testing

#endif
