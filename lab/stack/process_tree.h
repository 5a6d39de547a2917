// SPDX-License-Identifier: Apache-2.0
// The processes below a process, read from /proc at the moment of the call.
#ifndef SWITCHCFG_LAB_STACK_PROCESS_TREE_H
#define SWITCHCFG_LAB_STACK_PROCESS_TREE_H

#include <map>
#include <string>
#include <vector>

namespace switchlab {

struct ProcessInfo {
    int pid = 0;
    int pid_inside = 0; // in the innermost process list that it is in
    int parent = 0;
    std::string program; // what it executes, or the name it gave itself
};

class ProcessTree {
  public:
    ProcessTree();
    std::vector<ProcessInfo> below(int pid) const; // it, its children, theirs
    static long memory_kib(int pid);               // its share of all memory, 0 when that is kept from us

  private:
    std::multimap<int, ProcessInfo> by_parent_;
    std::map<int, ProcessInfo> by_pid_;
};

} // namespace switchlab

#endif
