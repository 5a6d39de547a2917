// SPDX-License-Identifier: Apache-2.0
#include "lab/stack/process_tree.h"

#include "lab/text_file.h"

#include <cstdlib>
#include <filesystem>

namespace switchlab {
namespace {

namespace fs = std::filesystem;

// The value of a line "NAME:\tVALUE".
std::string field(const std::string &text, const std::string &name)
{
    const std::size_t at = text.find(name + ":");
    if (at == std::string::npos) {
        return {};
    }
    const std::size_t first = text.find_first_not_of(" \t", at + name.size() + 1);
    return text.substr(first, text.find('\n', first) - first);
}

ProcessInfo read_process(const std::string &folder)
{
    const std::string status = read_file(folder + "/status");
    ProcessInfo info;
    info.pid = std::atoi(field(status, "Pid").c_str());
    info.parent = std::atoi(field(status, "PPid").c_str());
    const std::string inside = field(status, "NSpid");
    info.pid_inside = std::atoi(inside.substr(inside.find_last_of(" \t") + 1).c_str());
    info.program = field(status, "Name");
    // The kernel keeps 15 letters of the name.
    const std::string command = read_file(folder + "/cmdline");
    const std::string program = fs::path{command.substr(0, command.find('\0'))}.filename().string();
    if (program.starts_with(info.program)) {
        info.program = program;
    }
    return info;
}

} // namespace

ProcessTree::ProcessTree()
{
    std::error_code ignored;
    for (const fs::directory_entry &entry : fs::directory_iterator("/proc", ignored)) {
        if (entry.path().filename().string().find_first_not_of("0123456789") == std::string::npos) {
            const ProcessInfo info = read_process(entry.path().string());
            by_parent_.emplace(info.parent, info);
            by_pid_.emplace(info.pid, info);
        }
    }
}

std::vector<ProcessInfo> ProcessTree::below(int pid) const
{
    std::vector<ProcessInfo> all;
    if (const auto self = by_pid_.find(pid); pid > 0 && self != by_pid_.end()) {
        all.push_back(self->second);
    }
    for (std::size_t i = 0; i < all.size(); ++i) {
        const auto [first, last] = by_parent_.equal_range(all[i].pid);
        for (auto child = first; child != last; ++child) {
            all.push_back(child->second);
        }
    }
    return all;
}

long ProcessTree::memory_kib(int pid)
{
    return std::atol(field(read_file("/proc/" + std::to_string(pid) + "/smaps_rollup"), "Pss").c_str());
}

} // namespace switchlab
