/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file text.h
 * Texts in buffers of fixed size, joined texts, and small relatives. No state; any thread may call, with vx_setenv()
 * under the rules of setenv(3). Results on the heap are the caller's to free with free(3).
 */
#ifndef SWITCHCFG_TEXT_H
#define SWITCHCFG_TEXT_H

#include <stddef.h>
#include <switchcfg/export.h>
#include <time.h>

SWITCHCFG_BEGIN_DECLS

/**
 * Copy a text into a buffer, cut to fit, and terminate it; what is left of the buffer is filled with zeros, so records
 * compare equal byte by byte.
 * @param size bytes of the buffer; with 0 nothing is written
 * @return `destination`
 */
SWITCHCFG_API char *strncpy_safe(char *destination, const char *source, size_t size) SWITCHCFG_NOEXCEPT;

/**
 * Append a text to the one in a buffer, cut to fit. The last byte of the buffer becomes a terminator in every case.
 * @param destination a terminated text; one that fills the buffer or more is cut to it
 * @param size        bytes of the buffer, not of what is free in it; with 0 nothing is written
 * @return `destination`
 */
SWITCHCFG_API char *strncat_safe(char *destination, const char *source, size_t size) SWITCHCFG_NOEXCEPT;

/**
 * Join two texts.
 * @return the joined text on the heap, or null without memory
 */
SWITCHCFG_API char *strncat_allocate(const char *first, const char *second) SWITCHCFG_NOEXCEPT;

/**
 * Join texts with a separator between them: {"a", "bc"} and ',' give "a,bc".
 * @param count how many texts; 0 or less gives the empty text
 * @return the joined text on the heap, or null without memory
 */
SWITCHCFG_API char *string_array_concat(const char *const *texts, int count, char separator) SWITCHCFG_NOEXCEPT;

/**
 * Set an environment variable to a formatted text, replacing an earlier value.
 * @return the result of setenv(3): 0, or -1 with errno (EINVAL: no name for a variable; ENOMEM)
 */
SWITCHCFG_API int vx_setenv(const char *name, const char *format, ...) SWITCHCFG_NOEXCEPT SWITCHCFG_PRINTF(2, 3);

/**
 * strftime(3) that always leaves a terminated text in a buffer of at least one byte.
 * @param size bytes of the buffer
 * @return the length of the text; 0, and the empty text, when it does not fit
 */
SWITCHCFG_API int strftime_safe(
    char *buffer, size_t size, const char *format, const struct tm *time) SWITCHCFG_NOEXCEPT;

/**
 * Copy a piece of memory.
 * @param length bytes; 0 gives a pointer that must not be read through
 * @return the copy on the heap, or null without memory
 */
SWITCHCFG_API void *vxmemdup(const void *memory, size_t length) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
