// SPDX-License-Identifier: Apache-2.0
#include "lab/stand-ins/cpumon/tables.h"

#include <switchcfg/cpumon.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <span>
#include <string_view>
#include <unistd.h>

namespace switchlab::cpumon {

namespace {

using std::chrono::seconds;

struct Row {
    const Snapshot &now;
    const Sampler &sampler;
    const Process &process;
};

// h:mm:ss
std::string clock_text(Ticks ticks)
{
    const auto total = static_cast<unsigned long>(ticks / static_cast<Ticks>(::sysconf(_SC_CLK_TCK)));
    std::array<char, 32> text{};
    (void)std::snprintf(text.data(), text.size(), "%lu:%02lu:%02lu", total / 3600, total / 60 % 60, total % 60);
    return text.data();
}

std::string percent_of(std::uint64_t part, std::uint64_t whole)
{
    return with_decimal(whole == 0 ? 0 : 100.0 * static_cast<double>(part) / static_cast<double>(whole));
}

std::string pid(const Row &row)
{
    return std::to_string(row.process.pid);
}

std::string name(const Row &row)
{
    return row.process.name;
}

template<int Seconds>
std::string usage(const Row &row)
{
    return with_decimal(row.sampler.usage(row.now, row.process, seconds{Seconds}));
}

std::string running_time(const Row &row)
{
    const auto up = std::chrono::duration<double>(row.now.at.time_since_epoch()).count(); // since the machine started
    const auto since = up - static_cast<double>(row.process.started) / static_cast<double>(::sysconf(_SC_CLK_TCK));
    return clock_text(static_cast<Ticks>(std::max(since, 0.0)) * static_cast<Ticks>(::sysconf(_SC_CLK_TCK)));
}

template<typename Subject>
struct ColumnOf {
    std::uint32_t id;
    bool is_text;
    const char *title;
    std::string (*value)(const Subject &);
};

enum ProcessColumn : std::uint32_t { resident = 3, lately = 14 };

constexpr ColumnOf<Row> process_columns[] = {
    {1, false, "PID", pid},
    {2, true, "PROCESS", name},
    {resident, false, "RESIDENT KiB", [](const Row &row) { return std::to_string(row.process.resident_kib); }},
    {4, false, "MEMORY %",
        [](const Row &row) { return percent_of(row.process.resident_kib, row.now.memory.total_kib); }},
    {5, false, "VIRTUAL KiB", [](const Row &row) { return std::to_string(row.process.virtual_kib); }},
    {9, false, "PID", pid},
    {10, true, "PROCESS", name},
    {11, true, "STATE", [](const Row &row) { return std::string(1, row.process.state); }},
    {12, false, "PRIORITY", [](const Row &row) { return std::to_string(row.process.priority); }},
    {13, false, "THREADS", [](const Row &row) { return std::to_string(row.process.threads); }},
    {lately, false, "5 s %", usage<5>},
    {15, false, "1 min %", usage<60>},
    {16, false, "5 min %", usage<300>},
    {17, false, "USER", [](const Row &row) { return clock_text(row.process.user); }},
    {18, false, "SYSTEM", [](const Row &row) { return clock_text(row.process.system); }},
    {19, false, "TOTAL", [](const Row &row) { return clock_text(row.process.total()); }},
    {20, false, "RUNNING", running_time},
    {21, false, "CPU", [](const Row &row) { return std::to_string(row.process.processor); }},
};

constexpr ColumnOf<Processor> processor_columns[] = {
    {2, true, "PROCESSOR", [](const Processor &one) { return one.name; }},
    {3, false, "USER %", [](const Processor &one) { return percent_of(one.user, one.total()); }},
    {4, false, "SYSTEM %", [](const Processor &one) { return percent_of(one.system, one.total()); }},
    {14, false, "IDLE %", [](const Processor &one) { return percent_of(one.idle, one.total()); }},
    {10, false, "BUSY %", [](const Processor &one) { return percent_of(one.user + one.system, one.total()); }},
};

struct NamedMemory {
    const char *name;
    const Memory &memory;
};

constexpr ColumnOf<NamedMemory> memory_columns[] = {
    {2, true, "KIND", [](const NamedMemory &one) { return std::string{one.name}; }},
    {1, false, "TOTAL KiB", [](const NamedMemory &one) { return std::to_string(one.memory.total_kib); }},
    {3, false, "USED KiB", [](const NamedMemory &one) { return std::to_string(one.memory.used_kib()); }},
    {6, false, "FREE KiB", [](const NamedMemory &one) { return std::to_string(one.memory.free_kib); }},
    {7, false, "USED %",
        [](const NamedMemory &one) { return percent_of(one.memory.used_kib(), one.memory.total_kib); }},
};

template<typename Subject, typename Subjects>
Table make_table(
    std::span<const ColumnOf<Subject>> known, const std::vector<std::uint32_t> &ids, const Subjects &subjects)
{
    Table table;
    std::vector<const ColumnOf<Subject> *> columns;
    for (const std::uint32_t id : ids) {
        const auto column = std::ranges::find(known, id, &ColumnOf<Subject>::id);
        if (column == known.end()) {
            throw RequestError{"column " + std::to_string(id) + " is not known"};
        }
        columns.push_back(&*column);
        table.columns.push_back({column->title, column->is_text});
    }
    for (const Subject &subject : subjects) {
        std::vector<std::string> cells;
        std::ranges::transform(
            columns, std::back_inserter(cells), [&](const auto *column) { return column->value(subject); });
        table.rows.push_back(std::move(cells));
    }
    return table;
}

// Most first, then the oldest process.
template<typename Amount>
void sort_by(std::vector<Process> &processes, Amount amount)
{
    std::vector<std::pair<double, Process>> keyed;
    for (Process &process : processes) {
        const double key = amount(process);
        keyed.emplace_back(-key, std::move(process));
    }
    std::ranges::sort(keyed, {}, [](const auto &one) { return std::pair{one.first, one.second.pid}; });
    for (std::size_t i = 0; i < keyed.size(); ++i) {
        processes[i] = std::move(keyed[i].second);
    }
}

} // namespace

std::string with_decimal(double value)
{
    std::array<char, 32> text{};
    (void)std::snprintf(text.data(), text.size(), "%.1f", value);
    return text.data();
}

Table process_table(const Snapshot &now, const Sampler &sampler, const std::vector<std::uint32_t> &columns)
{
    std::vector<Process> processes = now.processes;
    const auto wants = [&](std::uint32_t id) { return std::ranges::find(columns, id) != columns.end(); };
    if (wants(lately)) {
        sort_by(processes, [&](const Process &process) { return sampler.usage(now, process, seconds{5}); });
    } else if (wants(resident)) {
        sort_by(processes, [](const Process &process) { return static_cast<double>(process.resident_kib); });
    } else {
        std::ranges::sort(processes, {}, &Process::pid);
    }
    std::vector<Row> rows;
    rows.reserve(processes.size());
    for (const Process &process : processes) {
        rows.push_back({now, sampler, process});
    }
    return make_table<Row>(process_columns, columns, rows);
}

Table summary_table(
    const Snapshot &now, const Sampler &sampler, std::uint32_t mode, const std::vector<std::uint32_t> &columns)
{
    switch (mode) {
    case CPUMON_PROCESSOR_SUMMARY:
        return make_table<Processor>(processor_columns, columns, sampler.recent(now));
    case CPUMON_MEMORY_SUMMARY:
        return make_table<NamedMemory>(
            memory_columns, columns, std::array{NamedMemory{"memory", now.memory}, NamedMemory{"swap", now.swap}});
    default:
        throw RequestError{"summary " + std::to_string(mode) + " is not known"};
    }
}

unsigned busy_percent(const Snapshot &now, const Sampler &sampler)
{
    const std::vector<Processor> recent = sampler.recent(now);
    if (recent.empty() || recent[0].total() == 0) {
        return 0;
    }
    const Processor &all = recent[0];
    return static_cast<unsigned>(
        std::lround(100.0 * static_cast<double>(all.user + all.system) / static_cast<double>(all.total())));
}

std::string translated(const std::string &name)
{
    struct Translation {
        std::string_view name; // as the kernel keeps it, 15 characters at most
        const char *job;
    };
    constexpr Translation translations[] = {
        {"sntpd", "SNTP client"},
        {"switchlab-sntpd", "SNTP client"},
        {"switchlab-logge", "Logging"},
        {"switchlab-pm", "Process manager"},
        {"switchlab-agent", "SNMP agent"},
        {"switchlab-cpumo", "CPU monitor"},
    };
    const auto found = std::ranges::find(translations, std::string_view{name}, &Translation::name);
    return found != std::end(translations) ? found->job : name;
}

} // namespace switchlab::cpumon
