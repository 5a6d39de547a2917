// SPDX-License-Identifier: Apache-2.0
#include "lab/sandbox/namespaces.h"

#include "lab/refusal.h"
#include "lab/sandbox/sandbox.h"
#include "lab/text_file.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace switchlab {
namespace {

using switchcfg::Descriptor;

void die_with(const Descriptor &starter)
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    struct pollfd gone {
        starter.get(), POLLIN, 0
    };
    if (::poll(&gone, 1, 0) != 0) { // it died before the line above
        ::_exit(exit_lab_failed);
    }
}

pid_t clone_process(unsigned long flags)
{
    return static_cast<pid_t>(::syscall(SYS_clone, flags | SIGCHLD, 0, 0, 0, 0));
}

[[noreturn]] void become(const Descriptor &starter, const std::function<int()> &body)
{
    int status = exit_lab_failed;
    try {
        die_with(starter);
        status = body();
    } catch (const std::exception &why) {
        complain(why.what(), status);
    }
    (void)std::fflush(nullptr);
    ::_exit(status);
}

} // namespace

Maker Maker::myself()
{
    return {::geteuid(), ::getegid()};
}

pid_t start_in_namespaces(unsigned long flags, const std::function<int(bool)> &body)
{
    const Descriptor self = process_handle(::getpid());
    // Root needs no user namespace, unless it is a container's root without the rights.
    bool own_user_namespace = ::geteuid() != 0;
    pid_t child = own_user_namespace ? -1 : clone_process(flags);
    if (child < 0 && (own_user_namespace || errno == EPERM)) {
        own_user_namespace = true;
        child = clone_process(flags | CLONE_NEWUSER);
    }
    if (child < 0) {
        throw refusal("clone", own_user_namespace ? "new user, mount, network and process namespaces"
                                                  : "new mount, network and process namespaces");
    }
    if (child == 0) {
        become(self, [&] { return body(own_user_namespace); });
    }
    return child;
}

pid_t start_with_rights(unsigned long flags, const std::function<int()> &body)
{
    const Descriptor self = process_handle(::getpid());
    const pid_t child = clone_process(flags);
    if (child < 0) {
        throw refusal("clone", "new mount, network and process namespaces");
    }
    if (child == 0) {
        become(self, body);
    }
    return child;
}

void become_root_inside(const Maker &maker)
{
    write_kernel_file("/proc/self/setgroups", "deny");
    write_kernel_file("/proc/self/uid_map", "0 " + std::to_string(maker.uid) + " 1");
    write_kernel_file("/proc/self/gid_map", "0 " + std::to_string(maker.gid) + " 1");
}

Descriptor process_handle(pid_t pid)
{
    Descriptor handle{static_cast<int>(::syscall(SYS_pidfd_open, pid, 0))};
    if (!handle) {
        throw refusal("pidfd_open", "");
    }
    return handle;
}

int complain(std::string_view what, int status)
{
    std::fprintf(stderr, "switchlab: %.*s\n", static_cast<int>(what.size()), what.data());
    return status;
}

} // namespace switchlab
