/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file signals.h
 * What a process does with a signal. Dispositions hold for the whole process, blocking for the calling thread.
 *
 * Nothing installed here restarts an interrupted system call: it fails with EINTR, which the functions of robust_io.h
 * treat each in its own way.
 */
#ifndef SWITCHCFG_SIGNALS_H
#define SWITCHCFG_SIGNALS_H

#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/**
 * Ignore a signal. Programs that the process executes ignore it too.
 * @return 0, or -1 with errno EINVAL (no such signal, or one that cannot be ignored)
 */
SWITCHCFG_API int signal_ignore(int signo) SWITCHCFG_NOEXCEPT;

/**
 * Give a signal its default effect.
 * @return 0, or -1 with errno EINVAL
 */
SWITCHCFG_API int signal_default(int signo) SWITCHCFG_NOEXCEPT;

/**
 * Run a function at each arrival of a signal, blocking that signal while it runs.
 * @param handler receives the signal number; bound by the rules of signal-safety(7)
 * @return 0, or -1 with errno EINVAL
 */
SWITCHCFG_API int signal_handler(int signo, void (*handler)(int signo)) SWITCHCFG_NOEXCEPT;

/**
 * Hold a signal back from the calling thread until signal_unblock(). Threads and programs started meanwhile inherit
 * that.
 * @return 0, or -1 with errno EINVAL (no such signal)
 */
SWITCHCFG_API int signal_block(int signo) SWITCHCFG_NOEXCEPT;

/**
 * Let a signal reach the calling thread again; one that was held back arrives before this returns.
 * @return 0, or -1 with errno EINVAL (no such signal)
 */
SWITCHCFG_API int signal_unblock(int signo) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
