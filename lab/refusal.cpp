// SPDX-License-Identifier: Apache-2.0
#include "lab/refusal.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <unistd.h>

namespace switchlab {
namespace {

// A switch of the system that can be the reason, and the value that makes it one.
struct Cause {
    const char *path;
    char blocking;
    const char *advice;
};

constexpr std::array causes{
    Cause{"/proc/sys/kernel/unprivileged_userns_clone", '0',
        "unprivileged user namespaces are disabled: run as root or set sysctl kernel.unprivileged_userns_clone=1"},
    Cause{"/proc/sys/kernel/apparmor_restrict_unprivileged_userns", '1',
        "AppArmor restricts user namespaces: run as root or set sysctl kernel.apparmor_restrict_unprivileged_userns=0"},
    Cause{"/proc/sys/user/max_user_namespaces", '0',
        "user namespaces are disabled: run as root or raise sysctl user.max_user_namespaces"},
};

std::optional<char> first_byte(const char *path)
{
    const int fd = ::open(path, O_RDONLY | O_CLOEXEC);
    char byte = 0;
    const bool found = fd >= 0 && ::read(fd, &byte, 1) == 1;
    if (fd >= 0) {
        ::close(fd);
    }
    return found ? std::optional{byte} : std::nullopt;
}

std::string_view likely_advice(int why)
{
    if (why == EPERM || why == EACCES || why == ENOSPC) {
        for (const Cause &cause : causes) {
            if (first_byte(cause.path) == cause.blocking) {
                return cause.advice;
            }
        }
    }
    switch (why) {
    case EPERM:
    case EACCES:
        return "the kernel or the container forbids it: run as root, or let the container make namespaces and mounts "
               "(docker: --privileged, or --security-opt seccomp=unconfined --security-opt systempaths=unconfined)";
    case ENOSPC:
        return "a limit on namespaces is reached: raise the sysctls user.max_*_namespaces";
    case ENODEV:
    case ENOSYS:
        return "this kernel is built without it";
    default:
        return {};
    }
}

} // namespace

Refusal refusal(std::string_view call, std::string_view object, std::string_view advice)
{
    const int why = errno;
    if (advice.empty()) {
        advice = likely_advice(why);
    }
    std::string line{call};
    if (!object.empty()) {
        line.append(" ").append(object);
    }
    line.append(": ").append(std::strerror(why));
    if (!advice.empty()) {
        line.append("; ").append(advice);
    }
    return Refusal{line};
}

} // namespace switchlab
