// SPDX-License-Identifier: Apache-2.0
#include "lab/sandbox.h"

#include "lab/kept_places.h"
#include "lab/loopback.h"
#include "lab/mounts.h"
#include "lab/private_folders.h"
#include "lab/refusal.h"
#include "lab/signal_relay.h"
#include "util/owned.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <sched.h>
#include <string_view>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace switchlab {
namespace {

using switchcfg::Descriptor;

constexpr unsigned long lab_namespaces = CLONE_NEWNS | CLONE_NEWNET | CLONE_NEWPID | CLONE_NEWUTS | CLONE_NEWIPC;

int complain(std::string_view what, int status)
{
    std::fprintf(stderr, "switchlab: %.*s\n", static_cast<int>(what.size()), what.data());
    return status;
}

void write_text(const char *path, const std::string &text)
{
    const Descriptor fd{::open(path, O_WRONLY | O_CLOEXEC)};
    if (!fd || ::write(fd.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        throw refusal("write", path);
    }
}

// Whoever starts the lab is root inside.
void become_root_inside(uid_t uid, gid_t gid)
{
    write_text("/proc/self/setgroups", "deny");
    write_text("/proc/self/uid_map", "0 " + std::to_string(uid) + " 1");
    write_text("/proc/self/gid_map", "0 " + std::to_string(gid) + " 1");
}

// As the shell looks it up; empty when there is no such command, which exec will then say better.
std::string find_command(const std::string &name)
{
    if (name.find('/') != std::string::npos) {
        return name;
    }
    const char *path = std::getenv("PATH");
    std::string_view rest = path != nullptr ? path : "/bin:/usr/bin";
    for (;;) {
        const std::size_t colon = rest.find(':');
        const std::string_view folder = rest.substr(0, colon);
        std::string candidate = (folder.empty() ? "." : std::string{folder}) + "/" + name;
        if (::access(candidate.c_str(), X_OK) == 0) {
            return candidate;
        }
        if (colon == std::string_view::npos) {
            return {};
        }
        rest.remove_prefix(colon + 1);
    }
}

void keep_program(KeptPlaces &kept, const std::filesystem::path &program)
{
    std::error_code ignored;
    for (const std::filesystem::path &path : {program, std::filesystem::canonical(program, ignored)}) {
        if (!path.empty() && !kept.keep_if_possible(std::filesystem::absolute(path).parent_path().string())) {
            kept.keep_if_possible(path.string()); // it lies directly in /tmp: the file alone
        }
    }
}

// The first process of the lab: makes its inside, starts the command, and takes care of orphans. When it ends, the
// kernel ends every process of the lab and drops its mounts.
class FirstProcess {
  public:
    FirstProcess(const RunRequest &request, const SignalRelay &signals) : request_(request), signals_(signals)
    {
        std::error_code why;
        current_folder_ = std::filesystem::current_path(why).string();
        for (const std::string &folder : request.keep) {
            kept_.keep(folder);
        }
        if (!request.flash.image.empty()) {
            kept_.keep(request.flash.image);
        }
        if (request.flash.wanted) {
            kept_.keep_if_possible(std::filesystem::path{request.flash.library}.parent_path().string());
        }
        if (!current_folder_.empty()) {
            kept_.keep_if_possible(current_folder_);
        }
        if (const std::string program = find_command(request.command.front()); !program.empty()) {
            keep_program(kept_, program);
        }
        keep_program(kept_, "/proc/self/exe");
    }

    // In the new process. `starter` refers to the process outside.
    int run(bool own_user_namespace, uid_t uid, gid_t gid, Descriptor starter)
    {
        die_with(std::move(starter));
        if (own_user_namespace) {
            become_root_inside(uid, gid);
        }
        make_inside();
        if (request_.flash.wanted) {
            start_flash_device(request_.flash);
        }
        const pid_t child = ::fork();
        if (child < 0) {
            throw refusal("fork", "");
        }
        if (child == 0) {
            become_command();
        }
        return signals_.wait_for(child);
    }

  private:
    static void die_with(Descriptor starter)
    {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        struct pollfd gone {
            starter.get(), POLLIN, 0
        };
        if (::poll(&gone, 1, 0) != 0) { // it died before the line above
            ::_exit(exit_lab_failed);
        }
    }

    void make_inside()
    {
        make_mounts_private();
        kept_.hold();
        const mode_t mask = ::umask(0);
        mount_private_folders();
        kept_.put_back();
        ::umask(mask);
        bring_loopback_up();
        if (current_folder_.empty() || ::chdir(current_folder_.c_str()) != 0) {
            if (::chdir("/") != 0) {
                throw refusal("chdir", "/");
            }
        }
    }

    [[noreturn]] void become_command() const
    {
        signals_.restore_for_command();
        ::execvp(request_.command.front(), request_.command.data());
        // A folder of PATH that may not be searched is no reason to call a missing command forbidden.
        const int why = find_command(request_.command.front()).empty() ? ENOENT : errno;
        ::_exit(complain(std::string{request_.command.front()} + ": " + std::strerror(why),
            why == ENOENT ? exit_not_found : exit_not_executable));
    }

    const RunRequest &request_;
    const SignalRelay &signals_;
    KeptPlaces kept_;
    std::string current_folder_;
};

pid_t clone_process(unsigned long flags)
{
    return static_cast<pid_t>(::syscall(SYS_clone, flags | SIGCHLD, 0, 0, 0, 0));
}

} // namespace

int run_in_lab(RunRequest &request)
try {
    const pid_t parent = ::getppid();
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) {
        return exit_lab_failed;
    }
    const uid_t uid = ::geteuid();
    const gid_t gid = ::getegid();
    if (request.flash.wanted) {
        prepare_flash(request.flash);
    }
    const SignalRelay signals;
    FirstProcess first{request, signals};
    Descriptor self{static_cast<int>(::syscall(SYS_pidfd_open, ::getpid(), 0))};
    if (!self) {
        throw refusal("pidfd_open", "");
    }

    // Root needs no user namespace, unless it is a container's root without the rights.
    bool own_user_namespace = uid != 0;
    pid_t child = own_user_namespace ? -1 : clone_process(lab_namespaces);
    if (child < 0 && (own_user_namespace || errno == EPERM)) {
        own_user_namespace = true;
        child = clone_process(lab_namespaces | CLONE_NEWUSER);
    }
    if (child < 0) {
        throw refusal("clone", own_user_namespace ? "new user, mount, network and process namespaces"
                                                  : "new mount, network and process namespaces");
    }
    if (child == 0) {
        int status = exit_lab_failed;
        try {
            status = first.run(own_user_namespace, uid, gid, std::move(self));
        } catch (const std::exception &why) {
            complain(why.what(), status);
        }
        ::_exit(status);
    }
    return signals.wait_for(child);
} catch (const std::exception &why) {
    return complain(why.what(), exit_lab_failed);
}

} // namespace switchlab
