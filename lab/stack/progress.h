// SPDX-License-Identifier: Apache-2.0
// How a lab comes up, told on a terminal or into a file.
#ifndef SWITCHCFG_LAB_STACK_PROGRESS_H
#define SWITCHCFG_LAB_STACK_PROGRESS_H

#include "lab/stack/keeper.h"

#include <functional>

namespace switchlab {

// Whether to colour what goes to this descriptor: on terminals only, and not with NO_COLOR.
bool colour_wanted(int descriptor);

class Progress : public Watcher {
  public:
    explicit Progress(const LabPlan &plan);
    void when_up(std::function<void(bool complete)> action) { when_up_ = std::move(action); }
    void stage(int part, const std::string &stage) override;
    void trouble(int part, const std::string &text) override;
    void up(std::chrono::milliseconds after, bool complete) override;
    // From now on nobody looks at standard output.
    void hush() { quiet_ = true; }

  private:
    std::string name_of(int part) const;
    void line(const std::string &text) const;
    void draw();

    const LabPlan &plan_;
    std::function<void(bool)> when_up_;
    bool terminal_;
    bool up_ = false;
    bool quiet_ = false;
    std::map<int, std::string> stages_;
    std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

} // namespace switchlab

#endif
