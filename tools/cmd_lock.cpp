// SPDX-License-Identifier: Apache-2.0
// switchcfg lock: the named locks, and who holds them by the kernel's own lock table.
#include "tools/attach.h"
#include "tools/command_line/failure.h"
#include "tools/command_line/output.h"
#include "tools/commands.h"
#include "tools/lock_hold.h"
#include "tools/lock_holders.h"

#include <cstdlib>
#include <memory>
#include <optional>
#include <spawn.h>
#include <switchcfg/locks.h>
#include <switchcfg/startup.h>
#include <sys/wait.h>

namespace switchcfg::tool {
namespace {

void list_locks()
{
    attach();
    Json json = Json::array();
    Table table{{"LOCK", "FILE", "STATE", "PID", "PROCESS"}};
    for (const NamedLock &lock : all_locks()) {
        Json holders = Json::array();
        for (const Holder &holder : holders_of(lock.path)) {
            const std::string mode = holder.exclusive ? "exclusive" : "shared";
            table.add({lock.name, lock.path, holder.waiting ? "waits for " + mode : mode, std::to_string(holder.pid),
                holder.process});
            holders.push_back(
                {{"pid", holder.pid}, {"process", holder.process}, {"mode", mode}, {"waiting", holder.waiting}});
        }
        if (holders.empty()) {
            table.add({lock.name, lock.path, lock.fd >= 0 ? "free" : "cannot be opened"});
        }
        json.push_back({{"name", lock.name}, {"file", lock.path}, {"holders", holders}});
    }
    print(json, [&] { table.print(); });
}

// Returns the command's own exit status, as a shell would.
int run(const std::string &name, bool shared, const std::vector<std::string> &command)
{
    attach();
    std::optional<cfg_lock> found;
    std::string known;
    const std::vector<NamedLock> locks = all_locks();
    for (const NamedLock &lock : locks) {
        known += " " + lock.name;
        if (lock.name == name) {
            found = cfg_lock{lock.name.c_str(), lock.path.c_str(), lock.fd};
        }
    }
    if (!found) {
        throw Failure{"no lock is named '" + name + "': one of" + known};
    }
    const LockHold hold{*found, shared};
    std::vector<char *> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string &word : command) {
        arguments.push_back(const_cast<char *>(word.c_str()));
    }
    arguments.push_back(nullptr);
    pid_t child = 0;
    errno = ::posix_spawnp(&child, arguments[0], nullptr, nullptr, arguments.data(), environ);
    if (errno != 0) {
        throw system_failure(command.front(), "cannot run");
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace

void add_lock_commands(CLI::App &app)
{
    auto *lock = app.add_subcommand("lock", "The named locks between processes");
    lock->require_subcommand(1);
    lock->add_subcommand("list", "Each lock, its file, and who holds it and how")->callback(list_locks);

    auto *run_command = lock->add_subcommand("run", "Run a command while holding a lock; its exit status is ours");
    auto name = std::make_shared<std::string>();
    auto shared = std::make_shared<bool>(false);
    auto command = std::make_shared<std::vector<std::string>>();
    run_command->add_flag("--shared", *shared, "Take the shared lock instead of the exclusive one");
    run_command->add_option("name", *name, "CFG FW Traps EAPS PL Debugs Cli_reg Sync DC IPMC")->required();
    run_command->add_option("command", *command, "Command and its arguments, behind --")->required();
    run_command->callback([=] {
        const int status = run(*name, *shared, *command);
        if (status != 0) {
            throw CommandStatus{status};
        }
    });
}

} // namespace switchcfg::tool
