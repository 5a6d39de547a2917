// SPDX-License-Identifier: Apache-2.0
#include "lab/stand-ins/pm/supervisor.h"

#include <switchcfg/process.h>
#include <switchcfg/signals.h>
#include <switchcfg/uptime.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <iomanip>
#include <sstream>
#include <string_view>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace switchlab::pm {

namespace {

void note(const std::string &name, const std::string &what)
{
    std::printf("%s: %s\n", name.c_str(), what.c_str());
    (void)std::fflush(stdout);
}

std::string ending(int status)
{
    return WIFSIGNALED(status) ? "killed by signal " + std::to_string(WTERMSIG(status))
                               : "exited with status " + std::to_string(WEXITSTATUS(status));
}

[[noreturn]] void become(const char *command_line, pid_t manager)
{
    (void)::prctl(PR_SET_PDEATHSIG, SIGKILL); // nothing outlives its manager
    if (::getppid() != manager) {
        ::_exit(127);
    }
    (void)::setpgid(0, 0);
    (void)signal_default(SIGPIPE);
    close_all();
    ::execl("/bin/sh", "sh", "-c", command_line, nullptr);
    ::_exit(127);
}

} // namespace

Supervisor::Supervisor(std::vector<Entry> entries, const Settings &settings) : settings_(settings)
{
    for (Entry &entry : entries) {
        processes_.push_back({.entry = std::move(entry)});
    }
}

Supervisor::Process *Supervisor::find(const pm_request &request)
{
    const std::string_view name{request.name, ::strnlen(request.name, sizeof request.name)};
    const auto found = std::ranges::find_if(processes_, [&](const Process &one) { return one.entry.name == name; });
    return found != processes_.end() ? &*found : nullptr;
}

void Supervisor::serve(const pm_request &request, Reply reply)
{
    if (request.command == PM_START_ALL) {
        start_all();
        reply(done);
        return;
    }
    if (request.command == PM_SHOW_ALL) {
        std::fputs(table().c_str(), stdout);
        (void)std::fflush(stdout);
        reply(done);
        return;
    }
    if (request.command < PM_START || request.command > PM_SHOW_ALL) {
        reply(unknown_command);
        return;
    }
    Process *const process = find(request);
    if (process == nullptr) {
        reply(unknown_process);
        return;
    }
    switch (request.command) {
    case PM_START:
        start_by_request(*process, reply);
        break;
    case PM_STOP:
        stop_by_request(*process, SIGTERM, std::move(reply));
        break;
    case PM_KILL:
        stop_by_request(*process, SIGKILL, std::move(reply));
        break;
    case PM_RESTART:
        restart_by_request(*process, std::move(reply));
        break;
    default: {
        const bool enable = request.command == PM_ENABLE || (request.command == PM_SET_ENABLING && request.value != 0);
        if (process->entry.enabled != enable) {
            note(process->entry.name, enable ? "enabled" : "disabled");
        }
        process->entry.enabled = enable;
        if (enable) {
            start_by_request(*process, reply);
        } else {
            stop_by_request(*process, SIGTERM, std::move(reply));
        }
    }
    }
}

void Supervisor::start_by_request(Process &process, const Reply &reply)
{
    if (!process.entry.enabled || shutting_down_) {
        reply(is_disabled);
        return;
    }
    process.wanted = true;
    process.back_off = 0;
    if (process.stopping) { // it is started once it has ended
        process.waiting.push_back(reply);
    } else {
        reply(process.pid != 0 || start(process) ? done : cannot_start);
    }
}

void Supervisor::stop_by_request(Process &process, int signo, Reply reply)
{
    process.wanted = false;
    if (process.pid == 0) {
        reply(done);
        return;
    }
    process.waiting.push_back(std::move(reply));
    stop(process, signo);
}

void Supervisor::restart_by_request(Process &process, Reply reply)
{
    if (process.pid == 0 || !process.entry.enabled) {
        start_by_request(process, reply);
        return;
    }
    stop_by_request(process, SIGTERM, std::move(reply));
    process.wanted = !shutting_down_;
    process.back_off = 0;
}

void Supervisor::start_all()
{
    for (Process &process : processes_) {
        start_by_request(process, [](int) {});
    }
}

void Supervisor::shut_down()
{
    shutting_down_ = true;
    for (Process &process : processes_) {
        stop_by_request(process, SIGTERM, [](int) {});
    }
}

bool Supervisor::all_down() const
{
    return std::ranges::all_of(processes_, [](const Process &process) { return process.pid == 0; });
}

bool Supervisor::start(Process &process)
{
    const pid_t manager = ::getpid();
    const std::string command_line = "exec " + process.entry.command; // the PID is the program's, not the shell's
    (void)std::fflush(stdout);
    const pid_t child = ::fork();
    if (child == 0) {
        become(command_line.c_str(), manager);
    }
    if (child < 0) {
        note(process.entry.name, std::string{"cannot be started: "} + std::strerror(errno));
        settle(process);
        return false;
    }
    process.pid = child;
    process.stopping = false;
    process.killed = false;
    process.started_at = uptime_cs();
    note(process.entry.name, "started, PID " + std::to_string(child));
    return true;
}

void Supervisor::stop(Process &process, int signo) const
{
    if (signo == SIGKILL || !process.stopping) {
        (void)::kill(process.pid, signo);
        process.kill_at = uptime_cs() + settings_.grace;
    }
    process.killed = process.killed || signo == SIGKILL;
    process.stopping = true;
}

// When the next start of a process that could not stay up is due.
void Supervisor::settle(Process &process) const
{
    process.back_off =
        process.back_off == 0 ? settings_.first_back_off : std::min(process.back_off * 2, settings_.longest_back_off);
    process.start_at = uptime_cs() + process.back_off;
}

void Supervisor::has_ended(Process &process, int status)
{
    const bool as_wanted = process.stopping;
    process.pid = 0;
    process.stopping = false;
    std::string what = ending(status);
    if (!as_wanted && process.wanted) {
        if (uptime_cs() - process.started_at >= settings_.settled) {
            process.back_off = 0;
        }
        settle(process);
        ++process.restarts;
        what += ", starting again in " + std::to_string(process.back_off * 10) + " ms";
    }
    note(process.entry.name, what);
    int result = done;
    if (as_wanted && process.wanted && !start(process)) {
        result = cannot_start;
    }
    for (const Reply &reply : std::exchange(process.waiting, {})) {
        reply(result);
    }
}

void Supervisor::tick()
{
    for (Process &process : processes_) {
        int status = 0;
        if (process.pid != 0 && ::waitpid(process.pid, &status, WNOHANG) == process.pid) {
            has_ended(process, status);
        }
        if (process.stopping && !process.killed && uptime_cs() >= process.kill_at) {
            note(process.entry.name, "does not end, is killed");
            stop(process, SIGKILL);
        }
        if (process.pid == 0 && process.wanted && uptime_cs() >= process.start_at) {
            (void)start(process);
        }
    }
}

std::string Supervisor::table() const
{
    std::ostringstream text;
    const auto row = [&](const auto &name, const auto &state, const auto &pid, const auto &restarts,
                         const auto &command) {
        text << std::left << std::setw(PM_NAME_SIZE) << name << ' ' << std::setw(9) << state << std::right
             << std::setw(7) << pid << std::setw(9) << restarts << "  " << command << '\n';
    };
    row("NAME", "STATE", "PID", "RESTARTS", "COMMAND");
    for (const Process &process : processes_) {
        const char *const state = process.stopping         ? "stopping"
                                  : process.pid != 0       ? "running"
                                  : process.wanted         ? "waiting"
                                  : !process.entry.enabled ? "disabled"
                                                           : "stopped";
        row(process.entry.name, state, process.pid != 0 ? std::to_string(process.pid) : "-", process.restarts,
            process.entry.command);
    }
    return text.str();
}

} // namespace switchlab::pm
