// SPDX-License-Identifier: Apache-2.0
// Tables and documents of a CPU monitor, printed.
#include <switchcfg/cpumon.h>

#include "features/cpumon_exchange.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <span>
#include <switchcfg/pager.h>

using namespace switchcfg::cpumon;

namespace {

struct Columns {
    std::span<const std::uint32_t> summary;
    std::span<const std::uint32_t> main;
    std::uint32_t mode;
};

std::span<const std::uint32_t> list_of(const std::uint32_t *list, std::uint32_t count) noexcept
{
    return list != nullptr ? std::span{list, count} : std::span<const std::uint32_t>{};
}

void put(std::span<const std::uint32_t> list, std::uint32_t *place) noexcept
{
    for (const std::uint32_t id : list) {
        *place++ = to_wire(id);
    }
}

// print_text(length, characters); print_message(text)
template<typename PrintText, typename PrintMessage>
int print_table(cpumon_request_type type, const cpumon_target *target, const Columns &columns, PrintText print_text,
    PrintMessage print_message) noexcept
{
    if (columns.summary.empty() && columns.main.empty()) {
        return 0;
    }
    if (columns.summary.size() > CPUMON_SUMMARY_COLUMNS || columns.main.size() > CPUMON_MAIN_COLUMNS) {
        return -1;
    }
    Exchange exchange{type};
    cpumon_request &record = exchange.record;
    if (!columns.summary.empty()) {
        put(columns.summary, record.summary_columns);
        record.summary_mode = to_wire(columns.mode);
    }
    put(columns.main, record.main_columns);
    if (exchange.run(target) != 0) {
        char message[sizeof record.message + 1] = {}; // the monitor's own may lack its end
        std::memcpy(message, record.message, sizeof record.message);
        if (message[0] != '\0') {
            print_message(message);
        }
        return -1;
    }
    print_text(exchange.length(), exchange.characters());
    return 0;
}

int print_document(cpumon_request_type type, std::FILE *stream, const cpumon_target *target) noexcept
{
    Exchange exchange{type};
    if (exchange.run(target) != 0) {
        return CPUMON_FAILED;
    }
    (void)pfprintf(stream, "%.*s\n", exchange.length(), exchange.characters());
    return 0;
}

} // namespace

int cpumon_print_table(const cpumon_target *target, const std::uint32_t *summary_list, std::uint32_t summary_count,
    const std::uint32_t *main_list, std::uint32_t main_count, std::uint32_t mode) noexcept
{
    const Columns columns{list_of(summary_list, summary_count), list_of(main_list, main_count), mode};
    return print_table(
        CPUMON_TABLE, target, columns,
        [](int length, const char *text) noexcept { (void)pprintf("%.*s\n", length, text); },
        [](const char *message) noexcept { (void)pprintf("%s\n", message); });
}

int cpumon_print_table_html(std::FILE *stream, const cpumon_target *target, const std::uint32_t *summary_list,
    std::uint32_t summary_count, const std::uint32_t *main_list, std::uint32_t main_count, std::uint32_t mode) noexcept
{
    const Columns columns{list_of(summary_list, summary_count), list_of(main_list, main_count), mode};
    return print_table(
        CPUMON_HTML, target, columns,
        [stream](int length, const char *text) noexcept { (void)pfprintf(stream, "%.*s\n", length, text); },
        [](const char *message) noexcept { (void)std::puts(message); });
}

int cpumon_print_xml(std::FILE *stream, const cpumon_target *target) noexcept
{
    return print_document(CPUMON_XML, stream, target);
}

int cpumon_print_old_xml(std::FILE *stream, const cpumon_target *target) noexcept
{
    return print_document(CPUMON_OLD_XML, stream, target);
}
