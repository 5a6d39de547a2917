// SPDX-License-Identifier: Apache-2.0
// Traps that name a port and say nothing more: one row each.
#include "log/trap_enable.h"
#include "log/trap_queue.h"

#include <switchcfg/vxlog.h>

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace switchcfg {
namespace {

constexpr std::int16_t any_port = -1; // no flag by port

enum class With : std::uint8_t { port, port_and_common };

struct PortTrap {
    std::uint8_t id;
    std::int16_t port_byte; // of the port's record of flags
    With bindings;
    const char *line; // logged as a warning, with unit and port
};

// clang-format off
constexpr PortTrap port_traps[] = {
    {21, 5,        With::port_and_common, "Unidirectional link detected or link down on port %d/%d, blocking"},
    {22, 6,        With::port_and_common, "Unidirectional link recovered or link up on port %d/%d, unblocking"},
    {23, any_port, With::port_and_common, "OAM: critical event detected on port %d/%d, blocking"},
    {24, any_port, With::port_and_common, "OAM: critical event recovered on port %d/%d, unblocking"},
    {25, 7,        With::port,            "Link-Flap detected on port %d/%d, blocking"},
    {26, 8,        With::port,            "Link-Flap no more detected on port %d/%d, unblocking"},
    {31, any_port, With::port,            nullptr},
    {44, 10,       With::port_and_common, nullptr},
    {45, 11,       With::port_and_common, nullptr},
    {46, 12,       With::port_and_common, nullptr},
    {47, 13,       With::port_and_common, nullptr},
    {77, any_port, With::port_and_common, "OAM: Dying Gasp Flag received on port %d/%d"},
    {95, 39,       With::port,            nullptr},
    {96, 40,       With::port,            nullptr},
};
// clang-format on
static_assert(std::ranges::is_sorted(port_traps, std::ranges::less_equal{}, &PortTrap::id));

constexpr std::size_t row_of(int id)
{
    return static_cast<std::size_t>(std::ranges::find(port_traps, id, &PortTrap::id) - std::begin(port_traps));
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral" // the formats are in the table

int send(const PortTrap &trap, int unit, int port) noexcept
{
    if (trap.line != nullptr) {
        vxlog(4, trap.line, from_one(unit), from_one(port));
    }
    const bool wanted = trap.port_byte == any_port
                            ? trap_enabled(trap.id)
                            : trap_enabled(trap.id, unit, port, static_cast<std::uint8_t>(trap.port_byte));
    if (!wanted) {
        return 0;
    }
    TrapText text;
    text.port_number(interface_number(unit, port));
    if (trap.bindings == With::port_and_common) {
        text.common();
    }
    return queue_trap(trap.id, text);
}

#pragma GCC diagnostic pop

template<int Id>
int send(int unit, int port) noexcept
{
    constexpr std::size_t row = row_of(Id);
    static_assert(row < std::size(port_traps), "a sender without a row");
    return send(port_traps[row], unit, port);
}

} // namespace
} // namespace switchcfg

using switchcfg::send;

int send_trap_unidirectional_link_detected(int unit, int port) noexcept
{
    return send<21>(unit, port);
}

int send_trap_unidirectional_link_recovered(int unit, int port) noexcept
{
    return send<22>(unit, port);
}

int send_trap_critical_event_detected(int unit, int port) noexcept
{
    return send<23>(unit, port);
}

int send_trap_critical_event_recovered(int unit, int port) noexcept
{
    return send<24>(unit, port);
}

int send_trap_link_flap_detected(int unit, int port) noexcept
{
    return send<25>(unit, port);
}

int send_trap_link_flap_no_more_detected(int unit, int port) noexcept
{
    return send<26>(unit, port);
}

int send_trap_port_sec_violation(int unit, int port) noexcept
{
    return send<31>(unit, port);
}

int send_trap_remote_device_ready(int unit, int port) noexcept
{
    return send<44>(unit, port);
}

int send_trap_remote_device_lost(int unit, int port) noexcept
{
    return send<45>(unit, port);
}

int send_trap_remote_device_config_fail(int unit, int port) noexcept
{
    return send<46>(unit, port);
}

int send_trap_remote_device_config_forced(int unit, int port) noexcept
{
    return send<47>(unit, port);
}

int send_trap_dying_gasp_received(int unit, int port) noexcept
{
    return send<77>(unit, port);
}

int send_trap_poe_overcurrent(int unit, int port) noexcept
{
    return send<95>(unit, port);
}

int send_trap_poe_restricted(int unit, int port) noexcept
{
    return send<96>(unit, port);
}
