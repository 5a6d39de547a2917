// SPDX-License-Identifier: Apache-2.0
#include "lab/stackd/neighbours.h"

#include "lab/stackd/clock.h"
#include "util/byte_order.h"

#include <switchcfg/equip.h>

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <ifaddrs.h>
#include <net/if.h>
#include <netpacket/packet.h>
#include <optional>
#include <span>
#include <stdexcept>
#include <sys/socket.h>

namespace switchlab::stackd {
namespace {

using switchcfg::load_ordered;
using switchcfg::store_ordered;

constexpr std::uint16_t hello_port = 61100;
constexpr std::uint32_t hello_magic = 0x53574849;
constexpr std::size_t hello_size = 36;
constexpr std::uint64_t silence_cs = 150;
constexpr int most_units = 8;

using Hello = std::array<std::uint8_t, hello_size>;

Hello encode(const UnitFacts &facts)
{
    Hello hello{};
    const std::uint32_t words[] = {hello_magic, static_cast<std::uint32_t>(facts.unit),
        static_cast<std::uint32_t>(facts.model), static_cast<std::uint32_t>(facts.version),
        static_cast<std::uint32_t>(facts.generation >> 32), static_cast<std::uint32_t>(facts.generation)};
    for (std::size_t i = 0; i < std::size(words); ++i) {
        store_ordered<std::endian::big>(hello.data() + 4 * i, words[i]);
    }
    std::memcpy(hello.data() + 24, facts.mac.data(), facts.mac.size());
    return hello;
}

std::optional<UnitFacts> decode(std::span<const std::uint8_t> bytes)
{
    const auto word = [&](std::size_t i) {
        return load_ordered<std::endian::big, std::uint32_t>(bytes.data() + 4 * i);
    };
    if (bytes.size() != hello_size || word(0) != hello_magic || word(1) >= most_units || word(2) >= CFG_EQUIP_RECORDS ||
        word(2) == 0) {
        return std::nullopt;
    }
    UnitFacts facts;
    facts.unit = static_cast<int>(word(1));
    facts.model = static_cast<int>(word(2));
    facts.version = static_cast<int>(word(3));
    facts.generation = std::uint64_t{word(4)} << 32 | word(5);
    std::memcpy(facts.mac.data(), bytes.data() + 24, facts.mac.size());
    return facts;
}

// Everybody on the link.
sockaddr_in6 all_nodes(std::uint32_t scope)
{
    sockaddr_in6 address{};
    address.sin6_family = AF_INET6;
    address.sin6_port = htons(hello_port);
    address.sin6_scope_id = scope;
    (void)::inet_pton(AF_INET6, "ff02::1", &address.sin6_addr);
    return address;
}

std::runtime_error failure(const std::string &what)
{
    return std::runtime_error{what + ": " + std::strerror(errno)};
}

} // namespace

Neighbours::Neighbours(const std::string &interface)
    : socket_(::socket(AF_INET6, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0))
{
    find_interface(interface);
    sockaddr_in6 any{};
    any.sin6_family = AF_INET6;
    any.sin6_port = htons(hello_port);
    const int off = 0;
    const auto index = static_cast<int>(own_address_.sin6_scope_id);
    if (!socket_ || ::bind(socket_.get(), reinterpret_cast<const sockaddr *>(&any), sizeof any) != 0 ||
        ::setsockopt(socket_.get(), IPPROTO_IPV6, IPV6_MULTICAST_IF, &index, sizeof index) != 0 ||
        ::setsockopt(socket_.get(), IPPROTO_IPV6, IPV6_MULTICAST_LOOP, &off, sizeof off) != 0) {
        throw failure(interface);
    }
}

// Its link-local address and its MAC address.
void Neighbours::find_interface(const std::string &name)
{
    ifaddrs *first = nullptr;
    if (::getifaddrs(&first) != 0) {
        throw failure("getifaddrs");
    }
    bool found = false;
    for (const ifaddrs *entry = first; entry != nullptr; entry = entry->ifa_next) {
        if (entry->ifa_addr == nullptr || name != entry->ifa_name) {
            continue;
        }
        if (entry->ifa_addr->sa_family == AF_PACKET) {
            sockaddr_ll link{};
            std::memcpy(&link, entry->ifa_addr, sizeof link);
            std::memcpy(mac_.data(), link.sll_addr, mac_.size());
        } else if (entry->ifa_addr->sa_family == AF_INET6) {
            sockaddr_in6 address{};
            std::memcpy(&address, entry->ifa_addr, sizeof address);
            if (IN6_IS_ADDR_LINKLOCAL(&address.sin6_addr)) {
                own_address_ = address;
                found = true;
            }
        }
    }
    ::freeifaddrs(first);
    if (!found) {
        throw std::runtime_error{name + ": no such interface, or it has no link-local address"};
    }
}

void Neighbours::say(const UnitFacts &facts) const
{
    const Hello hello = encode(facts);
    const sockaddr_in6 everybody = all_nodes(own_address_.sin6_scope_id);
    (void)::sendto(
        socket_.get(), hello.data(), hello.size(), 0, reinterpret_cast<const sockaddr *>(&everybody), sizeof everybody);
}

void Neighbours::listen(int own_unit, const std::function<void(const UnitFacts &)> &joined)
{
    std::array<std::uint8_t, hello_size + 1> bytes{};
    sockaddr_in6 from{};
    socklen_t length = sizeof from;
    ssize_t got = 0;
    while ((got = ::recvfrom(
                socket_.get(), bytes.data(), bytes.size(), 0, reinterpret_cast<sockaddr *>(&from), &length)) >= 0) {
        const auto facts = decode(std::span{bytes}.first(static_cast<std::size_t>(got)));
        length = sizeof from;
        if (!facts || facts->unit == own_unit || from.sin6_scope_id != own_address_.sin6_scope_id) {
            continue;
        }
        const bool known = all_.contains(facts->unit) && all_[facts->unit].facts.mac == facts->mac;
        all_[facts->unit] = {*facts, from, now_cs()};
        if (!known) {
            joined(*facts);
        }
    }
}

void Neighbours::forget_silent(const std::function<void(const UnitFacts &)> &left)
{
    for (auto at = all_.begin(); at != all_.end();) {
        if (now_cs() - at->second.heard_at <= silence_cs) {
            ++at;
            continue;
        }
        const UnitFacts facts = at->second.facts;
        at = all_.erase(at);
        left(facts);
    }
}

} // namespace switchlab::stackd
