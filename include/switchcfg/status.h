/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file status.h
 * The status region: the switch's shared live state.
 */
#ifndef SWITCHCFG_STATUS_H
#define SWITCHCFG_STATUS_H

#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/** Bytes of the status region. */
#define STATUS_REGION_SIZE 11272288

#define STATUS_PATH "/var/status"

/** @return the mapped status region, or null while it is not mapped; the library's to unmap */
SWITCHCFG_API void *get_status(void) SWITCHCFG_NOEXCEPT;

/**
 * Map the status region, creating its file when it is missing. cfg_init() does this.
 * @return 0, also when it is mapped already; -1 when it cannot be mapped
 */
SWITCHCFG_API int status_init(void) SWITCHCFG_NOEXCEPT;

/** Unmap the status region if it is mapped. cfg_exit() does this. @return 0 */
SWITCHCFG_API int status_finish(void) SWITCHCFG_NOEXCEPT;

/** Write the region back to its file and wait. @return the result of msync(2), or 0 while it is not mapped */
SWITCHCFG_API int status_sync(void) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
