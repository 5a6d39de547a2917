/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file netdev.h
 * Requests to a network interface by its name, and MII register access to the PHY behind it.
 *
 * A failure leaves errno as the kernel set it; nothing is logged. Interface names are cut to 15 characters. The net_
 * functions without a context may be called from any thread; a context belongs to one thread at a time.
 */
#ifndef SWITCHCFG_NETDEV_H
#define SWITCHCFG_NETDEV_H

#include <net/if.h>
#include <stdint.h>

#include <linux/if.h> /* struct ifreq where strict C hides the one of net/if.h; that one comes first so both fit */
#include <linux/mii.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/**
 * Perform an interface request (SIOCGIFFLAGS and the like) on the interface `name`, over a socket of its own.
 * @param request_data receives the name; the rest is in- and output of the request
 * @return the ioctl result, or the negative result of net_udp_socket()
 */
SWITCHCFG_API int net_ioctl(uint32_t request, const char *name, struct ifreq *request_data) SWITCHCFG_NOEXCEPT;

/**
 * Set the hardware address of the interface `name`; needs CAP_NET_ADMIN.
 * @param family kind of address, 1 (ARPHRD_ETHER) for Ethernet
 * @param length bytes at `mac`, 0 to 14; 6 for Ethernet
 * @return the result of net_ioctl() for SIOCSIFHWADDR; -1 with errno EINVAL for a length that no address has
 */
SWITCHCFG_API int net_set_mac(const char *name, uint16_t family, const uint8_t *mac, int length) SWITCHCFG_NOEXCEPT;

/**
 * Perform any request on an open descriptor.
 * @return the ioctl result when it is 0 or more; -1 for a negative descriptor (errno EBADF) or a failed request
 */
SWITCHCFG_API int net_ioctl_access(int fd, uint32_t request, void *argument) SWITCHCFG_NOEXCEPT;

/**
 * Access to the registers of a PHY, kept between calls. Set up by net_mii_ioctl_init(); not to be copied or moved after
 * that, since it points into itself. The caller writes `request` and the MII data and reads the MII data; the rest is
 * the functions'.
 */
struct net_mii_context {
    int32_t socket;              /**< -1 while not connected */
    struct ifreq interface;      /**< name of the interface, then its flags or the MII data */
    struct mii_ioctl_data *data; /**< PHY address, register, value in and value out; they lie in `interface` */
    uint32_t request;            /**< what net_mii_ioctl() performs: SIOCGMIIREG, SIOCSMIIREG */
    int ready;                   /**< 1 once the PHY address is known */
};

/**
 * Set up `context` for the interface `name`, not connected. A context that is connected is disconnected by the caller
 * first.
 * @return 0
 */
SWITCHCFG_API int net_mii_ioctl_init(struct net_mii_context *context, const char *name) SWITCHCFG_NOEXCEPT;

/**
 * Open the socket of a context that is not connected, see that the interface is up or running, and obtain the PHY
 * address, which then is in the MII data. Overwrites the request field. net_mii_ioctl() does this when needed.
 * @return 0; -1 when any of it fails, with the context disconnected. An interface that is neither up nor running sets
 *         no errno.
 */
SWITCHCFG_API int net_mii_ioctl_connect(struct net_mii_context *context) SWITCHCFG_NOEXCEPT;

/**
 * Perform the context's request. The call that finds the context disconnected connects it, and so performs SIOCGMIIPHY
 * instead: it leaves the PHY address in the MII data, whatever was requested. Set the request and the register, and
 * call again.
 * @return 0 with the results in the MII data; -1 with the context disconnected, so that the next call starts over
 */
SWITCHCFG_API int net_mii_ioctl(struct net_mii_context *context) SWITCHCFG_NOEXCEPT;

/**
 * Close the socket of a context, connected or not.
 * @return 0
 */
SWITCHCFG_API int net_mii_ioctl_disconnect(struct net_mii_context *context) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
