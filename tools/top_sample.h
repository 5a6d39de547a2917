// SPDX-License-Identifier: Apache-2.0
// What the switch is doing, sampled again and again.
#ifndef SWITCHCFG_TOOLS_TOP_SAMPLE_H
#define SWITCHCFG_TOOLS_TOP_SAMPLE_H

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace switchcfg::tool {

struct UnitSample {
    int unit;
    std::string model;
    int ports;
    int plugged;  // transceivers
    int disabled; // ports that are administratively down
};

struct LockSample {
    std::string lock;
    std::string holder;
    int waiting;
};

// A process that has the status region mapped.
struct ProcessSample {
    int pid;
    std::string name;
    double cpu_percent; // of one processor, since the sample before
    std::uint64_t resident_kib;
};

struct Sample {
    std::vector<UnitSample> units;
    std::vector<LockSample> locks; // those that are held
    std::vector<ProcessSample> processes;
    int traps_queued;
    double traps_per_second; // those that were seen to come; an agent that is quicker takes some unseen
};

class Sampler {
  public:
    Sampler(); // attaches; throws Failure
    Sample take();

  private:
    using Clock = std::chrono::steady_clock;

    double traps_since_last(double seconds);
    std::vector<ProcessSample> processes(double seconds);

    Clock::time_point taken_{};
    std::vector<std::string> queue_;
    std::map<int, std::uint64_t> ticks_;
};

} // namespace switchcfg::tool

#endif
