/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file error.h
 * Error codes, their messages, and what a failed command has to say to the CLI user.
 *
 * Every function of the library and of the switch's daemons reports failure as a small negative integer of one shared
 * numbering, -1 to -486; 0 is success. Codes are returned, never kept anywhere. cfg_strerror() has their English texts,
 * and four foreign numberings (switch chip, spanning tree, power supplies, process manager) translate into ours.
 *
 * Where a code alone does not explain enough, a function leaves text in one of two channels of its process, both off
 * until enabled: the error message (one line, each new one overwrites it) and the warnings (they accumulate, repeats
 * folded). The CLI enables them around a command, prints what is there, and disables them.
 *
 * The code functions may be called from any thread at any time. The channels and the checks that write to them belong
 * to one thread at a time, the one that runs CLI commands.
 */
#ifndef SWITCHCFG_ERROR_H
#define SWITCHCFG_ERROR_H

#include <stdint.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/** Size of the error message with its terminator. */
#define CFG_ERROR_MSG_SIZE 1024

/** The error message itself, what cfg_error_get_msg() returns. Always terminated. */
extern SWITCHCFG_API char cfg_error_msg[CFG_ERROR_MSG_SIZE];

/** How often the last warning was repeated since the warnings were last cleared or disabled. */
extern SWITCHCFG_API int32_t Warning_times;

/**
 * Make the code tables ready; cfg_init() calls it. The tables are constant, so there is nothing to do and the lookups
 * work before it too.
 */
SWITCHCFG_API void cfg_error_init(void) SWITCHCFG_NOEXCEPT;

/**
 * Message of the error code `code`, without a line end. A few codes have an empty message, a few messages have line
 * breaks in them.
 * @return constant text, or null for 0 and for every code that is not assigned: print a fallback of your own then
 */
SWITCHCFG_API const char *cfg_strerror(int code) SWITCHCFG_NOEXCEPT;

/**
 * Translate a result of the switch chip's driver (0, -2 to -18).
 * @return 0 or an error code; -10 ("Error configuring hardware") for what is unknown
 */
SWITCHCFG_API int cfg_error_from_bcm(int sdk_code) SWITCHCFG_NOEXCEPT;

/**
 * Translate a result of the spanning-tree engine (0 to 32).
 * @return 0 or an error code; -1 for what is unknown
 */
SWITCHCFG_API int cfg_error_from_stp(int stp_code) SWITCHCFG_NOEXCEPT;

/**
 * Translate an error of the power-supply manager (-1001 to -1006). It has no code for success: 0 is unknown to it.
 * @return an error code; -1 for what is unknown
 */
SWITCHCFG_API int cfg_error_from_psm(int psm_code) SWITCHCFG_NOEXCEPT;

/**
 * Translate a result of the process manager (-1 to -7, the results of pm_client.h): -1 no answer to -37 "Internal
 * communication error", -2 no such process to -8 "Not found", -3 refused for the state of the process and -4 unknown
 * command to -43 "Feature unavailable", -5 cannot be started or listed to -2 "Insufficient resources", -6 no process of
 * that name to -8, -7 the caller itself to -7 "Invalid parameter".
 * @return 0 for 0 and every positive result; else an error code, -1 for what is unknown: never 0 for a failure
 */
SWITCHCFG_API int cfg_pmg_err_code_translate(int pm_code) SWITCHCFG_NOEXCEPT;

/**
 * Replace the error message, cut to CFG_ERROR_MSG_SIZE - 1 bytes, when the channel is enabled; do nothing when it is
 * not. No argument may point into the error message.
 * @return 0
 */
SWITCHCFG_API int cfg_error_set_msg(const char *format, ...) SWITCHCFG_NOEXCEPT SWITCHCFG_PRINTF(1, 2);

/**
 * The last error message.
 * @return the library's buffer, never null; empty when nothing was set
 */
SWITCHCFG_API const char *cfg_error_get_msg(void) SWITCHCFG_NOEXCEPT;

/**
 * Switch the error message on (non-zero) or off. Switching off empties the message; when the channel was off already,
 * the old message stays.
 */
SWITCHCFG_API void cfg_set_error_msg_enable(int enable) SWITCHCFG_NOEXCEPT;

/**
 * Add a warning when the channel is enabled; do nothing when it is not. A warning equal to the one before is only
 * counted (Warning_times). A different one after repeats is preceded by "Last message repeated N time(s)"; the count is
 * not reset by that, so the next different warning writes the line once more. A null or empty `format` clears the
 * warnings and the count (compilers that check formats warn of a literal "", so write null). When memory is short, the
 * warning is dropped.
 * @return 0
 */
SWITCHCFG_API int cfg_warning_set_msg(const char *format, ...) SWITCHCFG_NOEXCEPT SWITCHCFG_PRINTF(1, 2);

/**
 * The accumulated warnings, each on its own line. When the last one was repeated, the line that says how often is added
 * to them first, at every call.
 * @return the library's text, valid until the channel's next call; null when there are none
 */
SWITCHCFG_API const char *cfg_warning_get_msg(void) SWITCHCFG_NOEXCEPT;

/** Switch the warnings on (non-zero) or off. Switching off clears them and the count. */
SWITCHCFG_API void cfg_set_warning_msg_enable(int enable) SWITCHCFG_NOEXCEPT;

/**
 * Check that `value` lies within `min` to `max` and is a power of two.
 * @param what what is checked, for the error message ("buffer" for "The buffer size must be power of 2. Use 32 or 64")
 * @return 0; -6 outside the range; -7 with an error message when it is no power of two. A value that no power of two
 *         lies below (0, or negative) gives -7 without a message.
 */
SWITCHCFG_API int cfg_error_power_of_2(const char *what, int value, int min, int max) SWITCHCFG_NOEXCEPT;

/**
 * Check that `value` lies within `min` to `max` and is a multiple of `step`.
 * @param what what is checked, for the error message ("aging-time" for "The aging-time must be multiple of 10. Use 20
 *             or 30")
 * @return 0; -6 outside the range; -7 with an error message when it is no multiple, without one when `step` is 0
 */
SWITCHCFG_API int cfg_error_granularity(const char *what, int value, int step, int min, int max) SWITCHCFG_NOEXCEPT;

/**
 * Check that a set of user ports makes sense on a unit: the unit is there, the set is not empty, and the unit has every
 * port of it.
 * @param pbmp port p is bit p % 32 of word p / 32
 * @return 0; -3 when not; the error of cfg_equip_get_slot_pbmp_tq5200() when the ports of the unit are not known
 */
SWITCHCFG_API int cfg_error_valid_unit_pbmp(int unit, const uint32_t pbmp[8]) SWITCHCFG_NOEXCEPT;

/**
 * Check that a set of user ports of a unit consists of whole groups, on boards that have such groups. None has, so it
 * accepts everything; it is here for the callers.
 * @return 0
 */
SWITCHCFG_API int cfg_error_complete_group_pbmp(int unit, ...) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
