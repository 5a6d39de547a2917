// SPDX-License-Identifier: Apache-2.0
#include "lab/stand-ins/cpumon/sampler.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <sstream>
#include <unistd.h>

namespace switchlab::cpumon {

namespace {

constexpr std::chrono::seconds longest_window{300};
constexpr std::chrono::seconds recently{5};

// A process may call itself anything; tables and documents get what is harmless in all of them.
std::string printable(std::string name)
{
    std::ranges::replace_if(
        name, [](char c) { return c < ' ' || c > '~'; }, '?');
    return name;
}

std::vector<Processor> read_processors()
{
    std::vector<Processor> processors;
    std::ifstream file{"/proc/stat"};
    for (std::string line; std::getline(file, line) && line.starts_with("cpu");) {
        std::istringstream words{line.substr(3)};
        Processor one;
        if (line[3] == ' ') {
            one.name = "all";
        } else {
            words >> one.name;
        }
        Ticks user = 0;
        Ticks nice = 0;
        Ticks system = 0;
        Ticks idle = 0;
        Ticks waiting = 0;
        Ticks interrupts = 0;
        Ticks soft_interrupts = 0;
        words >> user >> nice >> system >> idle >> waiting >> interrupts >> soft_interrupts;
        one.user = user + nice;
        one.system = system + interrupts + soft_interrupts;
        one.idle = idle + waiting;
        processors.push_back(one);
    }
    return processors;
}

void read_memory(Memory &memory, Memory &swap)
{
    std::ifstream file{"/proc/meminfo"};
    std::string name;
    std::uint64_t kib = 0;
    while (file >> name >> kib) {
        if (name == "MemTotal:") {
            memory.total_kib = kib;
        } else if (name == "MemAvailable:") {
            memory.free_kib = kib;
        } else if (name == "SwapTotal:") {
            swap.total_kib = kib;
        } else if (name == "SwapFree:") {
            swap.free_kib = kib;
        }
        file.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    }
}

// The name stands in brackets and may hold anything, brackets too: the last one ends it.
bool read_process(const std::filesystem::path &folder, Process &process)
{
    std::ifstream file{folder / "stat"};
    const std::string text{std::istreambuf_iterator<char>{file}, {}};
    const std::size_t first = text.find('(');
    const std::size_t last = text.rfind(')');
    if (first == std::string::npos || last == std::string::npos || last < first) {
        return false; // it has just ended
    }
    process.name = printable(text.substr(first + 1, last - first - 1));
    std::istringstream words{text.substr(last + 1)};
    std::string skipped;
    const auto skip = [&](int count) {
        while (count-- > 0) {
            words >> skipped;
        }
    };
    std::uint64_t virtual_bytes = 0;
    std::uint64_t resident_pages = 0;
    words >> process.state;
    skip(10); // from the parent to the page faults
    words >> process.user >> process.system;
    skip(2); // of its children
    words >> process.priority >> skipped >> process.threads >> skipped >> process.started >> virtual_bytes >>
        resident_pages;
    skip(14); // limits, addresses, signals
    words >> process.processor;
    process.virtual_kib = virtual_bytes / 1024;
    process.resident_kib = resident_pages * static_cast<std::uint64_t>(::getpagesize()) / 1024;
    return !words.fail();
}

Ticks since(Ticks before, Ticks now)
{
    return now > before ? now - before : 0; // some of the machine's counters step back now and then
}

} // namespace

Snapshot look()
{
    Snapshot now{Clock::now(), read_processors(), {}, {}, {}};
    read_memory(now.memory, now.swap);
    for (const auto &entry : std::filesystem::directory_iterator{"/proc"}) {
        const std::string name = entry.path().filename();
        Process process;
        if (name.find_first_not_of("0123456789") == std::string::npos && read_process(entry.path(), process)) {
            process.pid = std::stoi(name);
            now.processes.push_back(process);
        }
    }
    return now;
}

void Sampler::keep(const Snapshot &snapshot)
{
    Kept kept{snapshot.at, snapshot.processors, {}};
    for (const Process &process : snapshot.processes) {
        kept.processes.emplace(process.pid, std::pair{process.started, process.total()});
    }
    kept_.push_back(std::move(kept));
    while (kept_.size() > 1 && kept_[1].at <= snapshot.at - longest_window) {
        kept_.pop_front();
    }
}

// The last one that is at least as old, else the oldest.
const Sampler::Kept *Sampler::before(Clock::time_point moment) const
{
    const auto later = std::ranges::find_if(kept_, [&](const Kept &one) { return one.at > moment; });
    return later != kept_.begin() ? &*std::prev(later) : kept_.empty() ? nullptr : &kept_.front();
}

double Sampler::usage(const Snapshot &now, const Process &process, std::chrono::seconds window) const
{
    const Kept *const then = before(now.at - window);
    if (then == nullptr || now.at <= then->at) {
        return 0;
    }
    // What was not there then, or is another process with its number, has used all it has since.
    const auto found = then->processes.find(process.pid);
    const bool same = found != then->processes.end() && found->second.first == process.started;
    const Ticks used = since(same ? found->second.second : 0, process.total());
    const double seconds = std::chrono::duration<double>(now.at - then->at).count();
    return 100.0 * static_cast<double>(used) / static_cast<double>(::sysconf(_SC_CLK_TCK)) / seconds;
}

std::vector<Processor> Sampler::recent(const Snapshot &now) const
{
    std::vector<Processor> used = now.processors;
    const Kept *const then = before(now.at - recently);
    for (std::size_t i = 0; then != nullptr && i < used.size() && i < then->processors.size(); ++i) {
        const Processor &old = then->processors[i];
        const Processor difference{used[i].name, since(old.user, used[i].user), since(old.system, used[i].system),
            since(old.idle, used[i].idle)};
        if (difference.total() > 0) { // nothing has been counted yet: then since the machine started
            used[i] = difference;
        }
    }
    return used;
}

} // namespace switchlab::cpumon
