// SPDX-License-Identifier: Apache-2.0
// Single Ethernet frames through a packet socket that lives for one frame.
#include "util/owned.h"

#include <switchcfg/socket.h>

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <linux/if_packet.h>
#include <net/ethernet.h>
#include <net/if.h>
#include <net/if_arp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

static_assert(sizeof(sockaddr_ll) == 20);

int socket_raw_send(const void *frame, int length, const char *interface) noexcept
{
    if (frame == nullptr || interface == nullptr || length < ETHER_HDR_LEN) {
        errno = EINVAL;
        return -1;
    }
    switchcfg::Descriptor fd{::socket(AF_PACKET, SOCK_RAW, htons(ETH_P_ALL))};
    if (!fd) {
        return -1;
    }
    ifreq request{};
    std::memcpy(request.ifr_name, interface, ::strnlen(interface, sizeof request.ifr_name - 1));
    if (::ioctl(fd.get(), SIOCGIFINDEX, &request) < 0) {
        return -1;
    }
    sockaddr_ll destination{};
    destination.sll_family = AF_PACKET;
    destination.sll_protocol = htons(ETHERTYPE_IP);
    destination.sll_ifindex = request.ifr_ifindex;
    destination.sll_hatype = ARPHRD_ETHER;
    destination.sll_pkttype = PACKET_OTHERHOST;
    destination.sll_halen = ETHER_ADDR_LEN;
    std::memcpy(destination.sll_addr, frame, ETHER_ADDR_LEN);
    const ssize_t sent = ::sendto(fd.get(), frame, static_cast<std::size_t>(length), 0,
        reinterpret_cast<const sockaddr *>(&destination), sizeof destination);
    return sent < 0 ? -1 : 0;
}
