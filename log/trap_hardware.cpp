// SPDX-License-Identifier: Apache-2.0
// Traps of boards, fans, supplies and fuses. Units and slots are sent counted from 1, the parts of a unit as they come.
#include "log/trap_enable.h"
#include "log/trap_queue.h"

#include "core/status_region.h"
#include "equip/record.h"

#include <switchcfg/vxlog.h>

namespace {

using namespace switchcfg;

#define UNITS SWITCHCFG_TRAP_SUBTREE ".1.2.1"
#define SUPPLIES SWITCHCFG_TRAP_SUBTREE ".1.4.1"
#define FANS SWITCHCFG_TRAP_SUBTREE ".1.5.1"
#define ALARMS SWITCHCFG_TRAP_SUBTREE ".1.6.1"
#define PROCESSORS SWITCHCFG_TRAP_SUBTREE ".1.14.1"

unsigned long long identifier(std::uint32_t high, std::uint32_t low) noexcept
{
    return static_cast<unsigned long long>(high) << 32 | low;
}

const char *shown(const char *text) noexcept
{
    return text == nullptr ? "(null)" : text;
}

// Only the high half of the identifier: receivers key their units by this text.
int send_unit(int id, int unit, std::uint32_t id_high) noexcept
{
    if (!trap_enabled(id)) {
        return 0;
    }
    const std::int32_t number = from_one(unit);
    TrapText text;
    text.oid(UNITS ".1", number).integer(number);
    text.oid(UNITS ".8", number).string(static_cast<std::int32_t>(id_high));
    return queue_trap(id, text);
}

// Unit and number of a part of it, in the two first columns of the part's table.
TrapText &part(TrapText &text, const char *first, const char *second, int unit, int number) noexcept
{
    text.oid(first, from_one(unit), number).integer(from_one(unit));
    return text.oid(second, from_one(unit), number).integer(number);
}

int send_temperature(int id, int unit, int temperature) noexcept
{
    if (!trap_enabled(id)) {
        return 0;
    }
    return queue_trap(id, TrapText{}.oid(UNITS ".1").integer(from_one(unit)).common().scalar(13).integer(temperature));
}

int send_fuse(int id, int unit, int fuse, int ok) noexcept
{
    if (!trap_enabled(id)) {
        return 0;
    }
    TrapText text;
    text.oid(UNITS ".1").integer(from_one(unit)).scalar(14).integer(fuse).scalar(15).integer(ok != 0 ? 1 : 2);
    return queue_trap(id, text);
}

bool logically_removed(int unit) noexcept
{
    return status_base() != nullptr && unit >= 0 && static_cast<std::uint32_t>(unit) < status_layout::max_units &&
           load(status_base(), status_layout::unit_logically_removed, unit) != 0;
}

} // namespace

void send_log_stack_attach(int unit, uint32_t id_high, uint32_t id_low, const char *model) noexcept
{
    vxlog(3, "Unit %d: Ready (model %s, ID %llu)", from_one(unit), shown(model), identifier(id_high, id_low));
}

int send_trap_stack_attach(int unit, int /*reserved*/, uint32_t id_high, uint32_t id_low, const char *model) noexcept
{
    send_log_stack_attach(unit, id_high, id_low, model);
    return send_unit(7, unit, id_high);
}

int send_trap_stack_detach(int unit, int /*reserved*/, uint32_t id_high, uint32_t id_low, const char *model) noexcept
{
    const unsigned long long whole = identifier(id_high, id_low);
    if (stacking_support() == 2) {
        vxlog(3, "Unit %d: Removed (model %s, ID %llu)", from_one(unit), shown(model), whole);
    } else {
        vxlog(3, "Unit %d: %s Removed (model %s, ID %llu)", from_one(unit),
            logically_removed(unit) ? "Logically" : "Physically", shown(model), whole);
    }
    return send_unit(8, unit, id_high);
}

int send_trap_stack_unit_comm_fail_blocked(int unit, int /*reserved*/, uint32_t id_high, uint32_t /*id_low*/) noexcept
{
    return send_unit(133, unit, id_high);
}

int send_trap_standby_mpu_presence(int absent, int slot, uint32_t id_high, uint32_t id_low, int state) noexcept
{
    if (!trap_enabled(36)) {
        return 0;
    }
    const std::int32_t number = from_one(slot);
    TrapText text;
    text.oid(PROCESSORS ".1", number).integer(number);
    text.oid(PROCESSORS ".4", number).string(std::uint64_t{identifier(id_high, id_low)});
    text.oid(PROCESSORS ".5", number).integer(state);
    text.scalar(17).integer(absent != 0 ? 2 : 1);
    return queue_trap(36, text);
}

int send_trap_new_bootloader_version(int slot, const char *version) noexcept
{
    if (!trap_enabled(42)) {
        return 0;
    }
    vxlog(7, "Slot %d notified new bootloader version %s", from_one(slot), shown(version));
    return queue_trap(42, TrapText{}.oid(UNITS ".1").integer(from_one(slot)).scalar(20).string(version));
}

int send_trap_fan_fail(int unit, int fan, int state) noexcept
{
    if (!trap_enabled(13)) {
        return 0;
    }
    TrapText text;
    part(text, FANS ".1", FANS ".2", unit, fan).common();
    return queue_trap(13, text.oid(FANS ".3", from_one(unit), fan).integer(state));
}

int send_trap_power_change(int unit, int supply, int state) noexcept
{
    if (!trap_enabled(15)) {
        return 0;
    }
    TrapText text;
    part(text, SUPPLIES ".1", SUPPLIES ".2", unit, supply);
    return queue_trap(15, text.oid(SUPPLIES ".3", from_one(unit), supply).integer(state));
}

int send_trap_alarm_change(int unit, int alarm, int active) noexcept
{
    if (!trap_enabled(16)) {
        return 0;
    }
    TrapText text;
    part(text, ALARMS ".1", ALARMS ".2", unit, alarm);
    return queue_trap(16, text.oid(ALARMS ".3", from_one(unit), alarm).integer(active != 0 ? 2 : 1));
}

int send_trap_critical_temperature_detected(int unit, int temperature) noexcept
{
    return send_temperature(32, unit, temperature);
}

int send_trap_critical_temperature_no_more_detected(int unit, int temperature) noexcept
{
    return send_temperature(33, unit, temperature);
}

int send_trap_fuse_status_change(int unit, int fuse, int ok) noexcept
{
    return send_fuse(34, unit, fuse, ok);
}

int send_trap_fan_fuse_status_change(int unit, int fuse, int ok) noexcept
{
    return send_fuse(48, unit, fuse, ok);
}

int send_trap_fans_board_presence(int absent) noexcept
{
    return trap_enabled(35) ? queue_trap(35, TrapText{}.scalar(16).integer(absent != 0 ? 2 : 1)) : 0;
}
