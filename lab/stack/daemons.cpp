// SPDX-License-Identifier: Apache-2.0
#include "lab/stack/daemons.h"

#include "lab/programs.h"
#include "lab/text_file.h"

#include <cstdio>
#include <sstream>

namespace switchlab {
namespace {

// clang-format off
struct Row {
    const char *name;
    const char *program;
    const char *arguments; // {unit}, {model} and {station} are filled in
    int port;
};
// One line per daemon; one that is not built is left out.
constexpr Row rows[] = {
    {"stackd", "switchlab-stackd", "--unit {unit} --model {model}", 0},
    {"loggerd", "switchlab-loggerd", "--echo", 63003},
    {"agent", "switchlab-agent", "--host {station}", 0},
    {"bcmd", "switchlab-bcmd", "", 62050},
    {"routing", "switchlab-routing", "", 61037},
    {"cpumon", "switchlab-cpumon", "", 61263},
    {"sntpd", "switchlab-sntpd", "", 0},
};
// clang-format on

std::string filled_in(std::string text, const UnitPlan &unit)
{
    const std::pair<std::string_view, std::string> values[] = {{"{unit}", std::to_string(unit.number)},
        {"{model}", std::to_string(unit.model)}, {"{station}", station_address}};
    for (const auto &[mark, value] : values) {
        if (const std::size_t at = text.find(mark); at != std::string::npos) {
            text.replace(at, mark.size(), value);
        }
    }
    return text;
}

} // namespace

std::vector<Daemon> daemons_of(const UnitPlan &unit)
{
    std::vector<Daemon> all;
    for (const Row &row : rows) {
        const std::string path = find_companion(row.program);
        if (!path.empty()) {
            const std::string command = "'" + path + "' " + filled_in(row.arguments, unit); // the shell splits it
            all.push_back({row.name, row.program, path, command, row.port});
        }
    }
    return all;
}

std::string process_list(const std::vector<Daemon> &daemons)
{
    std::string text = "# name  state  command\n";
    for (const Daemon &daemon : daemons) {
        text += daemon.name + " enabled " + daemon.command + "\n";
    }
    return text;
}

bool somebody_listens(int tcp_port)
{
    // "sl local_address rem_address st ...": the port is the hexadecimal number behind the colon, 0A is listening.
    for (const char *path : {"/proc/self/net/tcp", "/proc/self/net/tcp6"}) {
        std::istringstream table{read_file(path)};
        std::string line;
        std::getline(table, line);
        while (std::getline(table, line)) {
            std::istringstream words{line};
            std::string slot;
            std::string local;
            std::string remote;
            std::string state;
            words >> slot >> local >> remote >> state;
            const std::size_t colon = local.rfind(':');
            if (state == "0A" && colon != std::string::npos &&
                std::stoi(local.substr(colon + 1), nullptr, 16) == tcp_port) {
                return true;
            }
        }
    }
    return false;
}

} // namespace switchlab
