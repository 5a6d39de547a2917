// SPDX-License-Identifier: Apache-2.0
// Units and ports. arg1 is the unit, arg2 the port.
#include "lab/stand-ins/bcmd/chip.h"
#include "lab/stand-ins/bcmd/functions.h"

#include <algorithm>
#include <iterator>

namespace switchlab::bcmd {
namespace {

constexpr std::uint32_t speeds_mbps[] = {10, 100, 1000, 10000};
constexpr std::uint32_t smallest_frame_max = 1518;
constexpr std::uint32_t largest_frame_max = 9216;

std::int32_t unit_present(
    std::uint32_t arg1, std::uint32_t /*arg2*/, std::uint32_t /*arg3*/, std::uint32_t /*arg4*/, const void * /*input*/)
{
    const std::lock_guard hold{chip().use};
    return arg1 < chip().units() ? 1 : 0;
}

std::int32_t unit_ports(
    std::uint32_t arg1, std::uint32_t /*arg2*/, std::uint32_t /*arg3*/, std::uint32_t /*arg4*/, const void * /*input*/)
{
    const std::lock_guard hold{chip().use};
    return arg1 < chip().units() ? static_cast<std::int32_t>(Chip::ports_per_unit) : no_such_port;
}

std::int32_t unit_reset(
    std::uint32_t arg1, std::uint32_t /*arg2*/, std::uint32_t /*arg3*/, std::uint32_t /*arg4*/, const void * /*input*/)
{
    const std::lock_guard hold{chip().use};
    if (arg1 >= chip().units()) {
        return no_such_port;
    }
    chip().reset_unit(arg1);
    return 0;
}

// Calls `work` with the port, or gives no_such_port.
template<typename Work>
std::int32_t with_port(std::uint32_t unit, std::uint32_t number, Work &&work)
{
    const std::lock_guard hold{chip().use};
    Port *const port = chip().port(unit, number);
    return port != nullptr ? work(*port) : no_such_port;
}

std::int32_t state_get(std::uint32_t arg1, std::uint32_t arg2, std::uint32_t /*arg3*/, std::uint32_t /*arg4*/,
    const void * /*input*/, void ** /*output*/, std::uint32_t * /*output_length*/)
{
    return with_port(arg1, arg2, [](const Port &port) { return port.enabled ? 1 : 0; });
}

// arg3: 1 enables, 0 disables
std::int32_t state_set(std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3, std::uint32_t /*arg4*/,
    const void * /*input*/, void ** /*output*/, std::uint32_t * /*output_length*/)
{
    return with_port(arg1, arg2, [&](Port &port) {
        if (arg3 > 1) {
            return bad_parameter;
        }
        port.enable(arg3 == 1, Clock::now());
        return 0;
    });
}

std::int32_t counters_get(std::uint32_t arg1, std::uint32_t arg2, std::uint32_t /*arg3*/, std::uint32_t /*arg4*/,
    const void * /*input*/, void **output, std::uint32_t *output_length)
{
    return with_port(arg1, arg2, [&](const Port &port) {
        const Counters counters = port.counters(Clock::now());
        return hand_out(&counters, sizeof counters, output, output_length);
    });
}

std::int32_t counters_clear(std::uint32_t arg1, std::uint32_t arg2, std::uint32_t /*arg3*/, std::uint32_t /*arg4*/,
    const void * /*input*/, void ** /*output*/, std::uint32_t * /*output_length*/)
{
    return with_port(arg1, arg2, [](Port &port) {
        port.clear(Clock::now());
        return 0;
    });
}

std::int32_t speed_get(std::uint32_t arg1, std::uint32_t arg2, std::uint32_t /*arg3*/, std::uint32_t /*arg4*/,
    const void * /*input*/, void ** /*output*/, std::uint32_t * /*output_length*/)
{
    return with_port(arg1, arg2, [](const Port &port) { return static_cast<std::int32_t>(port.speed_mbps); });
}

// arg3: Mbit/s
std::int32_t speed_set(std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3, std::uint32_t /*arg4*/,
    const void * /*input*/, void ** /*output*/, std::uint32_t * /*output_length*/)
{
    return with_port(arg1, arg2, [&](Port &port) {
        if (std::ranges::find(speeds_mbps, arg3) == std::end(speeds_mbps)) {
            return bad_parameter;
        }
        port.speed_mbps = arg3;
        return 0;
    });
}

std::int32_t frame_max_get(std::uint32_t arg1, std::uint32_t arg2, std::uint32_t /*arg3*/, std::uint32_t /*arg4*/,
    const void * /*input*/, void ** /*output*/, std::uint32_t * /*output_length*/)
{
    return with_port(arg1, arg2, [](const Port &port) { return static_cast<std::int32_t>(port.frame_max); });
}

// arg3: bytes
std::int32_t frame_max_set(std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3, std::uint32_t /*arg4*/,
    const void * /*input*/, void ** /*output*/, std::uint32_t * /*output_length*/)
{
    return with_port(arg1, arg2, [&](Port &port) {
        if (arg3 < smallest_frame_max || arg3 > largest_frame_max) {
            return out_of_limits;
        }
        port.frame_max = arg3;
        return 0;
    });
}

} // namespace

void register_unit_functions(BcmdFunclistServer &server)
{
    server.registerLegacyCallback(BCMD_UNIT_PRESENT, unit_present);
    server.registerLegacyCallback(BCMD_UNIT_PORTS, unit_ports);
    server.registerLegacyCallback(BCMD_UNIT_RESET, unit_reset);
}

void register_port_functions(BcmdFunclistServer &server)
{
    server.registerLegacyCallback(BCMD_PORT_STATE_GET, state_get);
    server.registerLegacyCallback(BCMD_PORT_STATE_SET, state_set);
    server.registerLegacyCallback(BCMD_PORT_COUNTERS_GET, counters_get);
    server.registerLegacyCallback(BCMD_PORT_COUNTERS_CLEAR, counters_clear);
    server.registerLegacyCallback(BCMD_PORT_SPEED_GET, speed_get);
    server.registerLegacyCallback(BCMD_PORT_SPEED_SET, speed_set);
    server.registerLegacyCallback(BCMD_PORT_FRAME_MAX_GET, frame_max_get);
    server.registerLegacyCallback(BCMD_PORT_FRAME_MAX_SET, frame_max_set);
}

} // namespace switchlab::bcmd
