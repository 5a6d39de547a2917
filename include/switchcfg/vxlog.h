/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file vxlog.h
 * The log functions that the library writes through. A program provides its own by defining functions of these names;
 * one that does not gets the library's, which write to syslog(3), and to standard error as well when that is a
 * terminal.
 *
 * Both may be called from any thread, and from the crash handler; they must return, and report no failure.
 */
#ifndef SWITCHCFG_VXLOG_H
#define SWITCHCFG_VXLOG_H

#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/**
 * Write one log line.
 * @param level  severity as syslog numbers it: 2 critical, 3 error, 4 warning, 5 notice, 6 informational, 7 debug
 * @param format printf format; the conversions of print_ext.h work once cfg_init() has run
 */
SWITCHCFG_API void vxlog(int level, const char *format, ...) SWITCHCFG_PRINTF(2, 3);

/**
 * Write one line of the library's own: the lines of a crash report.
 * @param level  severity as for vxlog()
 * @param format printf format
 */
SWITCHCFG_API void vxlog_internal(int level, const char *format, ...) SWITCHCFG_PRINTF(2, 3);

SWITCHCFG_END_DECLS

#endif
