// SPDX-License-Identifier: Apache-2.0
// switchcfg pm: requests to the process manager.
#include "tools/command_line/failure.h"
#include "tools/command_line/output.h"
#include "tools/commands.h"
#include "tools/signal_name.h"

#include <cstdarg>
#include <cstdio>
#include <iostream>
#include <memory>
#include <string>
#include <switchcfg/pm_client.h>

namespace switchcfg::tool {
namespace {

struct NamedRequest {
    const char *name;
    const char *about;
    int (*send)(const char *process);
};

constexpr NamedRequest named_requests[] = {
    {"start", "Start a process", pm_client_start},
    {"stop", "Stop a process, giving it time to end", pm_client_stop},
    {"kill", "Stop a process at once", pm_client_kill},
    {"restart", "Stop a process and start it again", pm_client_restart},
    {"enable", "Allow a process to run, and start it", pm_client_enable},
    {"disable", "Stop a process and keep it from running", pm_client_disable},
};

[[gnu::format(printf, 2, 3)]] void say(int /*priority*/, const char *format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    (void)std::vfprintf(stderr, format, arguments);
    va_end(arguments);
    (void)std::fputc('\n', stderr);
}

void set_up()
{
    constexpr pm_client_settings settings{PM_CLIENT_PORT, say};
    pm_client_init(&settings);
}

void report(const std::string &what, int result)
{
    if (result == -1) {
        throw Failure{what + ": no answer from a process manager on port " + std::to_string(PM_CLIENT_PORT)};
    }
    if (result < 0) {
        throw Failure{what + ": the process manager refuses, with result " + std::to_string(result)};
    }
    print({{"result", result}}, [] {});
}

void kill_process(const std::string &name, int pid, const std::string &signal)
{
    const int signo = signal_by_name(signal);
    set_up();
    const int result = pm_client_kill_proc(name.c_str(), pid, signo);
    const std::string target = "process " + std::to_string(pid);
    switch (result) {
    case -1:
        throw system_failure(target, "kill");
    case -5:
        throw Failure{"the processes cannot be listed"};
    case -6:
        throw Failure{target + " does not exist or is not named '" + name + "'"};
    case -7:
        throw Failure{target + " is this one"};
    default:
        break;
    }
    print({{"signalled", result}}, [&] { std::cout << result << " signalled\n"; });
}

} // namespace

void add_pm_commands(CLI::App &app)
{
    auto *pm = app.add_subcommand("pm", "The process manager");
    pm->require_subcommand(1);
    for (const NamedRequest &request : named_requests) {
        auto *command = pm->add_subcommand(request.name, request.about);
        auto process = std::make_shared<std::string>();
        command->add_option("name", *process, "Name in the process manager's list, at most 31 characters")->required();
        command->callback([process, &request] {
            if (process->size() >= PM_NAME_SIZE) {
                throw Failure{"'" + *process + "': a name has at most 31 characters"};
            }
            set_up();
            report(*process, request.send(process->c_str()));
        });
    }
    pm->add_subcommand("start-all", "Start every process that is enabled")->callback([] {
        set_up();
        report("start-all", pm_client_start_all());
    });
    pm->add_subcommand("show", "Make the process manager print its table, where it prints")->callback([] {
        set_up();
        report("show", pm_client_show_all());
    });

    auto *kill = pm->add_subcommand("kill-proc", "Signal a process under its name, without the process manager");
    auto name = std::make_shared<std::string>();
    auto pid = std::make_shared<int>(-1);
    auto signal = std::make_shared<std::string>("TERM");
    kill->add_option("name", *name, "Its exact name, at most 15 characters")->required();
    kill->add_option("--pid", *pid, "Only this process")->check(CLI::PositiveNumber);
    kill->add_option("-s,--signal", *signal, "Number or name")->capture_default_str();
    kill->callback([=] { kill_process(*name, *pid, *signal); });
}

} // namespace switchcfg::tool
