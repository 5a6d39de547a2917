// SPDX-License-Identifier: Apache-2.0
#include "lab/links.h"

#include "lab/refusal.h"
#include "lab/text_file.h"

#include <cerrno>
#include <linux/if_addr.h>
#include <memory>
#include <net/if.h>
#include <netlink/netlink.h>
#include <netlink/route/addr.h>
#include <netlink/route/link.h>
#include <netlink/route/link/veth.h>

namespace switchlab {
namespace {

template<auto release>
struct Release {
    template<typename T>
    void operator()(T *object) const
    {
        release(object);
    }
};
using Socket = std::unique_ptr<nl_sock, Release<nl_socket_free>>;
using Interface = std::unique_ptr<rtnl_link, Release<rtnl_link_put>>;
using Address = std::unique_ptr<nl_addr, Release<nl_addr_put>>;
using InterfaceAddress = std::unique_ptr<rtnl_addr, Release<rtnl_addr_put>>;

void require(int result, const char *what, const std::string &name)
{
    if (result < 0) {
        throw Refusal(std::string{what} + " " + name + ": " + nl_geterror(result));
    }
}

template<typename T>
T made(T object, const std::string &name)
{
    if (!object) {
        errno = ENOMEM;
        throw refusal("netlink request for", name);
    }
    return object;
}

Socket connection()
{
    Socket socket = made(Socket{nl_socket_alloc()}, "links");
    require(nl_connect(socket.get(), NETLINK_ROUTE), "netlink", "connection");
    return socket;
}

} // namespace

void make_bridge(const std::string &name)
{
    const Socket socket = connection();
    const Interface bridge = made(Interface{rtnl_link_alloc()}, name);
    require(rtnl_link_set_type(bridge.get(), "bridge"), "a bridge as", name);
    rtnl_link_set_name(bridge.get(), name.c_str());
    rtnl_link_set_flags(bridge.get(), IFF_UP);
    require(rtnl_link_add(socket.get(), bridge.get(), NLM_F_CREATE | NLM_F_EXCL),
        "making the bridge (the kernel's module \"bridge\")", name);
}

void join_to_bridge(const Link &link, pid_t pid)
{
    const Socket socket = connection();
    if (::if_nametoindex(link.port.c_str()) != 0) {
        const Interface old = made(Interface{rtnl_link_alloc()}, link.port);
        rtnl_link_set_name(old.get(), link.port.c_str());
        (void)rtnl_link_delete(socket.get(), old.get());
    }
    const Interface port = made(Interface{rtnl_link_veth_alloc()}, link.port);
    rtnl_link_set_name(port.get(), link.port.c_str());
    rtnl_link_set_flags(port.get(), IFF_UP);
    rtnl_link_set_master(port.get(), static_cast<int>(::if_nametoindex(link.bridge.c_str())));
    rtnl_link *const far_end = rtnl_link_veth_get_peer(port.get()); // takes a reference of its own
    const Interface far{far_end};
    rtnl_link_set_name(far_end, link.name.c_str());
    rtnl_link_set_ns_pid(far_end, pid);
    const Address mac = made(Address{nl_addr_build(AF_LLC, link.mac.data(), link.mac.size())}, link.name);
    rtnl_link_set_addr(far_end, mac.get());
    require(rtnl_link_add(socket.get(), port.get(), NLM_F_CREATE | NLM_F_EXCL),
        "making the link (the kernel's module \"veth\")", link.port);
}

void add_address(const std::string &interface, const std::string &address)
{
    const Socket socket = connection();
    nl_addr *parsed = nullptr;
    require(nl_addr_parse(address.c_str(), AF_UNSPEC, &parsed), "address", address);
    const Address local{parsed};
    const InterfaceAddress request = made(InterfaceAddress{rtnl_addr_alloc()}, address);
    rtnl_addr_set_ifindex(request.get(), static_cast<int>(::if_nametoindex(interface.c_str())));
    require(rtnl_addr_set_local(request.get(), local.get()), "address", address);
    rtnl_addr_set_flags(request.get(), IFA_F_NODAD);
    require(rtnl_addr_add(socket.get(), request.get(), 0), ("giving " + interface + " the address").c_str(), address);
}

void bring_up(const std::string &interface)
{
    const std::string settings = "/proc/sys/net/ipv6/conf/" + interface + "/";
    write_kernel_file((settings + "disable_ipv6").c_str(), "0");
    write_kernel_file((settings + "accept_dad").c_str(), "0");
    write_kernel_file((settings + "addr_gen_mode").c_str(), "1"); // none: the kernel's own would come when it likes
    const Socket socket = connection();
    const Interface now = made(Interface{rtnl_link_alloc()}, interface);
    rtnl_link_set_ifindex(now.get(), static_cast<int>(::if_nametoindex(interface.c_str())));
    const Interface then = made(Interface{rtnl_link_alloc()}, interface);
    rtnl_link_set_flags(then.get(), IFF_UP);
    require(rtnl_link_change(socket.get(), now.get(), then.get(), 0), "bringing up", interface);
}

} // namespace switchlab
