/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file flash.h
 * Geometry and erasing of a flash partition through its memory-technology-device (MTD) character device.
 *
 * Each call asks the kernel anew; nothing is kept. A failure leaves errno as ioctl(2) set it (ENOTTY: the descriptor is
 * no MTD device; EACCES: erasing needs a descriptor open for writing). Any thread may call, as far as the device allows
 * it.
 */
#ifndef SWITCHCFG_FLASH_H
#define SWITCHCFG_FLASH_H

#include <stdint.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/**
 * Size of the partition behind `fd`.
 * @return bytes, or the negative ioctl result
 */
SWITCHCFG_API int mtd_flash_size(int fd) SWITCHCFG_NOEXCEPT;

/**
 * Size of an erase block of the partition behind `fd`: the unit in which flash goes back to 0xFF.
 * @return bytes, or the negative ioctl result
 */
SWITCHCFG_API int mtd_flash_sector_size(int fd) SWITCHCFG_NOEXCEPT;

/**
 * Number of erase blocks of the partition behind `fd`.
 * @return the count, or the negative ioctl result; -1 with errno EINVAL for a device that reports no erase blocks
 */
SWITCHCFG_API int mtd_flash_sector_num(int fd) SWITCHCFG_NOEXCEPT;

/**
 * Erase `length` bytes from offset `start` of the partition; both are multiples of the erase block.
 * @return 0, or the negative ioctl result
 */
SWITCHCFG_API int mtd_flash_erase_pos_size(int fd, uint32_t start, uint32_t length) SWITCHCFG_NOEXCEPT;

/**
 * Erase the whole partition behind `fd`, block by block from its start. A block that cannot be erased is passed over,
 * so a caller that must know reads back what it writes afterwards.
 * @return 0, or -1 when the geometry cannot be read or has no erase blocks (nothing is erased then)
 */
SWITCHCFG_API int mtd_flash_erase(int fd) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
