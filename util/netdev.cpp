// SPDX-License-Identifier: Apache-2.0
// Requests to network interfaces and to the PHYs behind them.
#include <switchcfg/netdev.h>

#include "util/owned.h"

#include <cerrno>
#include <cstring>
#include <linux/sockios.h>
#include <switchcfg/socket.h>
#include <switchcfg/text.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

static_assert(sizeof(mii_ioctl_data) == 8 && sizeof(mii_ioctl_data) <= sizeof(ifreq::ifr_ifru));

namespace {

using switchcfg::Descriptor;

void name_interface(ifreq &interface, const char *name) noexcept
{
    (void)strncpy_safe(interface.ifr_name, name, sizeof interface.ifr_name);
}

// How a context ends every failure; errno stays what the failing call left.
int give_up(net_mii_context &context) noexcept
{
    (void)net_mii_ioctl_disconnect(&context);
    return -1;
}

} // namespace

int net_ioctl(std::uint32_t request, const char *name, ifreq *request_data) noexcept
{
    const int fd = net_udp_socket();
    if (fd < 0) {
        return fd;
    }
    const Descriptor owned{fd};
    name_interface(*request_data, name);
    return ::ioctl(fd, request, request_data);
}

int net_set_mac(const char *name, std::uint16_t family, const std::uint8_t *mac, int length) noexcept
{
    ifreq interface {
    };
    if (length < 0 || static_cast<std::size_t>(length) > sizeof interface.ifr_hwaddr.sa_data) {
        errno = EINVAL;
        return -1;
    }
    interface.ifr_hwaddr.sa_family = family;
    std::memcpy(interface.ifr_hwaddr.sa_data, mac, static_cast<std::size_t>(length));
    return net_ioctl(SIOCSIFHWADDR, name, &interface);
}

int net_ioctl_access(int fd, std::uint32_t request, void *argument) noexcept
{
    if (fd < 0) {
        errno = EBADF;
        return -1;
    }
    const int result = ::ioctl(fd, request, argument);
    return result < 0 ? -1 : result;
}

int net_mii_ioctl_init(net_mii_context *context, const char *name) noexcept
{
    name_interface(context->interface, name);
    context->data = reinterpret_cast<mii_ioctl_data *>(&context->interface.ifr_ifru);
    context->socket = -1;
    context->ready = 0;
    return 0;
}

int net_mii_ioctl_connect(net_mii_context *context) noexcept
{
    context->socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    context->request = SIOCGIFFLAGS;
    if (net_ioctl_access(context->socket, context->request, &context->interface) < 0) {
        return give_up(*context);
    }
    if ((context->interface.ifr_flags & (IFF_UP | IFF_RUNNING)) == 0) {
        errno = ENETDOWN;
        return give_up(*context);
    }
    if (context->ready == 0) {
        context->request = SIOCGMIIPHY;
        if (net_ioctl_access(context->socket, context->request, &context->interface) < 0) {
            return give_up(*context);
        }
        context->ready = 1;
    }
    return 0;
}

int net_mii_ioctl(net_mii_context *context) noexcept
{
    // Callers count on the PHY address from the call that connects, so the request that connecting left stands.
    if (context->socket == -1 && net_mii_ioctl_connect(context) < 0) {
        return give_up(*context);
    }
    if (context->ready == 0 || net_ioctl_access(context->socket, context->request, &context->interface) < 0) {
        return give_up(*context);
    }
    return 0;
}

int net_mii_ioctl_disconnect(net_mii_context *context) noexcept
{
    const switchcfg::KeepErrno keep;
    ::close(context->socket);
    context->socket = -1;
    context->ready = 0;
    return 0;
}
