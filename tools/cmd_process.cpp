// SPDX-License-Identifier: Apache-2.0
// switchcfg ps, kill, open-files: processes as the library's look-ups see them.
#include "tools/command_line/failure.h"
#include "tools/command_line/output.h"
#include "tools/commands.h"
#include "tools/signal_name.h"

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <switchcfg/files.h>
#include <switchcfg/process.h>
#include <unistd.h>
#include <vector>

namespace switchcfg::tool {
namespace {

struct FreeMemory {
    void operator()(void *memory) const { std::free(memory); }
};

std::string take(char *text)
{
    const std::unique_ptr<char, FreeMemory> owned{text};
    return text != nullptr ? text : "";
}

// A name or command line on one line of a table; what other programs put into theirs must not drive the terminal.
std::string on_one_line(std::string text)
{
    std::ranges::replace_if(
        text, [](unsigned char c) { return c < ' ' || c == 0x7F; }, '?');
    return text;
}

std::vector<int> take(std::int32_t *list)
{
    const std::unique_ptr<std::int32_t, FreeMemory> owned{list};
    std::vector<int> pids;
    for (const std::int32_t *pid = list; pid != nullptr && *pid > 0; ++pid) {
        pids.push_back(*pid);
    }
    return pids;
}

std::vector<int> all_processes()
{
    std::vector<int> pids;
    const auto add = [](const char *name, void *list) {
        if (*name >= '0' && *name <= '9') {
            static_cast<std::vector<int> *>(list)->push_back(std::atoi(name)); // NOLINT(cert-err34-c): digits
        }
        return 0;
    };
    if (dir_iterate("/proc", add, &pids) != 0) {
        throw system_failure("/proc", "cannot be read");
    }
    return pids;
}

// Which processes are meant.
struct Selection {
    std::string name;
    std::string expression;
    int pid = 0;

    void add_to(CLI::App &command)
    {
        auto *by_name = command.add_option("name", name, "Exact name, at most 15 characters");
        command.add_option("--regex", expression, "Extended regular expression, matched in the command line")
            ->excludes(by_name);
    }
    bool all() const { return name.empty() && expression.empty(); }
    std::string text() const
    {
        return !expression.empty() ? "a command line that matches '" + expression + "'" : "the name '" + name + "'";
    }
    // Without this process, whose command line holds every expression it is given.
    std::vector<int> pids() const
    {
        if (all()) {
            return all_processes();
        }
        std::vector<int> found =
            take(!expression.empty() ? pid_by_regex(expression.c_str()) : pid_by_name(name.c_str()));
        std::erase(found, ::getpid());
        if (found.empty()) {
            throw Failure{"no process has " + text()};
        }
        return found;
    }
};

void list(const Selection &selection)
{
    Json json = Json::array();
    Table table{{"PID", "PPID", "NAME", "COMMAND"}};
    for (const int pid : selection.pids()) {
        if (pid_exists(pid) != 1) {
            continue; // it ended meanwhile
        }
        const int parent = get_parent_pid(pid);
        const std::string name = take(pid_name(pid));
        const std::string command = take(pid_cmdline(pid));
        table.add(
            {std::to_string(pid), parent >= 0 ? std::to_string(parent) : "-", on_one_line(name), on_one_line(command)});
        json.push_back(
            {{"pid", pid}, {"ppid", parent >= 0 ? Json(parent) : Json(nullptr)}, {"name", name}, {"command", command}});
    }
    print(json, [&] { table.print(); });
}

void signal_all(const Selection &selection, const std::string &signal)
{
    const int signo = signal_by_name(signal);
    std::vector<std::int32_t> pids;
    for (const int pid : selection.pids()) {
        pids.push_back(pid);
    }
    const std::size_t wanted = pids.size();
    pids.push_back(0);
    const int signalled = kill_list(pids.data(), signo);
    print({{"signalled", signalled}}, [&] { std::cout << signalled << " signalled\n"; });
    if (static_cast<std::size_t>(signalled) < wanted) {
        throw Failure{std::to_string(wanted - static_cast<std::size_t>(signalled)) + " of " + std::to_string(wanted) +
                      " processes could not be signalled"};
    }
}

void open_files(const std::string &path)
{
    std::error_code error;
    const std::string shown = std::filesystem::canonical(path, error).string();
    if (error) {
        throw Failure{path + ": " + error.message()};
    }
    Json json = Json::array();
    Table table{{"PID", "NAME", "COMMAND"}};
    for (const int pid : all_processes()) {
        if (pid_has_file_open(pid, shown.c_str()) == 1) {
            const std::string name = take(pid_name(pid));
            table.add({std::to_string(pid), on_one_line(name), on_one_line(take(pid_cmdline(pid)))});
            json.push_back({{"pid", pid}, {"name", name}});
        }
    }
    if (json.empty()) {
        throw Failure{shown + ": no process has it open, of those that may be looked into"};
    }
    print(json, [&] { table.print(); });
}

} // namespace

void add_process_commands(CLI::App &app)
{
    auto *ps = app.add_subcommand("ps", "Processes by name or command line; all without either");
    auto shown = std::make_shared<Selection>();
    shown->add_to(*ps);
    ps->callback([shown] { list(*shown); });

    auto *kill = app.add_subcommand("kill", "Signal processes by name or command line");
    auto signalled = std::make_shared<Selection>();
    auto signal = std::make_shared<std::string>("TERM");
    signalled->add_to(*kill);
    kill->add_option("-s,--signal", *signal, "Number or name")->capture_default_str();
    kill->callback([=] {
        if (signalled->all()) {
            throw CLI::RequiredError{"a name, or --regex,"};
        }
        signal_all(*signalled, *signal);
    });

    auto *files = app.add_subcommand("open-files", "Processes that have a file open");
    auto path = std::make_shared<std::string>();
    files->add_option("path", *path, "The file")->required();
    files->callback([path] { open_files(*path); });
}

} // namespace switchcfg::tool
