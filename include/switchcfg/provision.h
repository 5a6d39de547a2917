/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file provision.h
 * What the running configuration says of units and ports ahead of their hardware: the model that a unit is to be, the
 * port-channel that a port belongs to, and ports that are administratively down.
 *
 * Units count from 0 to 7 and ports of a unit from 0 to 51. Each call reads or writes one word of the running
 * configuration; writers that change more than one take the CFG lock (locks.h). Any thread may call between cfg_init()
 * and cfg_exit(); before and after, the getters answer 0 and the setters -1.
 */
#ifndef SWITCHCFG_PROVISION_H
#define SWITCHCFG_PROVISION_H

#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/** @return the hardware model number that the unit is configured as, 0 for none; -3 for a bad unit */
SWITCHCFG_API int cfg_unit_get_provisioned_model(int unit) SWITCHCFG_NOEXCEPT;

/**
 * Configure a unit as a model before it is there.
 * @param model hardware model number, 1 to 85, or 0 for none
 * @return 0; -3 for a bad unit; -7 for another model; -1 while the configuration is not mapped
 */
SWITCHCFG_API int cfg_unit_set_provisioned_model(int unit, int model) SWITCHCFG_NOEXCEPT;

/** @return the port-channel, 512 to 639, that the port is a member of, 0 for none; -3 for a bad unit or port */
SWITCHCFG_API int cfg_port_get_channel(int unit, int port) SWITCHCFG_NOEXCEPT;

/**
 * Make a port a member of one port-channel and of no other.
 * @param channel port-channel, 512 to 639, or 0 for none
 * @return 0; -3 for a bad unit or port; -4 for another port-channel; -1 while the configuration is not mapped
 */
SWITCHCFG_API int cfg_port_set_channel(int unit, int port, int channel) SWITCHCFG_NOEXCEPT;

/** @return 1 while the port is administratively down, else 0; -3 for a bad unit or port */
SWITCHCFG_API int cfg_port_get_disabled(int unit, int port) SWITCHCFG_NOEXCEPT;

/** Take a port down (non-zero) or up (0). @return 0; -3 for a bad unit or port; -1 while nothing is mapped */
SWITCHCFG_API int cfg_port_set_disabled(int unit, int port, int disabled) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
