// SPDX-License-Identifier: Apache-2.0
#include "lab/stack/up_command.h"

#include "lab/refusal.h"
#include "lab/sandbox/namespaces.h"
#include "lab/sandbox/programs.h"
#include "lab/sandbox/sandbox.h"
#include "lab/stack/progress.h"
#include "lab/stack/visitor.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/prctl.h>
#include <unistd.h>

namespace switchlab {
namespace {

using switchcfg::Descriptor;

struct UpRequest {
    std::string name = usual_lab;
    int units = 0;
    std::vector<std::string> models;
    std::vector<std::string> keep;
    bool detach = false;
};

void check_name(const std::string &name)
{
    const auto fits = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
    };
    if (name.empty() || name.size() > 32 || !std::ranges::all_of(name, fits)) {
        throw Refusal("'" + name + "' is no name for a lab: 1 to 32 letters, digits, - and _");
    }
}

void print_hints(const LabPlan &plan, bool detached)
{
    const std::string name = plan.name == usual_lab ? "" : " --name " + plan.name;
    const char *const option = name.c_str();
    std::printf("  switchlab shell%s %-9s a shell on a unit\n", option, plan.units.size() > 1 ? "1" : "0");
    std::printf("  switchlab status%s          units, addresses, daemons\n", option);
    std::printf("  switchlab logs%s -f         what daemons say and the station receives\n", option);
    std::printf("  switchlab power%s 0 cycle   pull the plug of a unit and put it back\n", option);
    if (detached) {
        std::printf("  switchlab down%s            take it down\n", option);
    } else {
        std::printf("Ctrl-C takes it down.\n");
    }
    (void)std::fflush(stdout);
}

void die_with_parent(pid_t parent)
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) {
        ::_exit(exit_lab_failed);
    }
}

int keep_in_foreground(const LabPlan &plan)
{
    die_with_parent(::getppid());
    Progress progress{plan};
    progress.when_up([&](bool /*complete*/) { print_hints(plan, false); });
    Keeper keeper{plan};
    const int status = keeper.run(progress);
    std::printf("lab '%s' is down\n", plan.name.c_str());
    return status;
}

// Once the lab is up nothing ties it to the terminal and to who started it.
void let_go(Progress &progress, int told, bool complete)
{
    progress.hush();
    ::prctl(PR_SET_PDEATHSIG, 0);
    const Descriptor nothing{::open("/dev/null", O_RDWR | O_CLOEXEC)};
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        ::dup2(nothing.get(), standard);
    }
    const char status = complete ? EXIT_SUCCESS : EXIT_FAILURE;
    (void)!::write(told, &status, 1);
}

int keep_in_background(const LabPlan &plan)
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        throw refusal("pipe", "");
    }
    const Descriptor hears{ends[0]};
    Descriptor tells{ends[1]};
    (void)std::fflush(stdout);
    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child < 0) {
        throw refusal("fork", "");
    }
    if (child == 0) {
        int status = exit_lab_failed;
        try {
            die_with_parent(parent);
            (void)::setsid();
            Progress progress{plan};
            progress.when_up([&](bool complete) {
                print_hints(plan, true);
                let_go(progress, tells.get(), complete);
            });
            Keeper keeper{plan};
            status = keeper.run(progress);
        } catch (const std::exception &why) {
            complain(why.what(), status);
        }
        ::_exit(status);
    }
    tells.reset();
    char up_status = 0;
    return ::read(hears.get(), &up_status, 1) == 1 ? up_status : exit_lab_failed;
}

int up(const UpRequest &request)
{
    check_name(request.name);
    if (find_companion("switchlab-pm").empty()) {
        throw Refusal("the daemons are missing: they are built and installed with switchlab, beside it");
    }
    const LabPlan plan{request.name, request.keep, plan_units(request.units, request.models)};
    return request.detach ? keep_in_background(plan) : keep_in_foreground(plan);
}

} // namespace

void add_up_command(CLI::App &app, int &status)
{
    CLI::App *const command = app.add_subcommand("up", "Brings up a switch of one or several units");
    const auto request = std::make_shared<UpRequest>();
    command->add_option("--units", request->units, "How many, 1 to 8 (as many as there are models, or 1)")
        ->check(CLI::Range(1, most_units));
    command->add_option("--models", request->models, "A,B,...: their models, by number or name")->delimiter(',');
    command->add_option("--name", request->name, "What this lab is called, for when there are several")
        ->envname(lab_name_variable)
        ->capture_default_str();
    command
        ->add_option("--keep", request->keep, "Folder below /var, /tmp, /mnt or /dev that stays visible (repeatable)")
        ->allow_extra_args(false);
    command->add_flag("-d,--detach", request->detach, "Come back once it is up, instead of staying until Ctrl-C");
    command->callback([request, &status] { status = up(*request); });
    command->footer("Examples:\n"
                    "  switchlab up                              one unit, until Ctrl-C\n"
                    "  switchlab up --units 3 -d                 a stack of three, in the background\n"
                    "  switchlab up --models 17,ETH24GX+S+L3     two units of these models\n");
}

void add_down_command(CLI::App &app)
{
    CLI::App *const command = app.add_subcommand("down", "Takes a lab down, with everything in it");
    const auto name = std::make_shared<std::string>();
    command->add_option("--name", *name, "Which lab, when there are several")->envname(lab_name_variable);
    command->footer("Examples:\n"
                    "  switchlab down\n"
                    "  switchlab down --name other     when there are several\n");
    command->callback([name] {
        const std::string lab = choose_lab(*name);
        (void)ask_lab(lab, {{"request", "down"}});
        std::printf("lab '%s' is down\n", lab.c_str());
    });
}

void add_power_command(CLI::App &app)
{
    CLI::App *const command =
        app.add_subcommand("power", "Pulls the plug of a unit, or puts it back; its flash keeps what was written");
    const auto name = std::make_shared<std::string>();
    const auto unit = std::make_shared<std::string>();
    const auto state = std::make_shared<std::string>();
    command->add_option("UNIT", *unit, "Counted from 0")->required();
    command->add_option("STATE", *state, "on, off or cycle")->required()->check(CLI::IsMember({"on", "off", "cycle"}));
    command->add_option("--name", *name, "Which lab, when there are several")->envname(lab_name_variable);
    command->footer("Examples:\n"
                    "  switchlab power 1 cycle     the plug of unit 1, out and in again\n"
                    "  switchlab power 0 off\n");
    command->callback([=] {
        const std::string lab = choose_lab(*name);
        const int number = view_lab(lab).part(*unit).number;
        if (number < 0) {
            throw Refusal("the station has no plug");
        }
        (void)ask_lab(lab, {{"request", "power"}, {"unit", number}, {"power", *state}});
        const std::string wanted = *state == "off" ? "off" : "ready";
        for (int looks = 0; view_lab(lab).part(*unit).stage != wanted; ++looks) {
            if (looks == 600) {
                throw Refusal("unit " + *unit + " is still '" + view_lab(lab).part(*unit).stage + "'");
            }
            (void)::usleep(50'000);
        }
        std::printf("unit %s is %s\n", unit->c_str(), wanted.c_str());
    });
}

} // namespace switchlab
