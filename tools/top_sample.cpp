// SPDX-License-Identifier: Apache-2.0
#include "tools/top_sample.h"

#include "core/config_layout.h"
#include "core/status_layout.h"
#include "tools/attach.h"
#include "tools/lock_holders.h"
#include "tools/models.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <switchcfg/config_region.h>
#include <switchcfg/equip.h>
#include <switchcfg/mapped_file.h>
#include <switchcfg/status.h>
#include <switchcfg/trap.h>
#include <unistd.h>

namespace switchcfg::tool {
namespace {

std::vector<UnitSample> sample_units()
{
    namespace status = status_layout;
    const std::uint8_t *const region = status_of_switch();
    const auto *const config = static_cast<const std::uint8_t *>(cfg_get_cfg());
    std::vector<UnitSample> units;
    for (int unit = 0; unit < static_cast<int>(status::max_units); ++unit) {
        if (load(region, status::unit_present, unit) == 0) {
            continue;
        }
        const int ports = std::clamp(cfg_equip_get_user_eth_ports(static_cast<std::uint32_t>(unit)), 0, 52);
        UnitSample sample{unit, model_name_of(status_get_hw_model_num(unit), unit), ports, 0, 0};
        for (int port = 0; port < ports; ++port) {
            sample.plugged += load(region, status::transceiver_present, unit, port) != 0 ? 1 : 0;
            sample.disabled += load(config, config_layout::port_disabled, unit, port) != 0 ? 1 : 0;
        }
        units.push_back(std::move(sample));
    }
    return units;
}

std::vector<LockSample> sample_locks()
{
    std::vector<LockSample> held;
    for (const NamedLock &lock : all_locks()) {
        LockSample sample{lock.name, {}, 0};
        for (const Holder &holder : holders_of(lock.path)) {
            if (holder.waiting) {
                ++sample.waiting;
            } else {
                sample.holder +=
                    (sample.holder.empty() ? "" : ", ") + holder.process + " " + std::to_string(holder.pid);
            }
        }
        if (!sample.holder.empty()) {
            held.push_back(std::move(sample));
        }
    }
    return held;
}

bool is_attached(const std::filesystem::path &process)
{
    std::ifstream maps{process / "maps"};
    for (std::string line; std::getline(maps, line);) {
        if (line.ends_with("/var/status")) {
            return true;
        }
    }
    return false;
}

struct Usage {
    std::string name;
    std::uint64_t ticks = 0;
    std::uint64_t resident_pages = 0;
};

// The name stands in parentheses and may hold any character, so what follows is counted from the last one.
Usage usage_of(const std::filesystem::path &process)
{
    std::ifstream file{process / "stat"};
    std::string line;
    std::getline(file, line);
    const std::size_t first = line.find('(');
    const std::size_t last = line.rfind(')');
    if (first == std::string::npos || last == std::string::npos) {
        return {};
    }
    std::istringstream words{line.substr(last + 1)};
    std::vector<std::string> fields{std::istream_iterator<std::string>{words}, {}};
    constexpr std::size_t user = 11;
    constexpr std::size_t resident = 21;
    if (fields.size() <= resident) {
        return {};
    }
    return {line.substr(first + 1, last - first - 1), std::stoull(fields[user]) + std::stoull(fields[user + 1]),
        std::stoull(fields[resident])};
}

} // namespace

Sampler::Sampler()
{
    attach();
}

double Sampler::traps_since_last(double seconds)
{
    std::vector<trap_entry> entries(TRAP_QUEUE_LENGTH);
    const int queued = trap_queue_peek(entries.data(), TRAP_QUEUE_LENGTH);
    std::vector<std::string> now;
    for (int i = 0; i < queued; ++i) {
        const trap_entry &entry = entries[static_cast<std::size_t>(i)];
        now.push_back(std::to_string(entry.id) + ' ' + entry.text);
    }
    // What is old is a run at the front: the queue grows at its end and is taken from its head.
    std::size_t old = 0;
    for (std::size_t from = 0; from < queue_.size() && old == 0; ++from) {
        const std::size_t common = std::min(queue_.size() - from, now.size());
        if (std::equal(now.begin(), now.begin() + static_cast<std::ptrdiff_t>(common),
                queue_.begin() + static_cast<std::ptrdiff_t>(from))) {
            old = common;
        }
    }
    const auto fresh = static_cast<double>(now.size() - old);
    queue_ = std::move(now);
    return seconds > 0 ? fresh / seconds : 0;
}

std::vector<ProcessSample> Sampler::processes(double seconds)
{
    static const auto ticks_per_second = static_cast<double>(::sysconf(_SC_CLK_TCK));
    static const auto page_kib = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE)) / 1024;
    std::vector<ProcessSample> found;
    std::map<int, std::uint64_t> ticks;
    for (const auto &entry : std::filesystem::directory_iterator{"/proc"}) {
        const int pid = std::atoi(entry.path().filename().c_str());
        if (pid <= 0 || !is_attached(entry.path())) {
            continue;
        }
        const Usage usage = usage_of(entry.path());
        const auto before = ticks_.find(pid);
        const bool known = before != ticks_.end() && usage.ticks >= before->second && seconds > 0;
        const double cpu = known ? static_cast<double>(usage.ticks - before->second) / ticks_per_second / seconds : 0;
        ticks[pid] = usage.ticks;
        found.push_back({pid, usage.name, 100 * cpu, usage.resident_pages * page_kib});
    }
    ticks_ = std::move(ticks);
    std::ranges::stable_sort(found, std::ranges::greater{}, &ProcessSample::cpu_percent);
    return found;
}

Sample Sampler::take()
{
    const Clock::time_point now = Clock::now();
    const double seconds = taken_ == Clock::time_point{} ? 0 : std::chrono::duration<double>(now - taken_).count();
    taken_ = now;
    Sample sample{sample_units(), sample_locks(), processes(seconds), 0, traps_since_last(seconds)};
    sample.traps_queued = static_cast<int>(queue_.size());
    return sample;
}

} // namespace switchcfg::tool
