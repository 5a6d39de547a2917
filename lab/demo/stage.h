// SPDX-License-Identifier: Apache-2.0
// The voice of the demo: says what happens, does it as a user would, and checks it.
#ifndef SWITCHCFG_LAB_DEMO_STAGE_H
#define SWITCHCFG_LAB_DEMO_STAGE_H

#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>
#include <sys/types.h>
#include <utility>
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

// What a command should say, and end with status 0.
struct Expected {
    enum class Kind { part, all };
    std::string text;
    Kind kind = Kind::part;

    bool fits(const Said &said) const;
};

inline Expected exactly(std::string text)
{
    return {std::move(text), Expected::Kind::all};
}

// A switchlab of its own beside the demo, which dies with it.
class Running {
  public:
    explicit Running(const Words &arguments);
    ~Running(); // ends it as Ctrl-C does
    Running(const Running &) = delete;
    Running &operator=(const Running &) = delete;

    // Hands over lines as they come, until one has `text`; that line, or nothing when it ends first.
    std::string read_until(const std::string &text, const std::function<void(const std::string &)> &line) const;
    int wait(); // for its end, as a shell tells it

  private:
    pid_t pid_ = 0;
    int output_ = -1;
};

class Stage {
  public:
    Stage();

    void chapter(const std::string &title) const;
    void say(const std::string &text) const;
    void print(const std::string &line) const;  // of a program
    void command(const Words &arguments) const; // how it is typed

    // Runs "switchlab ARGUMENTS...", at most 30 s.
    Said run(const Words &arguments) const;
    // The same, shown as it is typed, with what it says; of long answers only the lines with one of these texts.
    Said show(const Words &arguments, const Words &only = {}) const;

    // Throws Failed when it does not hold, after having said what was expected and what came.
    void check(const std::string &what, bool holds, const std::string &expected, const std::string &came);
    void check_says(const std::string &what, const Said &said, const Expected &expected);
    // Asks again and again, for at least 20 s: a busy machine is slow.
    void check_comes(const std::string &what, const Words &arguments, const Expected &expected);
    // A part of the story that cannot be told here.
    void leave_out(const std::string &why);

    void finish() const; // the summary
    int checks() const { return checks_; }

  private:
    std::string painted(const char *colour, const std::string &text) const;

    bool colours_;
    int checks_ = 0;
    std::vector<std::string> left_out_;
    std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

} // namespace switchlab::demo

#endif
