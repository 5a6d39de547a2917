/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file debug.h
 * Two outputs for people who look into a running switch.
 *
 * Debug lines belong to a numbered class and go to the terminals that enabled that class, from every process of the
 * switch. Which terminals those are stands in the text file "/var/run/debug_terminals", one terminal per line:
 *
 *     /dev/pts/3 5,27
 *
 * is a terminal that gets the lines of classes 5 and 27. Lines that do not begin with "/" are comments. The file is
 * replaced as a whole, under the exclusive "Debugs" lock, and is missing while no terminal wants anything.
 *
 * The developer trace is a process's own. It is silent unless the environment variable SWITCHCFG_TRACE, looked at once
 * per process, is "stderr" or the absolute path of a file, to which lines are appended.
 *
 * Neither output changes errno.
 */
#ifndef SWITCHCFG_DEBUG_H
#define SWITCHCFG_DEBUG_H

#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/** Stands for every class where debug_terminal_disable() takes one. */
#define DEBUG_CLASS_ALL (-1)

/**
 * Send a line to the terminals that enabled its class. The line is cut to 1022 bytes; a newline at its end may be given
 * or left out. A terminal that is gone or takes no more at the moment is passed over: the call never waits for one.
 *
 * While nobody debugs anything this is one system call, and the arguments are not formatted. Otherwise the list is read
 * under the shared "Debugs" lock, which cfg_init() opens; when the lock cannot be had within 100 ms, or before
 * cfg_init(), the line is dropped. Any thread may call, not while the process holds the "Debugs" lock for itself: the
 * call gives it up.
 */
SWITCHCFG_API void debug_process(int debug_class, const char *format, ...) SWITCHCFG_NOEXCEPT SWITCHCFG_PRINTF(2, 3);

/**
 * Let a terminal receive the lines of a class. Enabling what is enabled succeeds. For one thread of the process at a
 * time; waits up to 2 s for the "Debugs" lock.
 * @param path        the terminal's device, absolute, at most 255 bytes, without blanks
 * @param debug_class 0 or more
 * @return 0, or -1 with errno (EINVAL: no such path or class; ENOTTY: no terminal; ENOSPC: the list is full; EAGAIN or
 *         EACCES: the lock is held elsewhere; EBADF: cfg_init() was not called; others from opening the terminal or
 *         writing the list)
 */
SWITCHCFG_API int debug_terminal_enable(const char *path, int debug_class) SWITCHCFG_NOEXCEPT;

/**
 * Stop sending a class to a terminal, which need not exist any more. Disabling what is not enabled succeeds. The same
 * thread rule and wait as for debug_terminal_enable(). A line of another process that was on its way may still arrive.
 * @param debug_class 0 or more, or DEBUG_CLASS_ALL
 * @return 0, or -1 with errno as debug_terminal_enable()
 */
SWITCHCFG_API int debug_terminal_disable(const char *path, int debug_class) SWITCHCFG_NOEXCEPT;

/**
 * Write a line to the developer trace, in one write(2): time since boot, program and process, `tag`, `line` and
 * `function`, then the message, cut to 1023 bytes together. Any thread may call.
 * @param tag the part of the system that speaks, such as "systemAPI"
 */
SWITCHCFG_API void devel_vprint_implementation(
    const char *tag, int line, const char *function, const char *format, ...) SWITCHCFG_NOEXCEPT SWITCHCFG_PRINTF(4, 5);

/**
 * The level of the developer trace, for work that is only worth doing when somebody reads it.
 * @return 0 while the trace is silent, 1 otherwise
 */
SWITCHCFG_API int devel_debug_level(void) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
