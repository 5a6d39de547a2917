// SPDX-License-Identifier: Apache-2.0
// Traps of protocols and tables.
#include "log/trap_enable.h"
#include "log/trap_queue.h"

#include <switchcfg/vxlog.h>

namespace {

using namespace switchcfg;

// These two groups are written without the dot ahead, as their receivers have always had them.
#define RMON_ALARM "1.3.6.1.2.1.16.3.1.1"
#define VRRP "1.3.6.1.2.1.68.1"

#define LLDP_STATISTICS ".1.0.8802.1.1.2.1.2"

const char *name_or(const char *name, const char *other) noexcept
{
    return name == nullptr || *name == '\0' ? other : name;
}

int send_ring(
    int id, int number_scalar, int name_scalar, int state_scalar, int number, int state, const char *name) noexcept
{
    if (!trap_enabled(id)) {
        return 0;
    }
    TrapText text;
    text.common().scalar(number_scalar).integer(number);
    text.scalar(name_scalar).string(name_or(name, "(unnamed)"));
    return queue_trap(id, text.scalar(state_scalar).integer(state));
}

int send_group(int id, int group) noexcept
{
    return trap_enabled(id) ? queue_trap(id, TrapText{}.common().scalar(44).integer(group)) : 0;
}

} // namespace

int send_trap_mac_move_detected(const uint8_t *mac, ...) noexcept
{
    return trap_enabled(17) ? queue_trap(17, TrapText{}.scalar(18).mac(mac)) : 0;
}

int send_trap_duplicated_ip(int kind, const char *address, const uint8_t *mac) noexcept
{
    if (!trap_enabled(18)) {
        return 0;
    }
    return queue_trap(18, TrapText{}.scalar(7).integer(kind).scalar(8).string(address).scalar(9).mac(mac));
}

int send_trap_rmon_alarm(
    int rising, int threshold, int value, int sample_type, const char *variable, int index) noexcept
{
    const int id = rising != 0 ? 28 : 29;
    if (!trap_enabled(id)) {
        return 0;
    }
    TrapText text;
    text.oid(RMON_ALARM, rising != 0 ? 7 : 8, index).integer(threshold);
    text.oid(RMON_ALARM ".5", index).integer(value);
    text.oid(RMON_ALARM ".4", index).integer(sample_type);
    text.oid(RMON_ALARM ".3", index).object(variable);
    text.oid(RMON_ALARM ".1", index).integer(index);
    return queue_trap(id, text);
}

int send_trap_eaps_status_change(int domain, int state, const char *name) noexcept
{
    return send_ring(30, 11, 10, 12, domain, state, name);
}

int send_trap_erps_status_change(int ring, int state, const char *name) noexcept
{
    return send_ring(78, 49, 48, 50, ring, state, name);
}

int send_trap_cfm_fault_notification(const char *text1, const char *text2, int first, int second, int third) noexcept
{
    if (text1 == nullptr || *text1 == '\0' || text2 == nullptr || *text2 == '\0') {
        return -7;
    }
    if (second < 1 || second > 4094) {
        return -13;
    }
    if (!trap_enabled(43)) {
        return 0;
    }
    TrapText text;
    text.common().scalar(51).string_and_blank(text1).scalar(52).string(text2);
    text.scalar(53).integer(first).scalar(54).integer(second).scalar(55).integer(third);
    return text.cut() ? -32 : queue_trap(43, text);
}

int send_trap_ldp(int a, int b, const char *address) noexcept
{
    if (!trap_enabled(75)) {
        return 0;
    }
    return queue_trap(75, TrapText{}.common().scalar(39).integer(b).scalar(40).integer(a).scalar(62).address(address));
}

int send_trap_rsvp(int a, int b) noexcept
{
    return trap_enabled(76) ? queue_trap(76, TrapText{}.common().scalar(41).integer(b).scalar(42).integer(a)) : 0;
}

int send_trap_lldp_remote_changed_global(uint32_t inserts, uint32_t deletes, uint32_t drops, uint32_t ageouts) noexcept
{
    vxlog(5, "Global LLDP change in list of neighbors");
    if (!trap_enabled(91)) {
        return 0;
    }
    TrapText text;
    text.oid(LLDP_STATISTICS ".2").unsigned_integer(inserts);
    text.oid(LLDP_STATISTICS ".3").unsigned_integer(deletes);
    text.oid(LLDP_STATISTICS ".4").unsigned_integer(drops);
    text.oid(LLDP_STATISTICS ".5").unsigned_integer(ageouts);
    return queue_trap(91, text);
}

int send_trap_lldp_med_remote_changed_global(int a, const char *name, int b) noexcept
{
    vxlog(5, "Global LLDP-MED change in list of neighbors");
    if (!trap_enabled(98)) {
        return 0;
    }
    TrapText text;
    text.oid(".1.0.8802.1.1.2.1.4.1.1.4").integer(a);
    text.oid(".1.0.8802.1.1.2.1.4.1.1.5").string(name_or(name, "(unknown)"));
    text.oid(".1.0.8802.1.1.2.1.5.4795.1.3.1.1.3").integer(b);
    return queue_trap(98, text);
}

int send_trap_lst_link_down(int group) noexcept
{
    return send_group(130, group);
}

int send_trap_lst_link_up(int group) noexcept
{
    return send_group(131, group);
}

int send_trap_vrrp_new_master(int ifindex, int vrid, const char *address) noexcept
{
    return trap_enabled(134) ? queue_trap(134, TrapText{}.oid(VRRP ".3.1.7", ifindex, vrid).address(address)) : 0;
}

int send_trap_vrrp_auth_failure(const char *address, int error_type) noexcept
{
    if (!trap_enabled(135)) {
        return 0;
    }
    return queue_trap(135, TrapText{}.oid(VRRP ".5.0").address(address).oid(VRRP ".6.0").integer(error_type));
}
