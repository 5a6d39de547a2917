/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file uptime.h
 * Time since boot, periods as text, calendar checks, and the memory size of the process.
 *
 * Uptime is not moved by changes of the calendar clock; the timers and deadlines of the daemons count in its
 * hundredths of a second. Calendar functions work in local time. Nothing is shared: every function may be called from
 * any thread.
 */
#ifndef SWITCHCFG_UPTIME_H
#define SWITCHCFG_UPTIME_H

#include <stddef.h>
#include <stdint.h>
#include <switchcfg/export.h>
#include <time.h>

SWITCHCFG_BEGIN_DECLS

/** @return whole seconds since boot */
SWITCHCFG_API int uptime(void) SWITCHCFG_NOEXCEPT;

/**
 * Hundredths of a second since boot. Never fails: without "/proc/uptime" it counts whole seconds.
 * @return the count
 */
SWITCHCFG_API uint64_t uptime_cs(void) SWITCHCFG_NOEXCEPT;

/**
 * Uptime as "[  1234.56]": seconds, padded to six characters, and hundredths. Starts over after 497 days.
 * @param size bytes of the buffer; a text that does not fit is cut and terminated
 * @return the length of the whole text, cut or not
 */
SWITCHCFG_API int uptime_cs_str(char *buffer, size_t size) SWITCHCFG_NOEXCEPT;

/**
 * The time of boot as local date and time of the locale and a line end. Clears the whole buffer first.
 * @param size bytes of the buffer
 * @return the length; 0, with an empty text, when it does not fit; -1 when the calendar time is not known
 */
SWITCHCFG_API int vx_startup_time(char *buffer, size_t size) SWITCHCFG_NOEXCEPT;

/**
 * A period as text: "1 y, 2 mon, 3 d, 4 h, 5 m, 6 s", parts that are 0 left out except the seconds. A month has 30
 * days and a year 12 months.
 * @param size bytes of the buffer; the text ends before the first part that does not fit whole
 * @return the length written; -1, with the buffer untouched, when not even the first part fits
 */
SWITCHCFG_API int seconds_period_to_string(uint32_t seconds, char *buffer, size_t size) SWITCHCFG_NOEXCEPT;

/** seconds_period_to_string() without years and months: "425 d, 4 h, 5 m, 6 s". */
SWITCHCFG_API int seconds_period_to_string_days(uint32_t seconds, char *buffer, size_t size) SWITCHCFG_NOEXCEPT;

/**
 * Whether day, month and year of `date` form a real date. Its time of day and daylight-saving flag take part: a time
 * beyond its day makes another date of it.
 * @return 1 or 0
 */
SWITCHCFG_API int checkdate(const struct tm *date) SWITCHCFG_NOEXCEPT;

/**
 * Fill `date` with midnight of a day; the fields that follow from it (day of week and of year) and the daylight-saving
 * flag are 0.
 * @param month 1 to 12
 * @param year  all four digits
 * @return `date`
 */
SWITCHCFG_API struct tm *maketm(struct tm *date, int day, int month, int year) SWITCHCFG_NOEXCEPT;

/**
 * Calendar time of a local date and time, daylight saving taken as not in force.
 * @param year  all four digits
 * @param month 1 to 12
 * @return the time as mktime(3) gives it, -1 when it has none
 */
SWITCHCFG_API time_t date2time_t(int year, int month, int day, int hour, int minute, int second) SWITCHCFG_NOEXCEPT;

/**
 * Total program size of the calling process.
 * @return bytes, LONG_MAX when they are more than that; -1 when "/proc" does not tell
 */
SWITCHCFG_API long mem_used(void) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
