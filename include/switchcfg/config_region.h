/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file config_region.h
 * The running and the default configuration, each one flat record of CFG_REGION_SIZE bytes mapped shared into every
 * process.
 *
 * A region has no header: every field is at a fixed offset, words are in the processor's own byte order, a new region
 * is all zero bytes, and zero is the "unset" value of every field. Writers that need consistency take the CFG lock
 * (cfg_lock_table[CFG_LOCK_CFG], locks.h). The region pointers are plain words: map and unmap on one thread, read from
 * any.
 */
#ifndef SWITCHCFG_CONFIG_REGION_H
#define SWITCHCFG_CONFIG_REGION_H

#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/** Bytes of a configuration region; odd, and used as it is for mapping, sync and unmapping. */
#define CFG_REGION_SIZE 21707629

/** Byte offset of the UTC offset: a signed 32-bit count of minutes, which updateTZ() of startup.h applies. */
#define CFG_UTC_OFFSET_MINUTES_AT 10547940

#define CFG_RUNNING_PATH "/var/run/cfg/running.cfg"
#define CFG_DEFAULT_PATH "/var/run/cfg/default.cfg"

/**
 * Map the running configuration, creating its file when it is missing. cfg_init() does this.
 * @return 0; -1 when it is mapped already (the mapping stays) or cannot be mapped (after a call of cfg_exit())
 */
SWITCHCFG_API int cfg_data_cfg_map(void) SWITCHCFG_NOEXCEPT;

/**
 * Map the default configuration, creating its file when it is missing. cfg_init() does this.
 * @return 0; -1 when it is mapped already (the mapping stays) or cannot be mapped (after a call of cfg_exit())
 */
SWITCHCFG_API int cfg_data_defcfg_map(void) SWITCHCFG_NOEXCEPT;

/** Unmap the running configuration if it is mapped. @return 0 */
SWITCHCFG_API int cfg_data_cfg_unmap(void) SWITCHCFG_NOEXCEPT;

/** Unmap the default configuration if it is mapped. @return 0 */
SWITCHCFG_API int cfg_data_defcfg_unmap(void) SWITCHCFG_NOEXCEPT;

/**
 * Write both regions back to their files, the running one first, and wait until they are there.
 * @return the default region's msync(2) result, or 0 when that region is not mapped; the running region's result is not
 *         reported
 */
SWITCHCFG_API int cfg_data_sync(void) SWITCHCFG_NOEXCEPT;

/** @return the running configuration, or null while it is not mapped; the library's to unmap */
SWITCHCFG_API void *cfg_get_cfg(void) SWITCHCFG_NOEXCEPT;

/** @return the default configuration, or null while it is not mapped; the library's to unmap */
SWITCHCFG_API void *cfg_get_default_cfg(void) SWITCHCFG_NOEXCEPT;

/**
 * Let `region` take the place of the running configuration in this process, for instance to edit a candidate with the
 * accessors. Nothing is unmapped: the caller owns the old region and the new one, and must give the old one back before
 * cfg_exit(), which unmaps whatever stands here.
 * @param region CFG_REGION_SIZE bytes
 */
SWITCHCFG_API void cfg_set_cfg(void *region) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
