/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file files.h
 * Whole-file helpers. No state; any thread may call. After a -1 errno is what the failing system call set. Sizes are in
 * bytes and right for files beyond 2 GiB on 32-bit machines too.
 */
#ifndef SWITCHCFG_FILES_H
#define SWITCHCFG_FILES_H

#include <stdint.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/**
 * Whether the path leads to something, of whatever kind. A link that leads nowhere does not.
 * @return 1 or 0
 */
SWITCHCFG_API int file_exists(const char *path) SWITCHCFG_NOEXCEPT;

/**
 * @return the size of the file, or -1 with errno
 */
SWITCHCFG_API int64_t file_size(const char *path) SWITCHCFG_NOEXCEPT;

/**
 * @return the size of the open file, or -1 with errno
 */
SWITCHCFG_API int64_t fd_size(int fd) SWITCHCFG_NOEXCEPT;

/**
 * Make the buffer the whole content of a file and wait until the disk has it. A missing file is created with mode 0666
 * less the umask; an existing one is emptied first, so a failure leaves it cut short.
 * @param length bytes; 0 only creates or empties the file
 * @return 0, or -1 with errno
 */
SWITCHCFG_API int file_write(const char *path, const void *buffer, uint32_t length) SWITCHCFG_NOEXCEPT;

/**
 * Call a function for each entry of a directory, "." and ".." included, in the directory's own order, until it returns
 * something else than 0.
 * @param callback receives the entry's name, good until it returns, and `argument`
 * @return what the callback stopped the walk with; 0 after the last entry; -1 with errno when the directory cannot be
 *         opened or read
 */
SWITCHCFG_API int dir_iterate(const char *path, int (*callback)(const char *name, void *argument), void *argument);

SWITCHCFG_END_DECLS

#endif
