// SPDX-License-Identifier: Apache-2.0
#include "lab/demo/traces.h"

#include "lab/stack/process_tree.h"
#include "lab/text_file.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <unistd.h>

namespace switchlab::demo {
namespace {

namespace fs = std::filesystem;

// When a process was started, in ticks since the machine was; 0 when it is gone or its parent has only to take notice.
unsigned long long start_of(int pid)
{
    const std::string stat = read_file("/proc/" + std::to_string(pid) + "/stat");
    const std::size_t name_end = stat.rfind(')');
    if (name_end == std::string::npos) {
        return 0;
    }
    std::istringstream words{stat.substr(name_end + 1)};
    std::string state;
    words >> state;
    std::string word;
    for (int field = 4; field <= 21; ++field) {
        words >> word;
    }
    unsigned long long start = 0;
    words >> start;
    return state == "Z" || state == "X" ? 0 : start;
}

std::set<std::string> namespaces_of(int pid)
{
    std::set<std::string> all;
    for (const char *kind : {"mnt", "net", "pid", "uts", "ipc", "user"}) {
        std::error_code kept_from_us;
        const fs::path link = fs::read_symlink("/proc/" + std::to_string(pid) + "/ns/" + kind, kept_from_us);
        if (!kept_from_us) {
            all.insert(link.string());
        }
    }
    return all;
}

std::set<std::string> mounts_of(const std::string &process)
{
    // "ID PARENT MAJOR:MINOR ROOT PLACE ..."
    std::set<std::string> all;
    std::istringstream table{read_file("/proc/" + process + "/mountinfo")};
    for (std::string line; std::getline(table, line);) {
        std::istringstream words{line};
        std::string skipped;
        std::string device;
        std::string place;
        words >> skipped >> skipped >> device >> skipped >> place;
        all.insert(device.append(" on ").append(place));
    }
    return all;
}

template<typename Set>
void add_what_is_not_ours(Set &all, const Set &theirs, const Set &ours)
{
    std::ranges::set_difference(theirs, ours, std::inserter(all, all.end()));
}

} // namespace

Traces::Traces(int keeper)
{
    const std::set<std::string> own_namespaces = namespaces_of(::getpid());
    const std::set<std::string> own_mounts = mounts_of("self");
    for (const ProcessInfo &process : ProcessTree{}.below(keeper)) {
        if (const unsigned long long start = start_of(process.pid); start != 0) {
            processes_[process.pid] = start;
        }
        add_what_is_not_ours(namespaces_, namespaces_of(process.pid), own_namespaces);
        add_what_is_not_ours(mounts_, mounts_of(std::to_string(process.pid)), own_mounts);
    }
    seen_at_ = 0;
    for (const auto &[pid, start] : processes_) {
        seen_at_ = std::max(seen_at_, start);
    }
}

std::string Traces::left() const
{
    std::string all;
    std::error_code gone;
    for (const fs::directory_entry &entry : fs::directory_iterator{"/proc", gone}) {
        const std::string name = entry.path().filename().string();
        const int pid = std::atoi(name.c_str());
        const unsigned long long start = pid > 0 ? start_of(pid) : 0;
        if (start == 0) {
            continue;
        }
        if (const auto known = processes_.find(pid); known != processes_.end() && known->second == start) {
            all += "process " + name + "\n";
        }
        // The numbers of namespaces are used again, too: by processes that are younger than the lab's.
        for (const std::string &one : namespaces_of(pid)) {
            if (start <= seen_at_ && namespaces_.contains(one)) {
                all.append("namespace ").append(one).append(", held by process ").append(name).append("\n");
            }
        }
    }
    for (const std::string &mount : mounts_of("self")) {
        all += mounts_.contains(mount) ? "mount " + mount + "\n" : "";
    }
    return all;
}

} // namespace switchlab::demo
