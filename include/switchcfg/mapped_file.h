/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file mapped_file.h
 * Files mapped shared into memory: a store by one process is seen at once by all that map the file.
 *
 * A mapping gives no mutual exclusion; writers that need consistency take a lock of locks.h. Nothing here logs. All
 * functions may be called from any thread; a failure leaves errno as the system call set it.
 */
#ifndef SWITCHCFG_MAPPED_FILE_H
#define SWITCHCFG_MAPPED_FILE_H

#include <stddef.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/**
 * Make sure the file exists and is at least `len` bytes long, then map its first `len` bytes, readable and writable.
 * A missing file is created with mode 0777 less the umask; a short one keeps its bytes and is extended with zeros
 * (sparsely); one that is long enough is left as it is, and is never truncated.
 * @param path file
 * @param len  bytes to map, at least 1
 * @return the mapping, to be released with file_unmap(), or null (the folder is missing, the file system is full, ...)
 */
SWITCHCFG_API void *file_map_create(const char *path, size_t len) SWITCHCFG_NOEXCEPT;

/**
 * Map the whole file at its current size, read-only. The caller must remember the size to unmap it.
 * @return the mapping, or null (missing or empty file, ...)
 */
SWITCHCFG_API void *file_map_read(const char *path) SWITCHCFG_NOEXCEPT;

/**
 * Map the whole existing file at its current size, readable and writable; never creates or extends it. The caller must
 * remember the size to unmap it.
 * @return the mapping, or null (missing, empty or read-only file, ...)
 */
SWITCHCFG_API void *file_map_write(const char *path) SWITCHCFG_NOEXCEPT;

/**
 * Release a mapping of `len` bytes.
 * @return the result of munmap(2)
 */
SWITCHCFG_API int file_unmap(void *addr, size_t len) SWITCHCFG_NOEXCEPT;

/**
 * Write `len` bytes of a mapping back to the file and wait until they are there.
 * @param addr start of a page of the mapping
 * @return the result of msync(2) with MS_SYNC
 */
SWITCHCFG_API int file_sync(void *addr, size_t len) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
