// SPDX-License-Identifier: Apache-2.0
// Letting go of descriptors, terminal and parent.
#include <switchcfg/process.h>

#include "util/owned.h"
#include "util/process_scan.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace switchcfg {
namespace {

constexpr int standard_descriptors[] = {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};

// The limit can be a billion, so one call of the kernel where it has it.
void close_range_of(int first, long end) noexcept
{
#if defined(SYS_close_range)
    if (::syscall(SYS_close_range, static_cast<unsigned>(first), end < 0 ? ~0U : static_cast<unsigned>(end - 1), 0U) ==
        0) {
        return;
    }
#endif
    for (int fd = first; fd < end; ++fd) {
        ::close(fd);
    }
}

int to_all_standard(int fd) noexcept
{
    int result = 0;
    for (const int standard : standard_descriptors) {
        if (::dup2(fd, standard) < 0) {
            result = -1;
        }
    }
    return result;
}

// True in the child; the parent ends.
bool fork_and_leave() noexcept
{
    const pid_t child = ::fork();
    if (child > 0) {
        ::_exit(0);
    }
    return child == 0;
}

} // namespace
} // namespace switchcfg

using namespace switchcfg;

void close_all() noexcept
{
    struct stat info;
    if (::stat("/proc/self/fd", &info) == 0) {
        // The listing's own descriptor goes last: without it the rest could not be listed.
        if (const Folder folder{::opendir("/proc/self/fd/")}) {
            const int own = ::dirfd(folder.get());
            while (const dirent *const entry = ::readdir(folder.get())) { // NOLINT(concurrency-mt-unsafe)
                const int fd = is_digit(*entry->d_name) ? std::atoi(entry->d_name) : -1; // NOLINT(cert-err34-c)
                if (fd > STDERR_FILENO && fd != own) {
                    ::close(fd);
                }
            }
        }
        return;
    }
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) {
        return;
    }
    for (rlim_t fd = STDERR_FILENO + 1; fd < limit.rlim_cur; ++fd) {
        if (::close(static_cast<int>(fd)) != 0 && errno != EBADF) {
            return;
        }
    }
}

int daemonize() noexcept
{
    if (!fork_and_leave() || ::setsid() < 0 || !fork_and_leave()) {
        return -1;
    }
    (void)::chdir("/"); // "/" can always be entered
    // From 2, not 3: input and output stay open until they are replaced.
    close_range_of(STDERR_FILENO, ::sysconf(_SC_OPEN_MAX));
    const int null = ::open("/dev/null", O_RDWR);
    return null < 0 ? -1 : to_all_standard(null);
}

int ctty_drop() noexcept
{
    const Descriptor terminal{::open("/dev/tty", O_RDWR | O_CLOEXEC)};
    return terminal && ::ioctl(terminal.get(), TIOCNOTTY) != 0 ? -1 : 0;
}

int stdfds_close() noexcept
{
    const int null = ::open("/dev/null", O_RDWR);
    if (null < 0) {
        return -1;
    }
    const int result = to_all_standard(null);
    if (null > STDERR_FILENO) {
        const KeepErrno keep;
        ::close(null);
    }
    return result;
}
