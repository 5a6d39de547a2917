/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file startup.h
 * Attaching a process to the switch, and what is left to read when it crashes.
 *
 * Every daemon and the CLI calls cfg_init() or cfg_init_generic() once, on its main thread, before anything else of the
 * library, and cfg_exit() when it ends.
 *
 * A process that is attached ignores SIGQUIT and SIGINT, may write core files of any size, and on SIGSEGV, SIGBUS,
 * SIGABRT, SIGILL or SIGFPE logs a report (vxlog.h) before it dies of that same signal. Should the report itself crash
 * or hang, the process dies of the original signal all the same, within CFG_CRASH_REPORT_SECONDS. SIGRTMIN, sent to a
 * thread, makes that thread write where it is to CFG_THREAD_DUMP_PATH; the process goes on.
 */
#ifndef SWITCHCFG_STARTUP_H
#define SWITCHCFG_STARTUP_H

#include <signal.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/** Written by each thread dump, replacing the one before. */
#define CFG_THREAD_DUMP_PATH "/tmp/stack_trace.txt"

/** Present once the first configuration has been applied; created by the process that applies it. */
#define CFG_APPLIED_PATH "/var/cfg_has_been_applied"

/** A crash report that takes longer than this is cut off. */
#define CFG_CRASH_REPORT_SECONDS 3

/** What a program wants to do itself when it crashes; owned by the program, which may embed it at the start of its own.
 */
struct cfg_crash_hook {
    /**
     * Runs first in the crash handler, on the crashed thread; null for nothing. Its time counts towards
     * CFG_CRASH_REPORT_SECONDS.
     */
    void (*handler)(int signo, siginfo_t *info, void *ucontext);
};

/**
 * Attach the process: signal dispositions, core-file limit, the named locks (locks.h), the print conversions, the
 * status region, the boot environment, the process-manager settings, the running and the default configuration.
 * @return 0, also when the process is attached already; -1 when a configuration region cannot be mapped (the folder
 *         /var/run/cfg is missing, the file system is full, or a region is still mapped from an attempt whose second
 *         mapping failed). The failure of any other step is not reported: what it would have provided is then missing.
 * A failed attempt leaves what it acquired in place; a later call runs all steps again.
 */
SWITCHCFG_API int cfg_init(void) SWITCHCFG_NOEXCEPT;

/**
 * Register a crash hook, then cfg_init(). The hook is stored whatever the result.
 * @param crash_hook read when a crash happens, so it must stay valid; null for none
 */
SWITCHCFG_API int cfg_init_generic(struct cfg_crash_hook *crash_hook) SWITCHCFG_NOEXCEPT;

/**
 * Detach the process: unmap the configuration, close the connection to the routing stack, close the locks, release the
 * status region and the process-manager client. Does nothing when not attached. The signal handlers stay.
 * @return 0
 */
SWITCHCFG_API int cfg_exit(void) SWITCHCFG_NOEXCEPT;

/**
 * Run the registered crash hook, if any, as the crash handler does first.
 * @return 0
 */
SWITCHCFG_API int cfg_data_bt_handler_init(int signo, siginfo_t *info, void *ucontext);

/** @return 1 once the first configuration has been applied (CFG_APPLIED_PATH exists), else 0; from any thread */
SWITCHCFG_API int cfg_initial_apply_done(void) SWITCHCFG_NOEXCEPT;

/**
 * Set the process's time zone (TZ) from the UTC offset in the running configuration. Changes nothing while the
 * configuration is not mapped. Changes the environment: call it while no other thread reads that.
 */
SWITCHCFG_API void updateTZ(void) SWITCHCFG_NOEXCEPT;

/**
 * @param pid process, or a thread's kernel thread ID
 * @return its name as the kernel keeps it (15 characters at most), or "unknown" when it cannot be read; heap text that
 * the caller frees; null only when memory is out
 */
SWITCHCFG_API char *cfg_get_pid_name(int pid) SWITCHCFG_NOEXCEPT;

/**
 * The name that log lines give a process.
 * @param pid process, or a thread's kernel thread ID
 * @return its name as the kernel keeps it (15 characters at most), heap text that the caller frees; null when it cannot
 *         be read or memory is out
 */
SWITCHCFG_API char *cfg_get_translated_pid_name(int pid) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
