/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file backtrace.h
 * The current stack as text, for a program's own debugging. The crash report of startup.h needs none of this.
 *
 * All functions may be called from any thread. Only backtrace_print_nomalloc() suits a signal handler. Names of
 * functions are known where the program exports them (link with -rdynamic).
 */
#ifndef SWITCHCFG_BACKTRACE_H
#define SWITCHCFG_BACKTRACE_H

#include <stddef.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/** @return "Obtained N stack frames:" and up to 10 lines; heap text that the caller frees; null when memory is out */
SWITCHCFG_API char *backtrace_get(void) SWITCHCFG_NOEXCEPT;

/** Up to 50 frames to standard error, each line ended by "\r\n" for terminals in raw mode. */
SWITCHCFG_API void backtrace_print(void) SWITCHCFG_NOEXCEPT;

/**
 * Up to 50 frames appended to a log, under a header with process ID and date.
 * @param dir folder of the log with its closing slash: "backtrace.log" is put right behind it. Nothing is written when
 *            the log cannot be opened
 */
SWITCHCFG_API void backtrace_print_file(const char *dir) SWITCHCFG_NOEXCEPT;

/**
 * Up to 50 frames to the system log, under a header with process ID and date.
 * @param priority as for syslog(3)
 */
SWITCHCFG_API void backtrace_print_syslog(int priority) SWITCHCFG_NOEXCEPT;

/** Up to 15 frames to descriptor 2, without allocating. */
SWITCHCFG_API void backtrace_print_nomalloc(void) SWITCHCFG_NOEXCEPT;

/**
 * Name a code address: "@ object(symbol+0x12)[0x1234] ", "@ object[0x1234] " when no symbol is known, "@ [0x1234] "
 * when nothing is.
 * @param addr code address
 * @param buf  receives the text, cut to fit and terminated
 * @param len  bytes of `buf`
 * @return characters written, the terminator not counted
 */
SWITCHCFG_API int name_of_func(void *addr, char *buf, size_t len) SWITCHCFG_NOEXCEPT;

/**
 * Name the code that called the function this is called in, as name_of_func() does.
 * @param depth 0 for the function that calls name_of_caller() itself, 1 for its caller, and so on; at most 61
 * @param buf   receives the text, empty when the stack is not that deep
 * @param len   bytes of `buf`
 * @return characters written, the terminator not counted
 */
SWITCHCFG_API int name_of_caller(int depth, char *buf, size_t len) SWITCHCFG_NOEXCEPT;

/**
 * Print the stack with backtrace_print() on every SIGSEGV, through signal_handler() of signals.h. The handler returns
 * to the faulting instruction, so a real fault repeats: meant for a SIGSEGV sent by hand, and for debuggers.
 * @return the result of signal_handler()
 */
SWITCHCFG_API int sigsegv_backtrace_print(void) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
