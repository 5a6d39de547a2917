// SPDX-License-Identifier: Apache-2.0
#include "lab/stand-ins/cpumon/monitor.h"

#include "lab/stand-ins/cpumon/documents.h"

#include <algorithm>
#include <arpa/inet.h>
#include <limits>
#include <span>
#include <switchcfg/text.h>

namespace switchlab::cpumon {

namespace {

std::vector<std::uint32_t> columns_of(std::span<const std::uint32_t> words)
{
    std::vector<std::uint32_t> ids;
    for (const std::uint32_t word : words) {
        if (word != 0) {
            ids.push_back(ntohl(word));
        }
    }
    return ids;
}

std::uint32_t wire_kib(std::uint64_t kib)
{
    return htonl(static_cast<std::uint32_t>(std::min<std::uint64_t>(kib, std::numeric_limits<std::uint32_t>::max())));
}

} // namespace

std::string Monitor::answer(cpumon_request &record) const
{
    record.result = 0;
    record.message[0] = '\0';
    std::string text;
    try {
        text = text_for(record);
    } catch (const RequestError &error) {
        record.result = static_cast<std::int32_t>(htonl(static_cast<std::uint32_t>(-1)));
        (void)strncpy_safe(record.message, error.what(), sizeof record.message);
    }
    record.text_length = htonl(static_cast<std::uint32_t>(text.size()));
    return text;
}

std::string Monitor::text_for(cpumon_request &record) const
{
    const Snapshot now = look();
    const std::uint32_t type = ntohl(record.type);
    switch (type) {
    case CPUMON_XML:
        return as_xml(now, sampler_, unit_);
    case CPUMON_OLD_XML:
        return as_old_xml(now, sampler_, unit_);
    case CPUMON_TABLE:
    case CPUMON_HTML: {
        std::vector<Table> tables;
        const auto summary = columns_of(record.summary_columns);
        const auto main = columns_of(record.main_columns);
        if (!summary.empty()) {
            tables.push_back(summary_table(now, sampler_, ntohl(record.summary_mode), summary));
        }
        if (!main.empty()) {
            tables.push_back(process_table(now, sampler_, main));
        }
        return type == CPUMON_HTML ? as_html(tables, unit_) : as_text(tables);
    }
    case CPUMON_CPU:
        record.cpu_usage = htonl(busy_percent(now, sampler_));
        return {};
    case CPUMON_MEMORY:
        record.memory[0] = wire_kib(now.memory.total_kib);
        record.memory[1] = wire_kib(now.memory.used_kib());
        return {};
    case CPUMON_NAME_OF: {
        const auto found = std::ranges::find(now.processes, ntohl(record.process_id),
            [](const Process &one) { return static_cast<std::uint32_t>(one.pid); });
        if (found == now.processes.end()) {
            throw RequestError{"no such process"};
        }
        (void)strncpy_safe(record.name, translated(found->name).c_str(), sizeof record.name);
        return {};
    }
    default:
        throw RequestError{"request " + std::to_string(type) + " is not known"};
    }
}

} // namespace switchlab::cpumon
