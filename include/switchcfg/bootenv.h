/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file bootenv.h
 * The boot loader's variables: name=value texts in a flash partition, "/dev/flash_env".
 *
 * Every process reads them from one shadow in the status region, which the first cfg_init() of a boot loads. Changes
 * go into the shadow with bootenv_set() and reach flash, as a whole, with bootenv_grava(). On equipment that keeps a
 * backup the image is also copied to "/mnt/flash/bkp/env", from which bootenv_backup() brings a lost environment back
 * at boot.
 *
 * Partition and backup hold the same image: the CRC-32 (zlib's, big-endian) of 65532 bytes, and those bytes: texts
 * with their terminators, two further NULs as the end, zeros. The end takes its two bytes of the 65532, so all texts
 * with their terminators have 65530.
 *
 * A variable without "=" (only damage makes one) is never seen and leaves the shadow with the next change. A name
 * counts up to its first "=".
 *
 * What a power failure leaves: the partition is erased before it is written, so between the two the backup is the only
 * whole copy. docs/bootenv.md lists every point, and the few at which neither copy is whole.
 *
 * The shadow is shared by all processes and changed without a lock: callers that change variables, save or restore
 * agree among themselves. Codes are those of cfg_strerror(): -1 internal error, -2 no memory, -26 flash. Without a
 * status region (before cfg_init()) there is no shadow: the environment is empty and cannot be changed.
 */
#ifndef SWITCHCFG_BOOTENV_H
#define SWITCHCFG_BOOTENV_H

#include <stdint.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/** Most bytes of a whole image; a longer partition or backup file is read up to here. */
#define BOOTENV_IMAGE_SIZE 65536

/** Most bytes that all variables may take together, with a terminator behind each. */
#define BOOTENV_VARIABLES_SIZE 65530

/** Features that the bitmap variable "FBMP" enables. */
enum bootenv_feature {
    BOOTENV_FEATURE_L3 = 1U << 0,      /**< routing */
    BOOTENV_FEATURE_BIT1 = 1U << 1,    /**< kept as requested, whatever the hardware */
    BOOTENV_FEATURE_MPLS = 1U << 2,    /**< counts as enabled only together with L3 */
    BOOTENV_FEATURE_POE = 0x3FU << 11, /**< power over Ethernet, six bits */
};

/**
 * Load the shadow from flash, unless a process has loaded it already. cfg_init() calls it.
 * The CRC is not checked, so that an environment is there even when the boot loader would refuse it.
 * An environment without any variable loads, but leaves no mark: the next call loads again.
 * @return 0; -1 when the partition cannot be read or its first 65536 bytes hold no end (an erased partition has none);
 *         the shadow is then as it was
 */
SWITCHCFG_API int bootenv_init(void) SWITCHCFG_NOEXCEPT;

/**
 * Look a variable up in the shadow.
 * @return a copy of its value, the caller's to free; null when there is none of that name, or no memory
 */
SWITCHCFG_API char *bootenv_get(const char *name) SWITCHCFG_NOEXCEPT;

/**
 * List the shadow.
 * @param list_out  receives an array of name=value texts, in the order of the environment; the caller frees each and
 *                  the array; null for an empty environment
 * @param count_out receives the number of texts
 * @return 0, or -1 without memory (nothing is stored)
 */
SWITCHCFG_API int bootenv_get_all(char ***list_out, int *count_out) SWITCHCFG_NOEXCEPT;

/**
 * Put a variable at the end of the environment in place of the one of that name, or remove it. Only the shadow
 * changes. What it held under a damaged, doubled name goes too.
 * @param value the value, which may be empty; null removes the variable, and removing what is not there succeeds
 * @return 0; -1 when the variables would no longer fit, and without a name, a shadow or memory (nothing has changed)
 */
SWITCHCFG_API int bootenv_set(const char *name, const char *value) SWITCHCFG_NOEXCEPT;

/**
 * Save: erase the partition, write the shadow to it, load it back, compare, and replace the backup file where the
 * equipment keeps one.
 *
 * Once the erase has begun only 0 is a success. After -1 or -26 the shadow is what could be loaded back from flash.
 * When nothing could, its first byte stays cleared, which marks it as not loaded and costs its first variable: set that
 * again, or let bootenv_init() load, before the next save.
 *
 * @return 0; -26 when the partition cannot be opened or erased, when flash holds other bytes than were written (a block
 *         that did not erase, a bad cell), or when the backup cannot be written; -1 when the write to the partition
 * fails or what it holds cannot be loaded; -2 without memory to compare (flash is written, backup and shadow are as
 * they were)
 */
SWITCHCFG_API int bootenv_grava(void) SWITCHCFG_NOEXCEPT;

/**
 * Store a new feature bitmap: publish it as status_fbmp_init() does with `at_start` 0, set "FBMP" to the decimal text
 * of the 64-bit value, and save.
 * @return as bootenv_grava(); -1 also when the variable does not fit (flash is not touched then)
 */
SWITCHCFG_API int bootenv_write_fbmp(uint32_t high, uint32_t low) SWITCHCFG_NOEXCEPT;

/**
 * Read a whole image, up to 65536 bytes of it. Nothing of its content is checked.
 * @param size_out receives the number of bytes read; on failure it is as it was
 * @param is_flash non-zero when `path` is a flash device, whose size is that of the partition
 * @return the bytes, the caller's to free; null when the image is empty or cannot be read, or without memory
 */
SWITCHCFG_API uint8_t *bootenv_read_env(const char *path, int *size_out, int is_flash) SWITCHCFG_NOEXCEPT;

/**
 * Copy the partition to the backup file, whose folder is made if need be. An environment without the variable "HV" is
 * first given it, with the value "0", and saved: the name marks an environment as written by the switch's software.
 * Whether that save succeeded makes no difference: it cannot while the folder is missing.
 * @return 0, or -26
 */
SWITCHCFG_API int bootenv_boot_to_flash(void) SWITCHCFG_NOEXCEPT;

/**
 * Write the backup file to the partition, after checking its CRC. The shadow is left as it is; it follows flash again
 * after a restart.
 * @return 0, or -26: no backup that can be read, one that fails its CRC or is longer than the partition (flash is not
 *         touched in these cases), or a partition that cannot be erased or written
 */
SWITCHCFG_API int bootenv_flash_to_boot(void) SWITCHCFG_NOEXCEPT;

/**
 * The decision at boot, once the shadow is loaded: keep flash and backup in step.
 * - With a backup, and "HV" in the shadow: done when flash and backup are equal, else the backup is made anew.
 * - With a backup, and no "HV": the environment was lost or went back to the boot loader's defaults. The backup is
 *   written to flash, standard output says so, "/mnt/flash" is unmounted and the switch restarts; this takes two
 *   seconds, and the caller has only to return. Without a good backup, one is made as below.
 * - Without a backup, or with an empty one: bootenv_boot_to_flash().
 * @return 0; -1 when the switch is about to restart; -26 when the backup could not be made
 */
SWITCHCFG_API int bootenv_backup(void) SWITCHCFG_NOEXCEPT;

/**
 * Reduce a feature bitmap to what the hardware of a unit can do, with a line on standard output for each feature that
 * is dropped ("POE will not be enabled. ...", and likewise MPLS and L3).
 * @param unit stack unit 0 to 7; any other has none of these features
 * @param fbmp the requested bitmap; receives the reduced one, in which every bit without a name, and the whole high
 *             word, is clear
 */
SWITCHCFG_API void cfg_bootenv_check_chip_capability(int unit, uint64_t *fbmp) SWITCHCFG_NOEXCEPT;

/**
 * Publish the feature bitmap in the status region: what is enabled now, and what the next start will enable.
 * @param high     high word; not published
 * @param low      low word
 * @param at_start non-zero once per boot, when the bitmap takes effect; 0 when it is only stored for the next start
 */
SWITCHCFG_API void status_fbmp_init(uint32_t high, uint32_t low, int at_start) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
