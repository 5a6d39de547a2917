// SPDX-License-Identifier: Apache-2.0
// The process outside that a lab of units belongs to: it starts it, answers who knocks, and takes it down. When it
// dies, the lab dies with it.
#ifndef SWITCHCFG_LAB_STACK_KEEPER_H
#define SWITCHCFG_LAB_STACK_KEEPER_H

#include "lab/stack/events.h"
#include "lab/stack/plan.h"

#include <chrono>
#include <csignal>
#include <map>
#include <string>
#include <sys/types.h>

namespace switchlab {

// What its owner wants to see of a lab coming up and going on.
class Watcher {
  public:
    virtual ~Watcher() = default;
    virtual void stage(int part, const std::string &stage) = 0;
    virtual void trouble(int part, const std::string &text) = 0;
    // All parts are up; not complete when one has told a trouble that keeps it from being ready.
    virtual void up(std::chrono::milliseconds after, bool complete) = 0;
};

class Keeper {
  public:
    // Throws a Refusal, with nothing left behind, when there is a lab of this name.
    explicit Keeper(LabPlan plan);
    ~Keeper();
    Keeper(const Keeper &) = delete;
    Keeper &operator=(const Keeper &) = delete;

    // Until a signal or a visitor ends it, or the lab fails. Gives the exit status.
    int run(Watcher &watcher);

  private:
    using Clock = std::chrono::steady_clock;
    struct Part {
        std::string stage = "waiting";
        switchcfg::Descriptor process;
        switchcfg::Descriptor root;
        nlohmann::json environment = nlohmann::json::object();
        nlohmann::json daemons = nlohmann::json::array();
    };

    void start();
    bool hear(Watcher &watcher); // false when there is nothing to hear any more
    bool some_part_failed() const;
    void look_whether_ready(Watcher &watcher);
    void serve_visitor();
    void describe(int visitor);
    nlohmann::json description() const;
    void end();

    LabPlan plan_;
    switchcfg::Descriptor door_;
    switchcfg::Descriptor events_;
    switchcfg::Descriptor commands_;
    switchcfg::Descriptor signals_;
    switchcfg::Descriptor process_;
    switchcfg::Descriptor last_visitor_; // who asked for the end is told when it has come
    sigset_t old_mask_{};
    pid_t lab_ = 0;
    bool asked_to_end_ = false;
    std::map<int, Part> parts_;
    Clock::time_point begin_ = Clock::now();
    std::chrono::milliseconds ready_after_{-1};
};

} // namespace switchlab

#endif
