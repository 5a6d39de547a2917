// SPDX-License-Identifier: Apache-2.0
// The figures of a unit: which monitor has them, which columns are shown, and what stands above them.
#include <switchcfg/cpumon.h>

#include "core/status_region.h"
#include "equip/record.h"

#include <arpa/inet.h>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <iterator>
#include <span>
#include <switchcfg/equip.h>
#include <switchcfg/pager.h>
#include <switchcfg/startup.h>
#include <switchcfg/text.h>

using namespace switchcfg;

namespace {

constexpr int failed = -1;
constexpr int invalid_unit = -3;
constexpr int no_standby = -149;
constexpr int local_unit = 0;

// Column identifiers as the monitors number them.
constexpr std::uint32_t usage_columns[] = {9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21};
constexpr std::uint32_t usage_summary[] = {2, 3, 4, 14, 10};
constexpr std::uint32_t memory_columns[] = {1, 2, 3, 4};
constexpr std::uint32_t memory_summary[] = {2, 1, 3, 6, 7};

struct Columns {
    std::span<const std::uint32_t> summary;
    std::span<const std::uint32_t> main;
    std::uint32_t mode;

    std::uint32_t summary_count() const noexcept { return static_cast<std::uint32_t>(summary.size()); }
    std::uint32_t main_count() const noexcept { return static_cast<std::uint32_t>(main.size()); }
};

constexpr Columns usage{{}, usage_columns, CPUMON_NO_SUMMARY};
constexpr Columns usage_detail{usage_summary, usage_columns, CPUMON_PROCESSOR_SUMMARY};
constexpr Columns memory{{}, memory_columns, CPUMON_NO_SUMMARY};
constexpr Columns memory_detail{memory_summary, memory_columns, CPUMON_MEMORY_SUMMARY};

enum class Board { own, other };

// Of the two boards of a unit, for a unit that is there. With stacking ports a unit has one.
int choose(int unit, Board board, cpumon_target &target) noexcept
{
    const std::uint8_t *const region = status_base();
    char other[INET6_ADDRSTRLEN];
    int interface = 0;
    const auto number = static_cast<std::uint32_t>(unit);
    if (region == nullptr || cfg_equip_get_unit_ipv6_addr(number, &interface, other, sizeof other) == nullptr) {
        return failed;
    }
    const char *address = other;
    if (board == Board::own && stacking_support() == 0) {
        address = cfg_equip_get_mgmt_ipv6_address(number, load(region, status_layout::mpu_slot) != 0 ? 1 : 0);
    }
    target = {};
    target.scope_id = static_cast<std::uint32_t>(interface);
    target.port = CPUMON_PORT;
    return ::inet_pton(AF_INET6, address, target.address) == 1 ? 0 : failed;
}

int check(int unit) noexcept
{
    return unit >= 0 && unit_is_valid(static_cast<std::uint32_t>(unit)) &&
                   unit_is_present(static_cast<std::uint32_t>(unit))
               ? 0
               : invalid_unit;
}

int choose_local(cpumon_target &target) noexcept
{
    return choose(local_unit, Board::own, target);
}

int choose_unit(int unit, cpumon_target &target) noexcept
{
    const int refused = check(unit);
    return refused != 0 ? refused : choose(unit, Board::other, target);
}

int choose_standby(cpumon_target &target) noexcept
{
    return stacking_support() != 0 ? no_standby : choose(local_unit, Board::other, target);
}

void print_date() noexcept
{
    updateTZ();
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    char date[128];
    if (::localtime_r(&now, &local) != nullptr && strftime_safe(date, sizeof date, "Date : %c\n\n", &local) > 0) {
        (void)pprintf("%s", date);
    }
}

int print_table(const cpumon_target &target, const Columns &columns) noexcept
{
    print_date();
    return cpumon_print_table(&target, columns.summary.data(), columns.summary_count(), columns.main.data(),
        columns.main_count(), columns.mode);
}

int table_local(const char *heading, const Columns &columns) noexcept
{
    cpumon_target target;
    if (const int refused = choose_local(target); refused != 0) {
        return refused;
    }
    (void)pprintf("\n%s of local unit:\n\n", heading);
    return print_table(target, columns);
}

int table_unit(const char *heading, int unit, const Columns &columns) noexcept
{
    cpumon_target target;
    if (const int refused = choose_unit(unit, target); refused != 0) {
        return refused;
    }
    (void)pprintf("\n%s of unit %d:\n\n", heading, unit + 1);
    return print_table(target, columns);
}

int table_standby(const char *heading, const Columns &columns) noexcept
{
    cpumon_target target;
    if (const int refused = choose_standby(target); refused != 0) {
        return refused;
    }
    (void)pprintf("\n%s of standby MPU:\n\n", heading);
    return print_table(target, columns);
}

int table_html(std::FILE *stream, int unit, const Columns &columns) noexcept
{
    cpumon_target target;
    if (const int refused = cfg_cpumon_get_target(unit, 0, &target); refused != 0) {
        return refused;
    }
    return cpumon_print_table_html(stream, &target, columns.summary.data(), columns.summary_count(),
        columns.main.data(), columns.main_count(), columns.mode);
}

constexpr char usage_heading[] = "Processor Utilization Information";
constexpr char usage_detail_heading[] = "Global Processor Utilization Information";
constexpr char memory_heading[] = "Processor Memory Information";
constexpr char memory_detail_heading[] = "Global Processor Memory Information";

} // namespace

int cfg_cpumon_get_target(int unit, int standby, cpumon_target *target_out) noexcept
{
    if (target_out == nullptr) {
        return failed;
    }
    if (const int refused = check(unit); refused != 0) {
        return refused;
    }
    if (unit != local_unit) {
        return choose(unit, Board::other, *target_out);
    }
    return standby != 0 ? choose_standby(*target_out) : choose_local(*target_out);
}

int cfg_cpumon_table_cpu_usage_local() noexcept
{
    return table_local(usage_heading, usage);
}

int cfg_cpumon_table_cpu_usage_unit(int unit) noexcept
{
    return table_unit(usage_heading, unit, usage);
}

int cfg_cpumon_table_cpu_usage_standby() noexcept
{
    return table_standby(usage_heading, usage);
}

int cfg_cpumon_table_cpu_usage_detail_local() noexcept
{
    return table_local(usage_detail_heading, usage_detail);
}

int cfg_cpumon_table_cpu_usage_detail_unit(int unit) noexcept
{
    return table_unit(usage_detail_heading, unit, usage_detail);
}

int cfg_cpumon_table_cpu_usage_detail_standby() noexcept
{
    return table_standby(usage_detail_heading, usage_detail);
}

int cfg_cpumon_table_cpu_memory_local() noexcept
{
    return table_local(memory_heading, memory);
}

int cfg_cpumon_table_cpu_memory_unit(int unit) noexcept
{
    return table_unit(memory_heading, unit, memory);
}

int cfg_cpumon_table_cpu_memory_standby() noexcept
{
    return table_standby(memory_heading, memory);
}

int cfg_cpumon_table_cpu_memory_detail_local() noexcept
{
    return table_local(memory_detail_heading, memory_detail);
}

int cfg_cpumon_table_cpu_memory_detail_unit(int unit) noexcept
{
    return table_unit(memory_detail_heading, unit, memory_detail);
}

int cfg_cpumon_table_cpu_memory_detail_standby() noexcept
{
    return table_standby(memory_detail_heading, memory_detail);
}

int cfg_cpumon_get_cpu_table_html(std::FILE *stream, int unit) noexcept
{
    return table_html(stream, unit, usage_detail);
}

int cfg_cpumon_get_mem_table_html(std::FILE *stream, int unit) noexcept
{
    return table_html(stream, unit, memory_detail);
}

int cfg_cpumon_get_cpu_info(int unit, int standby, std::uint32_t *out) noexcept
{
    cpumon_target target;
    const int refused = cfg_cpumon_get_target(unit, standby, &target);
    return refused != 0 ? refused : cpumon_get_cpu_info(&target, out);
}

int cfg_cpumon_get_cpu_mem_info(int unit, int standby, std::uint32_t out_pair[2]) noexcept
{
    cpumon_target target;
    const int refused = cfg_cpumon_get_target(unit, standby, &target);
    return refused != 0 ? refused : cpumon_get_mem_info(&target, out_pair);
}

int cfg_cpumon_get_status_xml(std::FILE *stream) noexcept
{
    cpumon_target target;
    const int refused = choose_local(target);
    return refused != 0 ? refused : cpumon_print_old_xml(stream, &target);
}

int cfg_cpumon_get_translated_name(std::uint32_t process_id, char name_out[CPUMON_NAME_SIZE]) noexcept
{
    cpumon_target target;
    if (const int refused = choose_local(target); refused != 0) {
        return refused;
    }
    cpumon_process_name process{process_id, {}};
    const int result = cpumon_get_translated_name(&target, &process);
    if (result == 0 && name_out != nullptr) {
        std::memcpy(name_out, process.name, sizeof process.name);
    }
    return result;
}
