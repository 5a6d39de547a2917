// SPDX-License-Identifier: Apache-2.0
#include "soak/processes.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace switchcfg::soak {

namespace fs = std::filesystem;

std::vector<Process> processes()
{
    std::vector<Process> all;
    std::error_code gone;
    for (const auto &entry : fs::directory_iterator{"/proc", gone}) {
        const pid_t pid = std::atoi(entry.path().filename().c_str());
        if (pid <= 0) {
            continue;
        }
        std::ifstream file{entry.path() / "stat"};
        const std::string stat{std::istreambuf_iterator<char>{file}, {}};
        const std::size_t from = stat.find('(');
        const std::size_t to = stat.rfind(')');
        if (from != std::string::npos && to != std::string::npos && to + 2 < stat.size()) {
            all.push_back({pid, stat.substr(from + 1, to - from - 1), stat[to + 2] == 'Z'});
        }
    }
    return all;
}

int open_descriptors(pid_t pid)
{
    std::error_code gone;
    int count = 0;
    const fs::directory_iterator entries{"/proc/" + std::to_string(pid) + "/fd", gone};
    if (gone) {
        return -1;
    }
    for (auto at = begin(entries); at != end(entries); at.increment(gone)) {
        ++count;
    }
    return count;
}

long address_space_kib(pid_t pid)
{
    std::ifstream file{"/proc/" + std::to_string(pid) + "/status"};
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("VmSize:")) {
            return std::atol(line.c_str() + 7);
        }
    }
    return -1;
}

std::map<std::string, int> count_by_name(const std::vector<Process> &all)
{
    std::map<std::string, int> counts;
    for (const Process &process : all) {
        ++counts[process.name + (process.zombie ? " (zombie)" : "")];
    }
    return counts;
}

} // namespace switchcfg::soak
