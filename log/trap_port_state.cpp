// SPDX-License-Identifier: Apache-2.0
// Traps of a port that say more than its number.
#include "log/trap_enable.h"
#include "log/trap_queue.h"

#include "core/status_region.h"

#include <switchcfg/equip.h>
#include <switchcfg/vxlog.h>

namespace {

using namespace switchcfg;

#define INTERFACES_TABLE ".1.3.6.1.2.1.2.2.1"

// The agent keeps no link state of its own, so these must never fail their caller: the chip daemon is in its link scan.
int send_link(int id, std::uint8_t port_byte, int unit, int port, const trap_link *link) noexcept
{
    const std::optional<std::uint32_t> record = port_record(unit, port);
    if (!record || !trap_enabled(id, unit, port, port_byte) ||
        load(running_config, config_layout::trap_link_enable, *record / 52, *record % 52) == 0) {
        return 0;
    }
    const bool disabled = load(running_config, config_layout::port_disabled, *record / 52, *record % 52) != 0;
    const bool up = link != nullptr && link->state == 1 && link->link != 0;
    const std::int32_t number = interface_number(unit, port);
    TrapText text;
    text.oid(INTERFACES_TABLE ".1", number).integer(number);
    text.oid(INTERFACES_TABLE ".7", number).integer(disabled ? 2 : 1);
    text.common();
    text.oid(INTERFACES_TABLE ".8", number).integer(up ? 1 : 2);
    (void)queue_trap(id, text);
    return 0;
}

int send_loopback(int id, std::uint8_t port_byte, int unit, int port) noexcept
{
    if (!trap_enabled(id, unit, port, port_byte)) {
        return 0;
    }
    return queue_trap(id, TrapText{}.port_number(interface_number(unit, port)));
}

int send_storm(int id, std::uint8_t port_byte, int unit, int port, int first_scalar, int rate, int exceeded) noexcept
{
    if (!trap_enabled(id, unit, port, port_byte)) {
        return 0;
    }
    const std::int32_t number = interface_number(unit, port);
    TrapText text;
    text.common().oid(INTERFACES_TABLE ".1", number).integer(number);
    text.scalar(first_scalar).integer(exceeded != 0 ? 2 : 1);
    text.scalar(first_scalar + 1).integer(rate);
    return queue_trap(id, text);
}

int send_bpdu_protect(int id, int port) noexcept
{
    if (!trap_enabled(id)) {
        return 0;
    }
    return queue_trap(id, TrapText{}.port_number(from_one(port)).common());
}

} // namespace

int send_trap_linkUp(int unit, int port, const struct trap_link *link) noexcept
{
    return send_link(3, 1, unit, port, link);
}

int send_trap_linkDown(int unit, int port, const struct trap_link *link) noexcept
{
    return send_link(2, 0, unit, port, link);
}

int send_trap_sfp_changed(int port_number, int present) noexcept
{
    constexpr std::uint8_t port_byte = 2;
    const int unit = port_number / 64;
    const auto port = static_cast<int>(std::int64_t{port_number} - std::int64_t{64} * unit - 1);
    const bool enabled = port_number >= 512 && port_number <= 639 ? channel_trap_enabled(10, port_number, port_byte)
                                                                  : trap_enabled(10, unit, port, port_byte);
    if (!enabled) {
        return 0;
    }
    TrapText text;
    text.port_number(port_number).common();
    text.oid(SWITCHCFG_TRAP_SUBTREE ".14.2.5.0", port_number).integer(present != 0 ? 2 : 1);
    return queue_trap(10, text);
}

int send_trap_loopback_detected(int unit, int port, int disable) noexcept
{
    vxlog(4, "Loopback detected on port %d/%d, %s", from_one(unit), from_one(port),
        disable != 0 ? "disabling" : "blocking");
    return send_loopback(19, 3, unit, port);
}

int send_trap_loopback_no_more_detected(int unit, int port, int disable) noexcept
{
    vxlog(4, "Loopback no more detected on port %d/%d, %s", from_one(unit), from_one(port),
        disable != 0 ? "enabling" : "unblocking");
    return send_loopback(20, 4, unit, port);
}

int send_trap_lldp_remote_changed(int unit, int port) noexcept
{
    constexpr int management_port = -1;
    if (port == management_port) {
        vxlog(5, "LLDP change in list of neighbors on management port");
    } else {
        vxlog(5, "LLDP change in list of neighbors on port %d/%d", from_one(unit), from_one(port));
    }
    if (!trap_enabled(27)) {
        return 0;
    }
    return queue_trap(27, TrapText{}.port_number(interface_number(unit, port)).common());
}

int send_trap_storm_control_broadcast(int unit, int port, int rate, int exceeded) noexcept
{
    return send_storm(71, 36, unit, port, 35, rate, exceeded);
}

int send_trap_storm_control_multicast(int unit, int port, int rate, int exceeded) noexcept
{
    return send_storm(72, 37, unit, port, 37, rate, exceeded);
}

int send_trap_bpdu_protect_limit_reached(int port) noexcept
{
    return send_bpdu_protect(73, port);
}

int send_trap_bpdu_protect_timer_expired(int port) noexcept
{
    return send_bpdu_protect(74, port);
}

int send_trap_evc_status_notification(int unit, int port, const char *name, int status) noexcept
{
    if (unit < 0 || unit > 7 || status_base() == nullptr ||
        load(status_base(), status_layout::unit_present, unit) == 0 || port < 0 ||
        port >= cfg_equip_get_user_eth_ports(static_cast<std::uint32_t>(unit))) {
        return -3;
    }
    if (name == nullptr || *name == '\0') {
        return -7;
    }
    if (!trap_enabled(94)) {
        return 0;
    }
    TrapText text;
    text.common().port_number(interface_number(unit, port)).scalar(56).string(name).scalar(57).integer(status);
    return text.cut() ? -32 : queue_trap(94, text);
}
