/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file funclist_stats.h
 * What the switch-chip daemon remembers of the calls that other processes made, and a print of it for people. Part of
 * libswitchcfg-funclist. The block has no pointers and the same layout on every machine of one byte order, so it can be
 * handed around as bytes.
 */
#ifndef SWITCHCFG_FUNCLIST_STATS_H
#define SWITCHCFG_FUNCLIST_STATS_H

#include <stdint.h>
#include <stdio.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

#define FUNCLIST_STATS_COMMANDS 16

/** The families of functions, as a command record tells them. */
enum {
    FUNCLIST_FAMILY_GENERAL = 1,
    FUNCLIST_FAMILY_UNIT = 2,
    FUNCLIST_FAMILY_UNIT_PORT = 3,
    FUNCLIST_FAMILY_MPLS = 4,
    FUNCLIST_FAMILY_VHW = 6
};

/** One call. Times are the wall clock's. */
struct funclist_command {
    uint32_t start_s; /**< seconds since 1970; 0 in a record that was never used */
    uint32_t start_us;
    uint32_t end_s; /**< 0 while the function runs */
    uint32_t end_us;
    int32_t family;
    int32_t function;
    uint32_t arg1;
    uint32_t arg2;
    uint32_t arg3;
    uint32_t arg4;
    int32_t result;
};

struct funclist_stats {
    uint32_t executed;                                         /**< calls so far */
    struct funclist_command commands[FUNCLIST_STATS_COMMANDS]; /**< a ring of the last ones */
    uint32_t next;                                             /**< index of the record that is written next */
    uint32_t keep_alive_time; /**< when the last keep-alive message was sent, seconds since 1970 */
};

/**
 * Print the statistics: the count, then a table of the last calls, the oldest first, in local time. Works on a copy, so
 * the block may be in use meanwhile; a record that is being written may then show half of its old content. MPLS
 * functions are named like those of the unit-and-port family with the same numbers, and functions of other families not
 * at all: the printed number counts.
 * @return the result of the last fputc(3): a newline, or EOF when the stream does not take it; EOF without printing
 *         when an argument is null
 */
SWITCHCFG_API int dumpFunclistStats(const struct funclist_stats *block, FILE *stream) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
