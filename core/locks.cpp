// SPDX-License-Identifier: Apache-2.0
// Named locks: POSIX record locks over whole files.
#include <switchcfg/locks.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

cfg_lock cfg_lock_table[CFG_LOCK_COUNT] = {
    {"CFG", "/tmp/lock_cfg", -1},
    {"FW", "/tmp/lock_fw", -1},
    {"Traps", "/tmp/lock_trap", -1},
    {"EAPS", "/tmp/lock_eaps", -1},
    {"PL", "/tmp/lock_fpga", -1},
    {"Debugs", "/tmp/lock_debugs", -1},
    {"Cli_reg", "/tmp/lock_cli_reg", -1},
    {"Sync", "/tmp/lock_sync", -1},
};

int32_t DCLockGetSetFileFD = 0;
int32_t IpmcLockFileFD = 0;

namespace {

// The kernel is called directly: the C library's fcntl makes the waiting command a cancellation point, and a thread
// that is cancelled while it holds nothing yet must not be told apart from one that was granted the lock.
int record_lock(int fd, int command, short type) noexcept
{
    struct flock whole_file {};
    whole_file.l_type = type;
    whole_file.l_whence = SEEK_SET;
#if defined(SYS_fcntl64)
    return static_cast<int>(::syscall(SYS_fcntl64, fd, command, &whole_file));
#else
    return static_cast<int>(::syscall(SYS_fcntl, fd, command, &whole_file));
#endif
}

} // namespace

int lock_create(const char *path) noexcept
{
    if (path == nullptr) {
        errno = EFAULT;
        return -1;
    }
    return ::open(path, O_RDWR | O_CREAT, 0600);
}

int lock_destroy(int fd) noexcept
{
    return ::close(fd);
}

int lock_try_read(int fd) noexcept
{
    return record_lock(fd, F_SETLK, F_RDLCK);
}

int lock_try_write(int fd) noexcept
{
    return record_lock(fd, F_SETLK, F_WRLCK);
}

int lock_read(int fd) noexcept
{
    return record_lock(fd, F_SETLKW, F_RDLCK);
}

int lock_write(int fd) noexcept
{
    return record_lock(fd, F_SETLKW, F_WRLCK);
}

int lock_free(int fd) noexcept
{
    return record_lock(fd, F_SETLK, F_UNLCK);
}

int lock_try_complete(int *fd_out, const char *path, int mode) noexcept
{
    const int fd = lock_create(path);
    *fd_out = fd;
    if (fd < 0) {
        return -1;
    }
    int locked = -1;
    if (mode == 1) {
        locked = lock_write(fd);
    } else if (mode == 0) {
        locked = lock_read(fd);
    } else {
        errno = EINVAL;
    }
    if (locked == 0) {
        return 0;
    }
    const int why = errno;
    lock_destroy(fd);
    errno = why;
    return -2;
}

int lock_try_unlock(int fd) noexcept
{
    const int unlocked = lock_free(fd);
    lock_destroy(fd);
    return unlocked;
}

int DClockGetSetCreate() noexcept
{
    DCLockGetSetFileFD = lock_create("/tmp/dcGetSetLock");
    return DCLockGetSetFileFD;
}

int IPMClockCreate() noexcept
{
    IpmcLockFileFD = lock_create("/tmp/ipmclock");
    return IpmcLockFileFD;
}
