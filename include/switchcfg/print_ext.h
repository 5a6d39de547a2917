/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file print_ext.h
 * Conversions of our own for printf and its relatives, once registered good in the whole process:
 *
 *   %M  uint8_t[6]            MAC address, "00:1A:2B:3C:4D:5E"
 *   %D  uint8_t[4]            IPv4 address in network order, "192.168.0.1"
 *   %B  uint8_t[16]           IPv6 address, "fe80::1"
 *   %P  struct cfg_ip_addr    either, by its length; nothing for any length but 4 and 16
 *
 * Each takes a pointer to such bytes; a null pointer prints as "<null pointer>". The field width and the `-` flag work
 * as for %s, everything else between percent sign and letter is ignored. Compilers do not know these letters: keep them
 * away from formats that the compiler checks.
 */
#ifndef SWITCHCFG_PRINT_EXT_H
#define SWITCHCFG_PRINT_EXT_H

#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/**
 * Register %D and %M. cfg_init() calls it; a program that does not call cfg_init() may, before it starts threads.
 * @return 0
 */
SWITCHCFG_API int printExts_init(void) SWITCHCFG_NOEXCEPT;

/**
 * Register %B and %P, under the same rules as printExts_init().
 * @return 0
 */
SWITCHCFG_API int cfg_print_ip_init(void) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
