/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file status.h
 * The status region: the switch's shared live state, and the look-ups in it.
 *
 * Daemons write what they learn (which units are in the stack, their hardware, switch chips, ports and transceivers)
 * and every process reads it in place. Nothing is locked: one aligned 32-bit word is what a reader can rely on, so take
 * a word once and decide on the copy.
 *
 * Units count from 0 to 7 and ports of a unit from 0 to 51. Any other number, a negative one included, is refused as
 * each function says, and no memory is touched. While the region is not mapped every unit is absent and every word 0.
 * Map and unmap on one thread; the look-ups may be called from any.
 */
#ifndef SWITCHCFG_STATUS_H
#define SWITCHCFG_STATUS_H

#include <stdint.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/** Bytes of the status region. */
#define STATUS_REGION_SIZE 11272288

#define STATUS_PATH "/var/status"

/** Bytes of a transceiver status record; the first is non-zero while a transceiver is plugged. */
#define STATUS_TCV_RECORD_SIZE 102

/** What status_get_cpu_port() returns for a chip without a port to the processor. */
#define STATUS_NO_CPU_PORT 256

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

/** @return how many of the eight units are in the stack */
SWITCHCFG_API int status_get_num_units(void) SWITCHCFG_NOEXCEPT;

/** @return the highest unit below the stack's maximum unit count that is in the stack; 0 when none is */
SWITCHCFG_API int status_get_last_connected_unit(void) SWITCHCFG_NOEXCEPT;

/**
 * Find the unit with a base MAC address.
 * @param mac 6 bytes
 * @return the first unit below the stack's maximum unit count, in the stack or not, or -1
 */
SWITCHCFG_API int status_mac_to_unit(const uint8_t *mac) SWITCHCFG_NOEXCEPT;

/**
 * @name Switch chips
 * A unit in the stack has as many chips as its model (cfg_equip_get_local_units()). A chip has a physical unit, its
 * number in the chip daemon, and owns one or two module identifiers (modids), the second for its ports from 32 on.
 * Where several chips fit, the first one by unit and then by chip wins. A null argument finds nothing.
 */
/**@{*/

/** @return the unit whose chip owns `modid`, or -1 */
SWITCHCFG_API int status_modid_to_unit(int modid) SWITCHCFG_NOEXCEPT;

/** @return the physical unit of the chip that owns `modid`, or -1 */
SWITCHCFG_API int status_modid_to_unit_phys(int modid) SWITCHCFG_NOEXCEPT;

/** @return the first modid of the chip with physical unit `punit`, or -1 */
SWITCHCFG_API int status_punit_to_modid(int punit) SWITCHCFG_NOEXCEPT;

/**
 * Translate a port of a modid into a port of the chip. The odd modid of a chip with two stands for its ports from 32
 * on.
 * @return 0, or -1 with nothing stored when no chip owns `modid`
 */
SWITCHCFG_API int status_modid_port_to_phys_unit_port(int modid, int port, int *punit, int *pport) SWITCHCFG_NOEXCEPT;

/**
 * The reverse. It asks the chips that a unit itself reports, which may be more than its model has.
 * @return 0, or -1 with nothing stored when no chip has physical unit `punit`
 */
SWITCHCFG_API int status_phys_unit_port_to_modid_port(int punit, int pport, int *modid, int *port) SWITCHCFG_NOEXCEPT;

/**
 * Find the unit, and the chip's index in it, of physical unit `punit`.
 * @return 0, or -1 with nothing stored when no chip has it
 */
SWITCHCFG_API int status_unit_phys_to_slot_index(int punit, int *unit, int *index) SWITCHCFG_NOEXCEPT;

/**
 * The chip port that leads to the processor: the lowest one of the chip's bitmap.
 * @param k index of the chip in the unit, from 0
 * @return the port, 0 to 255; STATUS_NO_CPU_PORT when there is none or no such chip can be
 */
SWITCHCFG_API int status_get_cpu_port(int unit, int k) SWITCHCFG_NOEXCEPT;

/**@}*/

/** Zero the port information records of the unit's ports, as many as its model has. @return 0 */
SWITCHCFG_API int status_init_port_info_by_unit(int unit) SWITCHCFG_NOEXCEPT;

/**
 * A port's transceiver status record, STATUS_TCV_RECORD_SIZE bytes at an odd address: no word in it is aligned.
 * @return the record in the region, or null for a bad unit or port or while the region is not mapped
 */
SWITCHCFG_API uint8_t *tcv_status_get_pointer(int unit, int port) SWITCHCFG_NOEXCEPT;

/** @return the port's handle in the transceiver daemon, or -3 for a bad unit or port */
SWITCHCFG_API int status_get_tcv_handle(int unit, int port) SWITCHCFG_NOEXCEPT;

/** @return 0, or -3 for a bad unit or port or while the region is not mapped */
SWITCHCFG_API int status_set_tcv_handle(int unit, int port, int handle) SWITCHCFG_NOEXCEPT;

/** @return the revision of the unit's board, or -3 for a bad unit */
SWITCHCFG_API int status_get_hw_version(int unit) SWITCHCFG_NOEXCEPT;

/** @return the unit's hardware model number, the index into Equip_tq5200, or -3 for a bad unit */
SWITCHCFG_API int status_get_hw_model_num(int unit) SWITCHCFG_NOEXCEPT;

/**
 * The model name that the unit's board reports: text in the region, of at most 31 characters when its writer terminates
 * it, 32 bytes in any case.
 * @return the text, or null for a bad unit or while the region is not mapped
 */
SWITCHCFG_API const char *status_get_hw_model(int unit) SWITCHCFG_NOEXCEPT;

/** @return non-zero while the unit is out of the stack by command rather than unplugged; 0 for a bad unit */
SWITCHCFG_API int status_get_logical_removal(int unit) SWITCHCFG_NOEXCEPT;

/**
 * Mark a unit as removed by command (non-zero) or take the mark away (0).
 * @return 0, or -3 for a bad unit or while the region is not mapped
 */
SWITCHCFG_API int status_set_logical_removal(int unit, int removed) SWITCHCFG_NOEXCEPT;

/** Kept for callers: there is nothing to wait for. @return 0 at once */
SWITCHCFG_API int status_wait_for_bcmd_init(void) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
