// SPDX-License-Identifier: Apache-2.0
#include "soak/inspection.h"
#include "soak/processes.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <set>
#include <string_view>
#include <switchcfg/config_region.h>
#include <switchcfg/locks.h>
#include <switchcfg/log_store.h>
#include <switchcfg/trap.h>
#include <sys/stat.h>
#include <unistd.h>

namespace switchcfg::soak {
namespace {

constexpr off_t status_size = 11272288;
constexpr int spare_descriptors = 6; // connections of the moment

void pause_ms(long ms)
{
    const timespec pause{ms / 1000, ms % 1000 * 1000000};
    (void)::nanosleep(&pause, nullptr);
}

bool comes(int seconds, const std::function<bool()> &condition)
{
    const std::uint64_t end = now_ms() + static_cast<std::uint64_t>(seconds) * 1000;
    while (!condition()) {
        if (now_ms() > end) {
            return false;
        }
        pause_ms(50);
    }
    return true;
}

std::string text_of(const std::map<std::string, int> &counts)
{
    std::string text;
    for (const auto &[name, count] : counts) {
        text += (text.empty() ? "" : ", ") + name + " " + std::to_string(count);
    }
    return text;
}

} // namespace

void Inspection::glance()
{
    ++glances_;
    region_sizes();
    queue();
}

void Inspection::region_sizes()
{
    const std::pair<const char *, off_t> regions[] = {
        {CFG_RUNNING_PATH, CFG_REGION_SIZE}, {CFG_DEFAULT_PATH, CFG_REGION_SIZE}, {"/var/status", status_size}};
    for (const auto &[path, size] : regions) {
        struct stat info {};
        if (::stat(path, &info) != 0 || info.st_size != size) {
            violation(shared_, "%s has %lld bytes", path, static_cast<long long>(info.st_size));
        }
    }
}

void Inspection::queue()
{
    static trap_entry entries[TRAP_QUEUE_LENGTH];
    const int count = trap_queue_peek(entries, TRAP_QUEUE_LENGTH);
    if (count < 0 || count > TRAP_QUEUE_LENGTH) {
        violation(shared_, "the trap queue has %d entries", count);
        return;
    }
    for (int i = 0; i < count; ++i) {
        const char *text = entries[i].text;
        trap_varbind binding{};
        int next = 0;
        while ((next = trap_queue_next_varbind(&text, &binding)) > 0) {
        }
        if (next < 0 || entries[i].id > 135) {
            violation(shared_, "entry %d of %d of the trap queue is damaged: %u '%s'", i, count, entries[i].id,
                entries[i].text);
        }
    }
}

bool Inspection::clients_rest()
{
    shared_.pause = true;
    const auto rests = [](const Worker &worker) { return worker.pid <= 0 || worker.paused; };
    if (comes(240, [&] { return std::ranges::all_of(shared_.workers, rests); })) {
        return true;
    }
    for (const Worker &worker : shared_.workers) {
        if (!rests(worker)) {
            const int call = worker.call;
            violation(shared_, "client %d does not come back from %s", static_cast<int>(worker.pid),
                call >= 0 ? calls[static_cast<std::size_t>(call)].name : "no call");
        }
    }
    return false;
}

void Inspection::processes_are_back()
{
    if (first_) {
        pause_ms(2000);
        normal_processes_ = count_by_name(processes());
    } else if (!comes(120, [&] { return count_by_name(processes()) == normal_processes_; })) {
        violation(shared_, "processes: %s; normal: %s", text_of(count_by_name(processes())).c_str(),
            text_of(normal_processes_).c_str());
    }
}

void Inspection::queue_drains()
{
    int count = -1;
    if (!comes(60, [&] { return (count = trap_queue_count()) == 0; })) {
        violation(shared_, "the trap queue keeps %d entries that its agent does not take", count);
    }
}

void Inspection::locks_are_free()
{
    std::vector<std::pair<std::string, int>> locks{
        {"routing stack", DCLockGetSetFileFD}, {"multicast", IpmcLockFileFD}};
    for (const cfg_lock &lock : cfg_lock_table) {
        locks.emplace_back(lock.path, lock.fd);
    }
    for (const auto &[name, fd] : locks) {
        // Daemons hold some of them for a moment.
        if (!comes(10, [fd = fd] { return lock_try_write(fd) == 0; })) {
            violation(shared_, "the lock %s is not free", name.c_str());
        }
        (void)lock_free(fd);
    }
}

void Inspection::no_descriptor_is_left()
{
    for (const Process &process : processes()) {
        const int open = open_descriptors(process.pid);
        int &most = most_descriptors_[process.name];
        most = std::max(most, open);
        if (first_) {
            int &normal = normal_descriptors_[process.name];
            normal = std::max(normal, open);
        } else if (const auto normal = normal_descriptors_.find(process.name);
                   normal != normal_descriptors_.end() && open > normal->second + spare_descriptors) {
            violation(shared_, "%s (%d) has %d descriptors, %d are normal", process.name.c_str(), process.pid, open,
                normal->second);
        }
    }
}

void Inspection::lines_stay_in_flash()
{
    const std::unique_ptr<char, decltype(&std::free)> text{logger_get(LOG_STORE_FLASH), &std::free};
    if (text == nullptr) {
        return; // empty, or its daemon cannot be asked, which others notice
    }
    std::map<int, std::set<std::uint32_t>> lines;
    for (const char *at = text.get(); (at = std::strstr(at, "soak-")) != nullptr; ++at) {
        int index = 0;
        std::uint32_t line = 0;
        char end = '\0';
        if (std::sscanf(at, "soak-%d-%u%c", &index, &line, &end) == 3 && end == '-') {
            lines[index].insert(line);
        }
    }
    for (int index = 0; index < most_workers; ++index) {
        Worker &worker = shared_.workers[static_cast<std::size_t>(index)];
        if (worker.kind != Kind::logs || lines[index].empty()) {
            continue;
        }
        // Older ones have made room.
        const std::uint32_t oldest = *lines[index].begin();
        for (std::uint32_t line = oldest; line < std::min(worker.next_line.load(), remembered_lines); ++line) {
            if (worker.in_flash[line] != 0 && !lines[index].contains(line)) {
                violation(shared_, "line soak-%d-%u was in flash and is gone, %u is still there", index, line, oldest);
            }
        }
    }
}

void Inspection::calls_succeed()
{
    for (std::size_t i = 0; i < calls.size(); ++i) {
        const std::uint64_t done = shared_.tallies[i].done;
        if (!first_ && calls[i].every_minute && done == done_before_[i]) {
            violation(shared_, "no %s has succeeded since the last inspection", calls[i].name);
        }
        done_before_[i] = done;
    }
}

void Inspection::thorough()
{
    if (clients_rest()) {
        processes_are_back();
        queue_drains();
        locks_are_free();
        no_descriptor_is_left();
        lines_stay_in_flash();
        calls_succeed();
        glance();
        ++thoroughs_;
        first_ = false;
    }
    shared_.pause = false;
}

} // namespace switchcfg::soak
