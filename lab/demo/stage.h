// SPDX-License-Identifier: Apache-2.0
// The voice of the demo: says what happens, does it as a user would, and checks it.
#ifndef SWITCHCFG_LAB_DEMO_STAGE_H
#define SWITCHCFG_LAB_DEMO_STAGE_H

#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>
#include <sys/types.h>
#include <vector>

namespace switchlab::demo {

using Words = std::vector<std::string>;

// A check that did not hold; the rest of the story would not either.
class Failed : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct Said {
    int status = 0;
    std::string text; // standard output and error
};

// A switchlab of its own beside the demo, which dies with it.
class Running {
  public:
    explicit Running(const Words &arguments);
    ~Running(); // ends it as Ctrl-C does
    Running(const Running &) = delete;
    Running &operator=(const Running &) = delete;

    // Hands over lines as they come, until one has `text`; false when it ends first.
    bool read_until(const std::string &text, const std::function<void(const std::string &)> &line) const;
    int wait(); // for its end, as a shell tells it

  private:
    pid_t pid_ = 0;
    int output_ = -1;
};

class Stage {
  public:
    Stage();

    void chapter(const std::string &title);
    void say(const std::string &text) const;
    void print(const std::string &line) const;  // of a program
    void command(const Words &arguments) const; // how it is typed

    // Runs "switchlab ARGUMENTS...", at most 30 s.
    Said run(const Words &arguments) const;
    // The same, shown as it is typed, with what it says; of long answers only the lines with `only`, the first one too.
    Said show(const Words &arguments, const std::string &only = {}) const;

    void check(const std::string &what, bool holds, const std::string &otherwise = {});
    void check_says(const std::string &what, const Said &said, const std::string &text);
    // Asks again and again, for ten seconds.
    void check_comes(const std::string &what, const Words &arguments, const std::string &text);

    void finish() const; // the summary

  private:
    std::string painted(const char *colour, const std::string &text) const;

    bool colours_;
    int checks_ = 0;
    std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

} // namespace switchlab::demo

#endif
