/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file mpls_print.h
 * Building a long reply text piece by piece, as the MPLS code of the switch-chip daemon does before it hands a dump to
 * its caller. Part of libswitchcfg-funclist.
 *
 * The formats look like printf's but have rules of their own, which the daemons' formats are written for; keep them
 * away from the compiler's checks:
 *
 *   %s %M              a pointer: a text, a MAC address (the conversions of print_ext.h must be registered)
 *   %d %u %x %X        one 32-bit word
 *   %l                 one 32-bit word as a signed decimal, and that is all: "%ld" prints the number and a "d"
 *   %c                 the low byte of one 32-bit word
 *   %f                 one 32-bit SIGNED INTEGER, printed as a floating value with width and precision
 *   %r                 takes no argument and prints as it stands
 *   %%                 a percent sign
 *
 * Flags, width and precision apply as in printf; "*" and size modifiers take no effect. Other letters take no argument:
 * they and the text up to the next conversion of the table belong to that conversion, whose argument the first of them
 * prints while the rest print zero.
 *
 * A format is printed in pieces, each being the plain text before a conversion and the conversion itself. A piece that
 * grows to 199 characters ends the call and is lost; the pieces before it stay.
 *
 * The text being built is one per process, without a lock: one thread builds a reply at a time.
 */
#ifndef SWITCHCFG_MPLS_PRINT_H
#define SWITCHCFG_MPLS_PRINT_H

#include <stdarg.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/**
 * Append formatted text. A piece that cannot be formatted is left out. When memory runs out the whole text so far is
 * lost, and nothing is appended any more until mpls_prt_clean_context() or mpls_prt_get_context().
 */
SWITCHCFG_API void mpls_printf(const char *format, va_list arguments) SWITCHCFG_NOEXCEPT;

/**
 * mpls_printf() with arguments of its own.
 */
SWITCHCFG_API void mpls_cli_printf(const char *format, ...) SWITCHCFG_NOEXCEPT;

/**
 * Hand over the text built so far and start with an empty one.
 * @param buffer receives the text, the caller's to free with free(3); null when nothing was printed or memory ran out
 * @param length receives its bytes, the terminator included; 0 when nothing was printed. When memory ran out, the bytes
 *               of the text that was lost: look at the pointer first
 * @return 0; -1 with nothing handed over when an argument is null
 */
SWITCHCFG_API int mpls_prt_get_context(char **buffer, int *length) SWITCHCFG_NOEXCEPT;

/**
 * Throw away the text built so far.
 */
SWITCHCFG_API void mpls_prt_clean_context(void) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
