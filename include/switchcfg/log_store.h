/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file log_store.h
 * The stored logs of the switch, by way of the logging daemon.
 *
 * The daemon keeps its log in named destinations, four of which are fixed stores. Each call is one command to the
 * daemon's control port on "::1" and takes at most twice LOG_STORE_TIMEOUT_S seconds. Whatever goes wrong on the way is
 * folded into the result; nothing is printed.
 *
 * A fetched text is allocated with malloc; the caller frees it. Its bytes are the daemon's: the length comes from
 * logger_get_sized(). One NUL that is not part of the text stands behind it, so that a caller who takes it for a C
 * string stays inside.
 *
 * Any thread may call, except that a clear sets Warning_times (error.h), which belongs to the thread that runs CLI
 * commands.
 */
#ifndef SWITCHCFG_LOG_STORE_H
#define SWITCHCFG_LOG_STORE_H

#include <stdint.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/** TCP port on which the logging daemon takes commands. */
#define LOG_CONTROL_PORT 63003

/** Time-out of a command to the stores, in seconds. */
#define LOG_STORE_TIMEOUT_S 10

#define LOG_STORE_RAM "RAM_FILE"
#define LOG_STORE_INTERNAL_RAM "INTERNAL_RAM_FILE"
#define LOG_STORE_FLASH "FLASH_FILE"
#define LOG_STORE_INTERNAL_FLASH "INTERNAL_FLASH_FILE"

/**
 * Fetch the text of a destination.
 * @param name cut to 63 characters
 * @return the text, the caller's to free; null when the command failed or the destination is empty
 */
SWITCHCFG_API char *logger_get(const char *name) SWITCHCFG_NOEXCEPT;

/**
 * logger_get(), and the length of the text in bytes.
 * @param length_out 0 when the result is null; may be null
 */
SWITCHCFG_API char *logger_get_sized(const char *name, uint32_t *length_out) SWITCHCFG_NOEXCEPT;

/**
 * Fetch the text of a destination and write it to a file, which is created (mode 0666 less the umask) or emptied.
 * @return 0; -1 when the command failed or the destination is empty (the file is then not touched) or writing failed;
 *         -44 when the file cannot be opened
 */
SWITCHCFG_API int logger_save(const char *name, const char *path) SWITCHCFG_NOEXCEPT;

/** @return the text of "RAM_FILE", as logger_get() */
SWITCHCFG_API char *logram_get(void) SWITCHCFG_NOEXCEPT;
/** @return the text of "INTERNAL_RAM_FILE", as logger_get() */
SWITCHCFG_API char *loginternalram_get(void) SWITCHCFG_NOEXCEPT;
/** @return the text of "FLASH_FILE", as logger_get() */
SWITCHCFG_API char *logflash_get(void) SWITCHCFG_NOEXCEPT;
/** @return the text of "INTERNAL_FLASH_FILE", as logger_get() */
SWITCHCFG_API char *loginternalflash_get(void) SWITCHCFG_NOEXCEPT;

/** Clear "RAM_FILE". @return 0, and Warning_times is 0; -1 when the command failed */
SWITCHCFG_API int logram_clear(void) SWITCHCFG_NOEXCEPT;
/** Clear "INTERNAL_RAM_FILE", as logram_clear(). */
SWITCHCFG_API int loginternalram_clear(void) SWITCHCFG_NOEXCEPT;
/** Clear "FLASH_FILE", as logram_clear(). */
SWITCHCFG_API int logflash_clear(void) SWITCHCFG_NOEXCEPT;
/** Clear "INTERNAL_FLASH_FILE", as logram_clear(). */
SWITCHCFG_API int loginternalflash_clear(void) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
