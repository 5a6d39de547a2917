// SPDX-License-Identifier: Apache-2.0
#include "lab/stack/daemons.h"

#include "lab/sandbox/programs.h"
#include "lab/text_file.h"

#include <cstdio>
#include <sstream>

namespace switchlab {
namespace {

// clang-format off
struct Row {
    const char *name;
    const char *state;     // as the process manager finds it when the unit starts
    const char *program;
    const char *arguments; // {unit}, {caption}, {units}, {model} and {station} are filled in
    int port;
};
// One line per daemon; one that is not built is left out. sntpd is started when the configuration wants it.
constexpr Row rows[] = {
    {"stackd", "enabled", "switchlab-stackd", "--unit {unit} --model {model}", 0},
    {"loggerd", "enabled", "switchlab-loggerd", "--echo", 63003},
    {"agent", "enabled", "switchlab-agent", "--host {station}", 0},
    {"bcmd", "enabled", "switchlab-bcmd", "--units {units}", 62050},
    {"routing", "enabled", "switchlab-routing", "", 61037},
    {"cpumon", "enabled", "switchlab-cpumon", "--unit {caption}", 61263},
    {"sntpd", "disabled", "switchlab-sntpd", "", 0},
};
// clang-format on

std::string filled_in(std::string text, const UnitPlan &unit, int units)
{
    const std::pair<std::string_view, std::string> values[] = {{"{unit}", std::to_string(unit.number)},
        {"{caption}", std::to_string(unit.number + 1)}, {"{units}", std::to_string(units)},
        {"{model}", std::to_string(unit.model)}, {"{station}", station_address}};
    for (const auto &[mark, value] : values) {
        if (const std::size_t at = text.find(mark); at != std::string::npos) {
            text.replace(at, mark.size(), value);
        }
    }
    return text;
}

} // namespace

std::vector<Daemon> daemons_of(const UnitPlan &unit, int units)
{
    std::vector<Daemon> all;
    for (const Row &row : rows) {
        const std::string path = find_companion(row.program);
        if (!path.empty()) {
            const std::string command =
                "'" + path + "' " + filled_in(row.arguments, unit, units); // the shell splits it
            all.push_back({row.name, row.state, row.program, command, row.port});
        }
    }
    return all;
}

std::string process_list(const std::vector<Daemon> &daemons)
{
    std::string text = "# name  state  command\n";
    for (const Daemon &daemon : daemons) {
        text += daemon.name + " " + daemon.state + " " + daemon.command + "\n";
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
