// SPDX-License-Identifier: Apache-2.0
// New namespaces, and who is root in them.
#ifndef SWITCHCFG_LAB_SANDBOX_NAMESPACES_H
#define SWITCHCFG_LAB_SANDBOX_NAMESPACES_H

#include "util/owned.h"

#include <functional>
#include <sched.h>
#include <sys/types.h>

namespace switchlab {

inline constexpr unsigned long lab_namespaces = CLONE_NEWNS | CLONE_NEWNET | CLONE_NEWPID | CLONE_NEWUTS | CLONE_NEWIPC;

// Who makes a lab, as seen from outside.
struct Maker {
    uid_t uid;
    gid_t gid;
    static Maker myself();
};

// Starts a process in the namespaces of `flags`, in a user namespace of its own where this one has not the rights. The
// body is told whether it is; its result is the process's exit status, exit_lab_failed when it throws. The process dies
// with this one.
pid_t start_in_namespaces(unsigned long flags, const std::function<int(bool own_user_namespace)> &body);

// The same without a way around missing rights.
pid_t start_with_rights(unsigned long flags, const std::function<int()> &body);

// In the new process, with a user namespace of its own: whoever starts the lab is root inside.
void become_root_inside(const Maker &maker);

// Throws a Refusal when the kernel cannot.
switchcfg::Descriptor process_handle(pid_t pid);

// A line on standard error; gives the status back.
int complain(std::string_view what, int status);

} // namespace switchlab

#endif
