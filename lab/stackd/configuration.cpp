// SPDX-License-Identifier: Apache-2.0
#include "lab/stackd/configuration.h"

#include "lab/stackd/clock.h"

#include <switchcfg/config_region.h>
#include <switchcfg/locks.h>

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <string>
#include <sys/socket.h>

namespace switchlab::stackd {
namespace {

using switchcfg::Descriptor;

constexpr std::uint16_t configuration_port = 61101;
constexpr std::uint64_t retry_cs = 20;
constexpr int socket_kind = SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK;

const sockaddr *generic(const sockaddr_in6 &address)
{
    return reinterpret_cast<const sockaddr *>(&address);
}

sockaddr_in6 at_port(sockaddr_in6 address)
{
    address.sin6_port = htons(configuration_port);
    return address;
}

bool same_host(const sockaddr_in6 &one, const sockaddr_in6 &other)
{
    return IN6_ARE_ADDR_EQUAL(&one.sin6_addr, &other.sin6_addr);
}

std::uint8_t *bytes_of(void *region)
{
    return static_cast<std::uint8_t *>(region);
}

// Whoever writes the configuration holds this lock, so nothing is taken half-done. Nothing when it is not free.
class ConfigurationLock {
  public:
    ConfigurationLock() : held_(lock_try_write(cfg_lock_table[CFG_LOCK_CFG].fd) == 0) {}
    ~ConfigurationLock()
    {
        if (held_) {
            (void)lock_free(cfg_lock_table[CFG_LOCK_CFG].fd);
        }
    }
    ConfigurationLock(const ConfigurationLock &) = delete;
    ConfigurationLock &operator=(const ConfigurationLock &) = delete;
    explicit operator bool() const { return held_; }

  private:
    bool held_;
};

} // namespace

Configuration::Configuration(const sockaddr_in6 &own_address) : listener_(::socket(AF_INET6, socket_kind, 0))
{
    regions_.emplace_back(bytes_of(cfg_get_cfg()), CFG_REGION_SIZE, CFG_RUNNING_PATH);
    regions_.emplace_back(bytes_of(cfg_get_default_cfg()), CFG_REGION_SIZE, CFG_DEFAULT_PATH);
    const sockaddr_in6 address = at_port(own_address);
    const int on = 1;
    if (!listener_ || ::setsockopt(listener_.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0 ||
        ::bind(listener_.get(), generic(address), sizeof address) != 0 || ::listen(listener_.get(), 8) != 0) {
        throw std::runtime_error{"port " + std::to_string(configuration_port) + ": " + std::strerror(errno)};
    }
}

bool Configuration::in_step_with(const sockaddr_in6 &unit) const
{
    return in_step_ && master_ && master_->alive() && same_host(unit, *master_address_);
}

void Configuration::follow(const std::optional<sockaddr_in6> &master)
{
    const bool same =
        master.has_value() == master_address_.has_value() && (!master || same_host(*master, *master_address_));
    if (!same) {
        master_address_ = master;
        master_.reset();
        in_step_ = false;
        members_.clear(); // they find the new master themselves
    }
    if (!master_address_ || (master_ && master_->alive()) || now_cs() < next_try_) {
        return;
    }
    next_try_ = now_cs() + retry_cs;
    in_step_ = false;
    Descriptor socket{::socket(AF_INET6, socket_kind, 0)};
    const sockaddr_in6 address = at_port(*master_address_);
    if (socket && (::connect(socket.get(), generic(address), sizeof address) == 0 || errno == EINPROGRESS)) {
        master_.emplace(std::move(socket));
    }
}

std::uint64_t Configuration::look()
{
    const auto begin = std::chrono::steady_clock::now();
    const bool may_publish = !master_address_ || (master_ && master_->alive() && in_step_);
    for (std::uint32_t region = 0; may_publish && region < regions_.size(); ++region) {
        if (!regions_[region].changed()) {
            continue;
        }
        if (const ConfigurationLock lock; lock) {
            generation_ += master_address_ ? 0 : 1;
            regions_[region].take_changes([&](std::uint32_t offset, Bytes bytes) { publish(region, offset, bytes); });
        }
    }
    const auto took = std::chrono::steady_clock::now() - begin;
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(took).count());
}

// To the master, or as the master to all.
void Configuration::publish(std::uint32_t region, std::uint32_t offset, Bytes bytes)
{
    const Frame frame{Kind::change, region, offset, generation_, bytes};
    if (master_address_) {
        master_->send(frame);
    } else {
        std::ranges::for_each(members_, [&](Link &member) { member.send(frame); });
    }
}

void Configuration::send_snapshot(Link &member)
{
    for (std::uint32_t region = 0; region < regions_.size(); ++region) {
        member.send({Kind::snapshot_begins, region, 0, generation_, {}});
        regions_[region].visit_content([&](std::uint32_t offset, Bytes bytes) {
            member.send({Kind::change, region, offset, generation_, bytes});
        });
        member.send({Kind::snapshot_ends, region, 0, generation_, {}});
    }
}

void Configuration::admit_members()
{
    for (;;) {
        Descriptor socket{::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK)};
        if (!socket) {
            return;
        }
        if (!master_address_) { // who takes this unit for the master by mistake comes again elsewhere
            send_snapshot(members_.emplace_back(std::move(socket)));
        }
    }
}

bool Configuration::take_from_member(const Frame &frame)
{
    if (frame.kind != Kind::change || frame.region >= regions_.size() ||
        !regions_[frame.region].apply(frame.offset, frame.bytes)) {
        return false;
    }
    ++generation_;
    publish(frame.region, frame.offset, frame.bytes); // to its sender, too: all see one order
    return true;
}

bool Configuration::take_from_master(const Frame &frame)
{
    if (frame.region >= regions_.size()) {
        return false;
    }
    Replica &region = regions_[frame.region];
    generation_ = in_step_ ? frame.generation : generation_;
    switch (frame.kind) {
    case Kind::change:
        return region.apply(frame.offset, frame.bytes);
    case Kind::snapshot_begins:
        region.begin_snapshot();
        return true;
    case Kind::snapshot_ends:
        region.end_snapshot();
        if (frame.region + 1 == regions_.size()) {
            in_step_ = true;
            generation_ = frame.generation;
        }
        return true;
    }
    return false;
}

void Configuration::add_to_poll(std::vector<pollfd> &awaited) const
{
    awaited.push_back({listener_.get(), POLLIN, 0});
    const auto add = [&](const Link &link) {
        awaited.push_back({link.socket(), static_cast<short>(POLLIN | (link.has_more_to_say() ? POLLOUT : 0)), 0});
    };
    std::ranges::for_each(members_, add);
    if (master_ && master_->alive()) {
        add(*master_);
    }
}

void Configuration::serve()
{
    admit_members();
    for (Link &member : members_) {
        member.receive([this](const Frame &frame) { return take_from_member(frame); });
    }
    if (master_) {
        master_->receive([this](const Frame &frame) { return take_from_master(frame); });
        master_->flush();
    }
    std::ranges::for_each(members_, [](Link &member) { member.flush(); });
    members_.remove_if([](const Link &member) { return !member.alive(); });
}

} // namespace switchlab::stackd
