/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file cpumon.h
 * Processor and memory figures of the units, from the CPU monitor that runs on every processor board.
 *
 * The monitor is asked over TCP with one record, which comes back filled in, and for tables and documents a text of the
 * announced length behind it. It does the formatting; the calls here choose the columns, print what came, and report
 * failures. Each request has a connection of its own, closed on every path.
 *
 * No monitor can hold a caller for ever: the reply has CPUMON_REPLY_TIMEOUT_S seconds, its text
 * CPUMON_TEXT_TIMEOUT_S. Connecting takes as long as the system tries (a unit that vanished: minutes; one that is there
 * answers or refuses at once). A text takes memory as it arrives, not as announced; a length above INT32_MAX, which the
 * switch could not hold, fails like memory that is short.
 *
 * The core calls may be made from any thread, except those that print through the pager (pager.h), which belong to the
 * thread that runs commands. The calls by unit read the status region, between cfg_init() and cfg_exit().
 */
#ifndef SWITCHCFG_CPUMON_H
#define SWITCHCFG_CPUMON_H

#include <assert.h>
#include <stdint.h>
#include <stdio.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/** TCP port of the CPU monitors. */
#define CPUMON_PORT 61263

#define CPUMON_REPLY_TIMEOUT_S 10
#define CPUMON_TEXT_TIMEOUT_S 3

/** Most columns of a table's main list and of its summary list. */
#define CPUMON_MAIN_COLUMNS 22
#define CPUMON_SUMMARY_COLUMNS 15

#define CPUMON_MESSAGE_SIZE 512
#define CPUMON_NAME_SIZE 16

/** Results of the core calls, beside 0. */
enum cpumon_result {
    CPUMON_NO_CONNECTION = -1011, /**< no connection */
    CPUMON_NO_REPLY = -1012,      /**< the record could not be sent, or its reply did not come whole and in time */
    CPUMON_FAILED = -1013         /**< the monitor failed, or its text did not come; any failure of the shorter calls */
};

/** A monitor: where a request goes. */
struct cpumon_target {
    uint32_t scope_id;   /**< index of the interface for a link-local address, else 0 */
    uint8_t address[16]; /**< IPv6 address */
    uint16_t port;       /**< CPUMON_PORT */
};

/** What a request asks for. */
enum cpumon_request_type {
    CPUMON_XML = 0,     /**< XML document */
    CPUMON_OLD_XML = 1, /**< XML document in the old layout */
    CPUMON_TABLE = 2,   /**< text table */
    CPUMON_HTML = 3,    /**< HTML table */
    CPUMON_CPU = 4,     /**< processor usage figure */
    CPUMON_MEMORY = 5,  /**< memory figures */
    CPUMON_NAME_OF = 6  /**< translated name of a process */
};

/** What the summary above a table is about. */
enum cpumon_summary { CPUMON_NO_SUMMARY = 0, CPUMON_PROCESSOR_SUMMARY = 1, CPUMON_MEMORY_SUMMARY = 2 };

/**
 * Request and reply, 708 bytes, as they travel: ALL WORDS BIG-ENDIAN, here as on the wire, so convert with htonl(3) and
 * ntohl(3). What a request does not use is zero.
 */
struct cpumon_request {
    uint32_t type;                                    /**< enum cpumon_request_type */
    uint32_t main_columns[CPUMON_MAIN_COLUMNS];       /**< column ids of the table in print order, 0 behind the last */
    uint32_t summary_columns[CPUMON_SUMMARY_COLUMNS]; /**< the same of the summary */
    uint32_t summary_mode;                            /**< enum cpumon_summary */
    uint32_t text_length;                             /**< reply: bytes of the text that follows on the connection */
    char message[CPUMON_MESSAGE_SIZE]; /**< reply: what the monitor has to say, or the library about a failure */
    int32_t result;                    /**< reply: negative when the monitor failed */
    uint32_t cpu_usage;                /**< reply to CPUMON_CPU */
    uint32_t memory[2];                /**< reply to CPUMON_MEMORY */
    uint32_t process_id;               /**< process for CPUMON_NAME_OF */
    char name[CPUMON_NAME_SIZE];       /**< reply to CPUMON_NAME_OF, padded with NULs */
};

static_assert(sizeof(struct cpumon_request) == 708, "the record has this size on the wire");

/** A process and its name, for cpumon_get_translated_name(). */
struct cpumon_process_name {
    uint32_t process_id; /**< in; in the machine's byte order */
    char name[CPUMON_NAME_SIZE];
};

/**
 * @name Core calls
 * They take the monitor's target.
 */
/**@{*/

/**
 * One request.
 * @param request  the record in wire form, overwritten by the reply. After a failure its message is
 *                 "Error in connection with CPUMON" (-1011), "Error in sending request to CPUMON" (-1012) or, when the
 *                 monitor's result is negative, "Error in received request from CPUMON" (-1013); a text that did not
 * come leaves the monitor's message, which may lack a terminator
 * @param text_out receives the text, `request->text_length` (big-endian) bytes without a terminator, for the caller to
 *                 free with free(3); null when there is none or on failure. May be null: a text is then not read
 * @return 0, CPUMON_NO_CONNECTION, CPUMON_NO_REPLY or CPUMON_FAILED
 */
SWITCHCFG_API int cpumon_daemon_request_extra_data(
    struct cpumon_request *request, char **text_out, const struct cpumon_target *target) SWITCHCFG_NOEXCEPT;

/**
 * Print a text table and a line end with pprintf(); on failure the message, if there is one.
 * @param summary_list  column ids of the summary, as the monitor knows them; null or a count of 0 for no summary
 * @param summary_count at most CPUMON_SUMMARY_COLUMNS
 * @param main_list     column ids of the table; null or a count of 0 for no table
 * @param main_count    at most CPUMON_MAIN_COLUMNS
 * @param mode          enum cpumon_summary; counts with a summary list only
 * @return 0, also for neither list, when nothing is asked; -1 on failure and for a count that is too large
 */
SWITCHCFG_API int cpumon_print_table(const struct cpumon_target *target, const uint32_t *summary_list,
    uint32_t summary_count, const uint32_t *main_list, uint32_t main_count, uint32_t mode) SWITCHCFG_NOEXCEPT;

/** As cpumon_print_table(), an HTML table onto the stream. A message goes to standard output, not into the page. */
SWITCHCFG_API int cpumon_print_table_html(FILE *stream, const struct cpumon_target *target,
    const uint32_t *summary_list, uint32_t summary_count, const uint32_t *main_list, uint32_t main_count,
    uint32_t mode) SWITCHCFG_NOEXCEPT;

/** Print the XML document and a line end onto the stream. @return 0, or CPUMON_FAILED with nothing printed */
SWITCHCFG_API int cpumon_print_xml(FILE *stream, const struct cpumon_target *target) SWITCHCFG_NOEXCEPT;

/** As cpumon_print_xml(), in the old layout. */
SWITCHCFG_API int cpumon_print_old_xml(FILE *stream, const struct cpumon_target *target) SWITCHCFG_NOEXCEPT;

/** Get the processor usage. @param out as the monitor gives it (percent); untouched on failure @return 0, CPUMON_FAILED
 */
SWITCHCFG_API int cpumon_get_cpu_info(const struct cpumon_target *target, uint32_t *out) SWITCHCFG_NOEXCEPT;

/** Get the two memory figures, as the monitor gives them. Untouched on failure. @return 0 or CPUMON_FAILED */
SWITCHCFG_API int cpumon_get_mem_info(const struct cpumon_target *target, uint32_t out_pair[2]) SWITCHCFG_NOEXCEPT;

/**
 * Get the name under which users know a process.
 * @param in_out the process; receives its name, always terminated. Untouched on failure
 * @return 0 or CPUMON_FAILED
 */
SWITCHCFG_API int cpumon_get_translated_name(
    const struct cpumon_target *target, struct cpumon_process_name *in_out) SWITCHCFG_NOEXCEPT;

/**@}*/

/**
 * @name Calls by unit
 * Units count from 0 to 7. A unit above 7 or not in the stack gives -3, and nothing is printed or connected.
 *
 * Unit 0 is the local one, on which this process runs. Its own board is chosen by the slot flag of the local processor
 * (the word "mpu.slot" of the status region), its other board, the standby, by the negation of that flag; so are the
 * boards of all other units.
 */
/**@{*/

/**
 * Choose a monitor.
 *
 * On a switch with stacking ports every unit has one processor: the target is the link-local address made of the unit's
 * MAC address, on interface "atp" (cfg_equip_get_unit_ipv6_addr()), and unit 0 has no standby. On others it is the
 * unit's management address (cfg_equip_get_mgmt_ipv6_address(), the second for a flag other than 0), on VLAN 3 of unit
 * 0's management interface. The scope is the index of that interface, 0 when it is not there.
 * @param unit    0 to 7
 * @param standby other than 0: the standby of unit 0; ignored for other units
 * @return 0; -3; -149 when unit 0 has no standby; -1 for a null target
 */
SWITCHCFG_API int cfg_cpumon_get_target(int unit, int standby, struct cpumon_target *target_out) SWITCHCFG_NOEXCEPT;

/*
 * Tables. Each prints with pprintf() its heading, the local date, and the table. The calls for a unit always ask the
 * OTHER board of it, where it has two: for unit 0 that is the standby, so ask for the local unit with the _local calls.
 * @return as cpumon_print_table(); what cfg_cpumon_get_target() refuses
 */
SWITCHCFG_API int cfg_cpumon_table_cpu_usage_local(void) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_cpumon_table_cpu_usage_unit(int unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_cpumon_table_cpu_usage_standby(void) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_cpumon_table_cpu_usage_detail_local(void) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_cpumon_table_cpu_usage_detail_unit(int unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_cpumon_table_cpu_usage_detail_standby(void) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_cpumon_table_cpu_memory_local(void) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_cpumon_table_cpu_memory_unit(int unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_cpumon_table_cpu_memory_standby(void) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_cpumon_table_cpu_memory_detail_local(void) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_cpumon_table_cpu_memory_detail_unit(int unit) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_cpumon_table_cpu_memory_detail_standby(void) SWITCHCFG_NOEXCEPT;

/** HTML table of the processor usage, detailed, without heading or date. @return as cpumon_print_table_html(); -3 */
SWITCHCFG_API int cfg_cpumon_get_cpu_table_html(FILE *stream, int unit) SWITCHCFG_NOEXCEPT;

/** HTML table of the memory, detailed, without heading or date. @return as cpumon_print_table_html(); -3 */
SWITCHCFG_API int cfg_cpumon_get_mem_table_html(FILE *stream, int unit) SWITCHCFG_NOEXCEPT;

/** Processor usage. @return as cpumon_get_cpu_info(); what cfg_cpumon_get_target() refuses */
SWITCHCFG_API int cfg_cpumon_get_cpu_info(int unit, int standby, uint32_t *out) SWITCHCFG_NOEXCEPT;

/** Memory figures. @return as cpumon_get_mem_info(); what cfg_cpumon_get_target() refuses */
SWITCHCFG_API int cfg_cpumon_get_cpu_mem_info(int unit, int standby, uint32_t out_pair[2]) SWITCHCFG_NOEXCEPT;

/** The local processor's XML document in the old layout. @return as cpumon_print_old_xml() */
SWITCHCFG_API int cfg_cpumon_get_status_xml(FILE *stream) SWITCHCFG_NOEXCEPT;

/**
 * The name under which users know a process of the local processor.
 * @param name_out 16 bytes (CPUMON_NAME_SIZE), always terminated; untouched on failure
 * @return as cpumon_get_translated_name()
 */
SWITCHCFG_API int cfg_cpumon_get_translated_name(
    uint32_t process_id, char name_out[CPUMON_NAME_SIZE]) SWITCHCFG_NOEXCEPT;

/**@}*/

SWITCHCFG_END_DECLS

#endif
