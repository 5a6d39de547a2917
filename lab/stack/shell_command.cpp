// SPDX-License-Identifier: Apache-2.0
#include "lab/stack/shell_command.h"

#include "lab/refusal.h"
#include "lab/sandbox/namespaces.h"
#include "lab/sandbox/programs.h"
#include "lab/sandbox/sandbox.h"
#include "lab/sandbox/signal_relay.h"
#include "lab/stack/visitor.h"
#include "lab/text_file.h"

#include <CLI/CLI.hpp>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <sys/prctl.h>
#include <unistd.h>

namespace switchlab {
namespace {

constexpr char rules_path[] = "/etc/switchlab.bashrc";

void enter_namespaces(const LabPart &part)
{
    constexpr int kinds = CLONE_NEWNS | CLONE_NEWNET | CLONE_NEWPID | CLONE_NEWUTS | CLONE_NEWIPC;
    // A lab made by root shares its maker's user namespace, and nobody may enter the one he is in.
    if (::setns(part.process.get(), kinds | CLONE_NEWUSER) != 0 &&
        (errno != EINVAL || ::setns(part.process.get(), kinds) != 0)) {
        throw refusal("setns", part.name);
    }
    // In a chroot the root of the mounts is not that of the lab's processes.
    if (::fchdir(part.root.get()) != 0 || ::chroot(".") != 0) {
        throw refusal("chroot", part.name);
    }
}

std::string prompt(const LabPart &part)
{
    const std::string model = part.about.value("model_name", "");
    return part.name + (model.empty() ? "" : " " + model);
}

// The user's own settings, and then a prompt that says where he is.
void write_shell_rules(const LabPart &part)
{
    write_file(rules_path, "[ ! -r ~/.bashrc ] || . ~/.bashrc\n"
                           "PATH=" +
                               part.about["environment"].value("PATH", "$PATH") +
                               "\nunset PROMPT_COMMAND\n"
                               "PS1='" +
                               prompt(part) + ":\\w\\$ '\n");
}

int run_inside(const LabPart &part, ShellRequest &request, const std::string &folder)
{
    const SignalRelay signals;
    enter_namespaces(part);
    if (::chdir(folder.c_str()) != 0 && ::chdir("/") != 0) {
        throw refusal("chdir", "/");
    }
    for (const auto &[name, value] : part.about["environment"].items()) {
        ::setenv(name.c_str(), value.get<std::string>().c_str(), 1);
    }
    std::vector<std::string> shell{"/bin/sh"};
    if (request.command.empty()) {
        if (::access("/bin/bash", X_OK) == 0) {
            write_shell_rules(part);
            shell = {"/bin/bash", "--rcfile", rules_path, "-i"};
        }
        ::setenv("PS1", (prompt(part) + "# ").c_str(), 1);
        for (std::string &word : shell) {
            request.command.push_back(word.data());
        }
        request.command.push_back(nullptr);
    }
    const pid_t parent = ::getpid();
    const pid_t child = ::fork(); // only a child is in the other process list
    if (child < 0) {
        throw refusal("fork", "");
    }
    if (child == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() == parent) { // never: in its own list the parent is nobody
            ::_exit(exit_lab_failed);
        }
        signals.restore_for_command();
        execute(request.command.data());
    }
    return signals.wait_for(child);
}

} // namespace

CLI::App *add_shell_command(CLI::App &app, ShellRequest &request)
{
    CLI::App *const shell = app.add_subcommand(
        "shell", "A shell on a unit, or a command: switchlab shell [UNIT] [-- COMMAND [ARGUMENT]...]");
    shell->add_option("UNIT", request.part, "Counted from 0, or station")->capture_default_str();
    shell->add_option("--name", request.lab, "Which lab, when there are several")->envname(lab_name_variable);
    shell->footer("Examples:\n"
                  "  switchlab shell 1                       look around on unit 1\n"
                  "  switchlab shell 1 -- switchcfg units    what unit 1 knows of the stack\n"
                  "Exit status: the command's own, as with run.\n");
    return shell;
}

int enter_lab(ShellRequest &request)
try {
    LabView lab = view_lab(request.lab);
    const LabPart &part = lab.part(request.part);
    if (!part.process) {
        throw Refusal(part.name + " is " + part.stage);
    }
    std::error_code why;
    const int status = run_inside(part, request, std::filesystem::current_path(why).string());
    // Straight out: a thread started from here on would belong to the unit, and a leak checker that starts one waits
    // for it.
    ::_exit(status);
} catch (const std::exception &why) {
    return complain(why.what(), exit_lab_failed);
}

} // namespace switchlab
