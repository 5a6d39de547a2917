// SPDX-License-Identifier: Apache-2.0
// What a lab is made of, as the machine sees it: to look afterwards whether all of it is gone.
#ifndef SWITCHCFG_LAB_DEMO_TRACES_H
#define SWITCHCFG_LAB_DEMO_TRACES_H

#include <map>
#include <set>
#include <string>

namespace switchlab::demo {

class Traces {
  public:
    explicit Traces(int keeper); // of the lab with this keeper, while it is up

    std::size_t processes() const { return processes_.size(); }
    std::size_t namespaces() const { return namespaces_.size(); }
    std::size_t mounts() const { return mounts_.size(); }

    std::string left() const; // one line for each thing that is still there

  private:
    unsigned long long seen_at_;
    std::map<int, unsigned long long> processes_; // by PID, when each was started: PIDs are used again
    std::set<std::string> namespaces_;            // "net:[4026532000]"
    std::set<std::string> mounts_;                // device and place
};

} // namespace switchlab::demo

#endif
