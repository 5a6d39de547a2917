// SPDX-License-Identifier: Apache-2.0
// What the run does to the daemons, the clients and the machine under them. Every fault is over when inject() returns.
#ifndef SWITCHCFG_SOAK_FAULTS_H
#define SWITCHCFG_SOAK_FAULTS_H

#include "soak/shared.h"

#include <map>
#include <random>
#include <string>
#include <utility>

namespace switchcfg::soak {

class Faults {
  public:
    Faults(Shared &shared, std::uint32_t seed);

    void inject();
    const std::map<std::string, int> &counts() const { return counts_; }
    // Since the last call: a full /var takes the place of pages that the regions do not have yet, and whoever touches
    // such a page dies of SIGBUS.
    bool var_was_full() { return std::exchange(var_was_full_, false); }

  private:
    struct Victim {
        pid_t pid = 0;
        std::string name;
        Worker *worker = nullptr;
    };

    Victim some_daemon();
    Victim some_worker(bool with_chip);
    int random(int below) { return static_cast<int>(random_() % static_cast<unsigned>(below)); }
    void hold(int most_ms);
    void touches(const Victim &victim);

    void kill_one(const Victim &victim);
    void stall(const Victim &victim, int most_ms);
    void limit(const Victim &victim, bool memory);
    void fill(const std::string &folder);
    void watch_logging_daemon();

    Shared &shared_;
    std::mt19937 random_;
    std::map<std::string, int> counts_;
    bool var_was_full_ = false;
    pid_t logging_daemon_ = 0;
    std::uint32_t seen_epoch_ = 0;
};

} // namespace switchcfg::soak

#endif
