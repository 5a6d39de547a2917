// SPDX-License-Identifier: Apache-2.0
// Traps of the switch as a whole: those without arguments, one row each, its configuration, its users.
#include "log/trap_enable.h"
#include "log/trap_queue.h"

#include <switchcfg/vxlog.h>

namespace {

using namespace switchcfg;

struct PlainTrap {
    std::uint8_t id;
    const char *line; // logged as a warning
};

// clang-format off
constexpr PlainTrap config_change    {11, nullptr};
constexpr PlainTrap high_cpu         {38, nullptr};
constexpr PlainTrap high_cpu_no_more {39, nullptr};
constexpr PlainTrap route_table_full {49, "Unable to add a route to hardware: Routing table is full. Please check memory configuration."};
constexpr PlainTrap egress_table_full{50, "The amount of resources to create hosts or/and MPLS actions is depleted."};
constexpr PlainTrap core_dump        {93, nullptr};
constexpr PlainTrap host_table_full  {97, "Unable to add a host to hardware: Host table is full. Please check memory configuration."};
// clang-format on

int send(const PlainTrap &trap) noexcept
{
    if (trap.line != nullptr) {
        vxlog(4, "%s", trap.line);
    }
    if (!trap_enabled(trap.id)) {
        return 0;
    }
    return queue_trap(trap.id, TrapText{}.common());
}

int send_memory_usage(int id, int usage) noexcept
{
    return trap_enabled(id) ? queue_trap(id, TrapText{}.common().scalar(19).integer(usage)) : 0;
}

int send_login(int id, const char *user) noexcept
{
    return trap_enabled(id) ? queue_trap(id, TrapText{}.common().scalar(3).string(user)) : 0;
}

const char *shown(const char *text) noexcept
{
    return text == nullptr ? "(null)" : text;
}

} // namespace

int send_trap_cold_start() noexcept
{
    if (!trap_enabled(TRAP_COLD_START)) {
        return 0;
    }
    return queue_trap(TRAP_COLD_START, TrapText{}.oid(".1.3.6.1.6.3.1.1.4.3.0").object(SWITCHCFG_TRAP_DEVICE));
}

// Without the binding of a cold start: receivers know a warm start by its bare notification.
int send_trap_warm_start() noexcept
{
    return trap_enabled(TRAP_WARM_START) ? queue_trap(TRAP_WARM_START, TrapText{}) : 0;
}

int send_trap_config_change() noexcept
{
    return send(config_change);
}

int send_trap_core_dump() noexcept
{
    return send(core_dump);
}

int send_trap_high_cpu_usage_detected() noexcept
{
    return send(high_cpu);
}

int send_trap_high_cpu_usage_no_more_detected() noexcept
{
    return send(high_cpu_no_more);
}

int send_trap_l3_route_table_full() noexcept
{
    return send(route_table_full);
}

int send_trap_egress_table_full() noexcept
{
    return send(egress_table_full);
}

int send_trap_l3_host_table_full() noexcept
{
    return send(host_table_full);
}

int send_trap_high_memory_usage_detected(int usage) noexcept
{
    return send_memory_usage(40, usage);
}

int send_trap_high_memory_usage_no_more_detected(int usage) noexcept
{
    return send_memory_usage(41, usage);
}

int send_trap_snmp_authentication_fail() noexcept
{
    vxlog(4, "SNMP authentication failure");
    return trap_enabled(4) ? queue_trap(4, TrapText{}) : 0;
}

int send_trap_login_failed(const char *user, const char *method) noexcept
{
    vxlog(4, "User %s authentication was denied by %s", shown(user), shown(method));
    return send_login(5, user);
}

int send_trap_login_success(const char *user, const char *method) noexcept
{
    vxlog(5, "User %s authenticated by %s", shown(user), method == nullptr ? "public-key" : method);
    return send_login(6, user);
}

int send_trap_ip_illegal(int service_port, const char *address) noexcept
{
    if (!trap_enabled(9)) {
        return 0;
    }
    struct {
        std::uint32_t port;
        int code;
    } const services[] = {
        {23, 3},
        {load(running_config, config_layout::service_port, 0), 1},
        {load(running_config, config_layout::service_port, 1), 1},
        {161, 2},
        {22, 4},
    };
    int service = service_port;
    for (const auto &known : services) {
        if (static_cast<std::uint32_t>(service_port) == known.port) {
            service = known.code;
            break;
        }
    }
    return queue_trap(9, TrapText{}.common().scalar(1).integer(service).scalar(2).string(address));
}

int send_trap_config_saved(int what, const char *action, const char *user) noexcept
{
    vxlog(5, "%s by user %s.", shown(action), shown(user));
    if (trap_enabled(12)) {
        (void)queue_trap(
            12, TrapText{}.common().scalar(4).integer(from_one(what))); // the configuration is saved anyway
    }
    return 0;
}

int send_trap_system_warnings_units(uint32_t mask) noexcept
{
    return trap_enabled(132) ? queue_trap(132, TrapText{}.common().scalar(60).unsigned_as_integer(mask)) : 0;
}
