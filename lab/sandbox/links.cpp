// SPDX-License-Identifier: Apache-2.0
// The kernel's route netlink by hand: five kinds of request are not worth a library that every target would need.
#include "lab/sandbox/links.h"

#include "lab/refusal.h"
#include "lab/text_file.h"
#include "util/owned.h"

#include <arpa/inet.h>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <linux/if_addr.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <linux/veth.h>
#include <net/if.h>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace switchlab {
namespace {

using switchcfg::Descriptor;

// A request as it is put together; attributes may stand in attributes.
class NetlinkRequest {
  public:
    template<typename Body>
    NetlinkRequest(std::uint16_t type, int flags, const Body &body)
    {
        nlmsghdr head{};
        head.nlmsg_type = type;
        head.nlmsg_flags = static_cast<std::uint16_t>(NLM_F_REQUEST | NLM_F_ACK | flags);
        append(&head, sizeof head);
        append(&body, sizeof body);
    }

    void add(std::uint16_t type, const void *value, std::size_t size)
    {
        const std::size_t place = begin(type);
        append(value, size);
        end(place);
    }
    void add(std::uint16_t type, const std::string &text) { add(type, text.c_str(), text.size() + 1); }
    void add(std::uint16_t type, std::uint32_t number) { add(type, &number, sizeof number); }

    std::size_t begin(std::uint16_t type)
    {
        const std::size_t place = bytes_.size();
        const rtattr head{0, type};
        append(&head, sizeof head);
        return place;
    }
    void end(std::size_t place)
    {
        const auto length = static_cast<std::uint16_t>(bytes_.size() - place);
        std::memcpy(bytes_.data() + place, &length, sizeof length);
        bytes_.resize((bytes_.size() + 3) & ~std::size_t{3});
    }
    // Of a request in the request, as the far end of a link is described.
    template<typename Body>
    void body(const Body &value)
    {
        append(&value, sizeof value);
    }

    // 0, or the error number.
    int ask()
    {
        const auto length = static_cast<std::uint32_t>(bytes_.size());
        std::memcpy(bytes_.data(), &length, sizeof length);
        const Descriptor socket{::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE)};
        if (!socket || ::send(socket.get(), bytes_.data(), bytes_.size(), 0) < 0) {
            return errno;
        }
        struct {
            nlmsghdr head;
            nlmsgerr error;
            char rest[1024];
        } reply{};
        const ssize_t got = ::recv(socket.get(), &reply, sizeof reply, 0);
        if (got < 0) {
            return errno;
        }
        const bool answer =
            got >= static_cast<ssize_t>(sizeof reply.head + sizeof reply.error) && reply.head.nlmsg_type == NLMSG_ERROR;
        return answer ? -reply.error.error : EPROTO;
    }

  private:
    void append(const void *value, std::size_t size)
    {
        const auto *const first = static_cast<const std::uint8_t *>(value);
        bytes_.insert(bytes_.end(), first, first + size);
    }

    std::vector<std::uint8_t> bytes_;
};

void require(NetlinkRequest &request, std::string_view what, std::string_view object)
{
    if (const int error = request.ask(); error != 0) {
        errno = error;
        throw refusal(what, object, error == EOPNOTSUPP ? "this kernel has no such interfaces" : std::string_view{});
    }
}

unsigned index_of(const std::string &interface)
{
    return ::if_nametoindex(interface.c_str());
}

constexpr int create = NLM_F_CREATE | NLM_F_EXCL;

ifinfomsg that_is_up()
{
    ifinfomsg info{};
    info.ifi_flags = IFF_UP;
    info.ifi_change = IFF_UP;
    return info;
}

} // namespace

void make_bridge(const std::string &name, const Mac &mac)
{
    NetlinkRequest request{RTM_NEWLINK, create, that_is_up()};
    request.add(IFLA_IFNAME, name);
    request.add(IFLA_ADDRESS, mac.data(), mac.size());
    const std::size_t kind = request.begin(IFLA_LINKINFO);
    request.add(IFLA_INFO_KIND, std::string{"bridge"});
    request.end(kind);
    require(request, "make bridge", name);
}

void join_to_bridge(const VirtualLink &link, pid_t pid)
{
    if (const unsigned old = index_of(link.port); old != 0) {
        ifinfomsg which{};
        which.ifi_index = static_cast<int>(old);
        (void)NetlinkRequest{RTM_DELLINK, 0, which}.ask();
    }
    NetlinkRequest request{RTM_NEWLINK, create, that_is_up()};
    request.add(IFLA_IFNAME, link.port);
    request.add(IFLA_MASTER, index_of(link.bridge));
    const std::size_t kind = request.begin(IFLA_LINKINFO);
    request.add(IFLA_INFO_KIND, std::string{"veth"});
    const std::size_t data = request.begin(IFLA_INFO_DATA);
    const std::size_t far_end = request.begin(VETH_INFO_PEER);
    request.body(ifinfomsg{});
    request.add(IFLA_IFNAME, link.name);
    request.add(IFLA_ADDRESS, link.mac.data(), link.mac.size());
    request.add(IFLA_NET_NS_PID, static_cast<std::uint32_t>(pid));
    request.end(far_end);
    request.end(data);
    request.end(kind);
    require(request, "make virtual link", link.port);
}

void add_address(const std::string &interface, const std::string &address)
{
    const std::size_t slash = address.find('/');
    const std::string host = address.substr(0, slash);
    ifaddrmsg about{};
    about.ifa_index = index_of(interface);
    about.ifa_flags = IFA_F_NODAD;
    about.ifa_family = host.find(':') == std::string::npos ? AF_INET : AF_INET6;
    (void)std::from_chars(address.data() + slash + 1, address.data() + address.size(), about.ifa_prefixlen);
    in6_addr bytes{};
    (void)::inet_pton(about.ifa_family, host.c_str(), &bytes);
    NetlinkRequest request{RTM_NEWADDR, create, about};
    request.add(IFA_LOCAL, &bytes, about.ifa_family == AF_INET ? sizeof(in_addr) : sizeof bytes);
    require(request, "give " + interface + " the address", address);
}

void bring_up(const std::string &interface)
{
    const std::string settings = "/proc/sys/net/ipv6/conf/" + interface + "/";
    write_kernel_file((settings + "disable_ipv6").c_str(), "0");
    write_kernel_file((settings + "accept_dad").c_str(), "0");
    write_kernel_file((settings + "addr_gen_mode").c_str(), "1"); // none: the kernel's own would come when it likes
    ifinfomsg which = that_is_up();
    which.ifi_index = static_cast<int>(index_of(interface));
    NetlinkRequest request{RTM_NEWLINK, 0, which};
    require(request, "bring up", interface);
}

} // namespace switchlab
