// SPDX-License-Identifier: Apache-2.0
// What the machine and its processes have used so far, read from /proc, and what they used in the last while.
#ifndef SWITCHLAB_CPUMON_SAMPLER_H
#define SWITCHLAB_CPUMON_SAMPLER_H

#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

namespace switchlab::cpumon {

using Clock = std::chrono::steady_clock;
using Ticks = std::uint64_t; // hundredths of a second of processor time on most machines: sysconf(_SC_CLK_TCK)

struct Processor {
    std::string name; // "all", "0", "1", ...
    Ticks user = 0;
    Ticks system = 0;
    Ticks idle = 0;
    Ticks total() const { return user + system + idle; }
};

struct Memory {
    std::uint64_t total_kib = 0;
    std::uint64_t free_kib = 0; // what processes could still have
    std::uint64_t used_kib() const { return total_kib - free_kib; }
};

struct Process {
    int pid = 0;
    std::string name; // printable characters only
    char state = '?';
    long priority = 0;
    long threads = 0;
    Ticks user = 0;
    Ticks system = 0;
    Ticks started = 0; // since the machine did
    std::uint64_t resident_kib = 0;
    std::uint64_t virtual_kib = 0;
    int processor = 0; // it last ran on
    Ticks total() const { return user + system; }
};

struct Snapshot {
    Clock::time_point at;
    std::vector<Processor> processors; // the first is all of them
    Memory memory;
    Memory swap;
    std::vector<Process> processes;
};

Snapshot look();

// Percent of one processor that was used between two snapshots.
class Sampler {
  public:
    // Keeps what longer windows need; to be called every second or so.
    void keep(const Snapshot &snapshot);

    // Of the process in the newest look, over the last `window` or as much of it as is known.
    double usage(const Snapshot &now, const Process &process, std::chrono::seconds window) const;
    // The processors' times over the last five seconds, in the order of the newest look.
    std::vector<Processor> recent(const Snapshot &now) const;

  private:
    struct Kept {
        Clock::time_point at;
        std::vector<Processor> processors;
        std::map<int, std::pair<Ticks, Ticks>> processes; // PID to start and time used
    };
    const Kept *before(Clock::time_point moment) const;

    std::deque<Kept> kept_; // oldest first
};

} // namespace switchlab::cpumon

#endif
