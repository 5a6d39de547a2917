// SPDX-License-Identifier: Apache-2.0
// The process manager's client.
#include <switchcfg/pm_client.h>
#include <switchcfg/process.h>
#include <switchcfg/request_channel.h>

#include "util/owned.h"
#include "util/process_name.h"

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <unistd.h>

static_assert(sizeof(pm_request) == 44);
static_assert(offsetof(pm_request, command) == 0);
static_assert(offsetof(pm_request, value) == 4);
static_assert(offsetof(pm_request, result) == 8);
static_assert(offsetof(pm_request, name) == 12);

namespace {

constexpr int log_priority = 4; // warning
constexpr char blanks[] = " \t\n\v\f\r";

enum KillResult { list_failed = -5, other_name = -6, is_caller = -7 };

pm_client_settings client{};

int request(pm_command command, const char *name, std::uint32_t value) noexcept
{
    if (client.port == 0) {
        return -1;
    }
    pm_request record{};
    record.command = command;
    record.value = value;
    if (name != nullptr) {
        std::memcpy(record.name, name, ::strnlen(name, sizeof record.name - 1));
    }
    const int exchanged = daemon_client_req(client.port, PM_CLIENT_TIMEOUT_S, &record, sizeof record);
    return exchanged < 0 ? exchanged : record.result;
}

const char *forced_mark(int signo) noexcept
{
    return signo == SIGKILL ? " (forced)" : "";
}

int kill_all_of(const char *name, int signo) noexcept
{
    const switchcfg::Malloced<std::int32_t> list{find_pid_by_name(name)};
    if (list == nullptr) {
        return list_failed;
    }
    if (client.logger != nullptr) {
        client.logger(log_priority, "Request from user to stop all processes '%s'%s", name, forced_mark(signo));
    }
    const pid_t own = ::getpid();
    int signalled = 0;
    for (const std::int32_t *pid = list.get(); *pid > 0; ++pid) {
        signalled += *pid != own && ::kill(*pid, signo) == 0 ? 1 : 0;
    }
    return signalled;
}

// The name up to its first blank is looked at, at most 31 characters of it.
bool is_named(int pid, const char *name) noexcept
{
    switchcfg::ProcessName found;
    if (!switchcfg::read_process_name(pid, found)) {
        return false;
    }
    const char *const word = found.data() + std::strspn(found.data(), blanks);
    const std::size_t length = std::min<std::size_t>(std::strcspn(word, blanks), PM_NAME_SIZE - 1);
    return length > 0 && std::strlen(name) == length && std::memcmp(word, name, length) == 0;
}

int kill_one(const char *name, int pid, int signo) noexcept
{
    if (!is_named(pid, name)) {
        return other_name;
    }
    if (pid == ::getpid()) {
        return is_caller;
    }
    if (client.logger != nullptr) {
        client.logger(log_priority, "Request from user to stop process '%s'%s", name, forced_mark(signo));
    }
    return ::kill(pid, signo) == 0 ? 1 : -1;
}

} // namespace

void pm_client_init(const pm_client_settings *settings) noexcept
{
    client = settings != nullptr ? *settings : pm_client_settings{};
}

void pm_client_finish() noexcept {}

int pm_client_start(const char *name) noexcept
{
    return request(PM_START, name, 0);
}

int pm_client_stop(const char *name) noexcept
{
    return request(PM_STOP, name, 0);
}

int pm_client_kill(const char *name) noexcept
{
    return request(PM_KILL, name, 0);
}

int pm_client_restart(const char *name) noexcept
{
    return request(PM_RESTART, name, 0);
}

int pm_client_enable(const char *name) noexcept
{
    return request(PM_ENABLE, name, 0);
}

int pm_client_disable(const char *name) noexcept
{
    return request(PM_DISABLE, name, 0);
}

int pm_client_set_enabling(const char *name, std::uint32_t enabling) noexcept
{
    return request(PM_SET_ENABLING, name, enabling);
}

int pm_client_start_all() noexcept
{
    return request(PM_START_ALL, nullptr, 0);
}

int pm_client_show_all() noexcept
{
    return request(PM_SHOW_ALL, nullptr, 0);
}

int pm_client_kill_proc(const char *name, int pid, int signo) noexcept
{
    if (name == nullptr) {
        name = "";
    }
    return pid == -1 ? kill_all_of(name, signo) : kill_one(name, pid, signo);
}
