/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file locks.h
 * Named locks between the processes of the switch.
 *
 * A lock is a small file under "/tmp"; a process opens it once (cfg_init() does so for the library's own) and takes
 * shared or exclusive record locks on the whole file. The kernel drops a lock when its holder dies, so a lock never
 * outlives a crashed daemon.
 *
 * Locks exclude processes, not threads: all threads of a process share what the process holds. Closing ANY descriptor
 * of a lock file drops every lock the process holds on that file, so never open one a second time; use the published
 * descriptors. There is no lock order: take one lock at a time.
 *
 * Unless noted, every function may be called from any thread, nothing is retried when a signal comes first (EINTR), and
 * a failure leaves errno as the system call set it.
 */
#ifndef SWITCHCFG_LOCKS_H
#define SWITCHCFG_LOCKS_H

#include <stdint.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/** A named lock of the library. */
struct cfg_lock {
    const char *name; /**< short label */
    const char *path; /**< lock file */
    int32_t fd;       /**< descriptor, -1 while not open */
};

/** Indexes into cfg_lock_table. */
enum cfg_lock_index {
    CFG_LOCK_CFG,     /**< the configuration */
    CFG_LOCK_FW,      /**< the firmware */
    CFG_LOCK_TRAPS,   /**< the trap queue; the trap senders take it around each trap */
    CFG_LOCK_EAPS,    /**< the ring-protection state */
    CFG_LOCK_PL,      /**< the programmable-logic device */
    CFG_LOCK_DEBUGS,  /**< the list of terminals that receive debug lines; read under a shared lock */
    CFG_LOCK_CLI_REG, /**< the CLI registry */
    CFG_LOCK_SYNC,    /**< synchronisation */
    CFG_LOCK_COUNT
};

/** The library's locks, opened by cfg_init() and closed by cfg_exit(). */
extern SWITCHCFG_API struct cfg_lock cfg_lock_table[CFG_LOCK_COUNT];

/** Descriptor of "/tmp/dcGetSetLock", held around each command to the routing stack; 0 until created. */
extern SWITCHCFG_API int32_t DCLockGetSetFileFD;

/** Descriptor of "/tmp/ipmclock", for the multicast tables; 0 until created. */
extern SWITCHCFG_API int32_t IpmcLockFileFD;

/**
 * Open the lock file `path` for reading and writing, creating it with mode 0600 (less the umask) when it is missing.
 * The descriptor is inherited by programs the process executes, as record locks are not.
 * @return the descriptor, the caller's to close with lock_destroy(), or -1 with errno
 */
SWITCHCFG_API int lock_create(const char *path) SWITCHCFG_NOEXCEPT;

/**
 * Close the descriptor of a lock; this drops every lock the process holds on the file. The file stays.
 * @return the result of close(2)
 */
SWITCHCFG_API int lock_destroy(int fd) SWITCHCFG_NOEXCEPT;

/**
 * Take the shared lock, or fail at once while another process holds the exclusive one.
 * @return 0, or -1 with errno (EAGAIN or EACCES: held elsewhere; EBADF: not open)
 */
SWITCHCFG_API int lock_try_read(int fd) SWITCHCFG_NOEXCEPT;

/**
 * Take the exclusive lock, or fail at once while another process holds any lock.
 * @return 0, or -1 with errno (EAGAIN or EACCES: held elsewhere; EBADF: not open)
 */
SWITCHCFG_API int lock_try_write(int fd) SWITCHCFG_NOEXCEPT;

/**
 * Take the shared lock, waiting for it.
 * @return 0, or -1 with errno (EINTR: a signal came first; EDEADLK: the kernel sees a circle of waiters)
 */
SWITCHCFG_API int lock_read(int fd) SWITCHCFG_NOEXCEPT;

/**
 * Take the exclusive lock, waiting for it.
 * @return 0, or -1 with errno (EINTR: a signal came first; EDEADLK: the kernel sees a circle of waiters)
 */
SWITCHCFG_API int lock_write(int fd) SWITCHCFG_NOEXCEPT;

/**
 * Drop the lock, shared or exclusive. Dropping what is not held succeeds.
 * @return 0, or -1 with errno
 */
SWITCHCFG_API int lock_free(int fd) SWITCHCFG_NOEXCEPT;

/**
 * Open the lock file `path` as lock_create() does and take its lock. Despite the name it waits for the lock.
 * @param fd_out receives the descriptor (negative when the file cannot be opened; after -2 it is the number of a
 *               descriptor that is already closed)
 * @param mode   1 for the exclusive lock, 0 for the shared one
 * @return 0; -1 when the file cannot be opened; -2 when the lock fails or `mode` is neither 0 nor 1
 */
SWITCHCFG_API int lock_try_complete(int *fd_out, const char *path, int mode) SWITCHCFG_NOEXCEPT;

/**
 * Drop the lock and close its descriptor, as the counterpart of lock_try_complete().
 * @return the result of the unlock
 */
SWITCHCFG_API int lock_try_unlock(int fd) SWITCHCFG_NOEXCEPT;

/**
 * Create the routing-stack command lock and store its descriptor in DCLockGetSetFileFD. For the main thread at
 * start-up; cfg_init() calls it.
 * @return the descriptor, or -1 with errno
 */
SWITCHCFG_API int DClockGetSetCreate(void) SWITCHCFG_NOEXCEPT;

/**
 * Create the multicast lock and store its descriptor in IpmcLockFileFD. For the main thread at start-up; cfg_init()
 * calls it.
 * @return the descriptor, or -1 with errno
 */
SWITCHCFG_API int IPMClockCreate(void) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
