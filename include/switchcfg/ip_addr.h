/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file ip_addr.h
 * The address record: how an IPv4 or IPv6 address stands in the shared records and travels between functions.
 */
#ifndef SWITCHCFG_IP_ADDR_H
#define SWITCHCFG_IP_ADDR_H

#include <assert.h>
#include <stdint.h>

/** An IP address of either family. Bytes only, so the record may stand anywhere in a region. */
struct cfg_ip_addr {
    uint8_t addr[16]; /**< in network order; an IPv4 address takes the first four */
    uint8_t length;   /**< 4 for IPv4, 16 for IPv6, 0 for no address */
};

static_assert(sizeof(struct cfg_ip_addr) == 17, "the record has this size in files and regions");

#endif
