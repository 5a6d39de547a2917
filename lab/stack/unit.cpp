// SPDX-License-Identifier: Apache-2.0
#include "lab/stack/unit.h"

#include "core/status_layout.h"
#include "lab/flash/device.h"
#include "lab/mounts.h"
#include "lab/refusal.h"
#include "lab/sandbox/namespaces.h"
#include "lab/sandbox/power_programs.h"
#include "lab/sandbox/programs.h"
#include "lab/sandbox/sandbox.h"
#include "lab/stack/daemons.h"
#include "lab/text_file.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace switchlab {
namespace {

using switchcfg::Descriptor;

constexpr char process_list_path[] = "/etc/switchlab/processes";
constexpr char daemon_log[] = "/var/log/daemons.log";
constexpr timespec probe_interval{0, 10'000'000};
constexpr int looks_before_complaint = 1500;
constexpr timespec respawn_pause{0, 200'000'000};

class Unit {
  public:
    Unit(const UnitStart &start, const Events &events) : start_(start), plan_(*start.plan), events_(events)
    {
        ::sigemptyset(&awaited_);
        for (const int number : {SIGCHLD, SIGUSR1, SIGUSR2}) {
            ::sigaddset(&awaited_, number);
        }
        ::sigprocmask(SIG_BLOCK, &awaited_, nullptr);
    }

    int run()
    {
        const std::string name = "switchlab-" + plan_.host_name();
        ::prctl(PR_SET_NAME, name.c_str());
        make_inside();
        make_links();
        start_flash();
        enter_environment();
        start_up();
        return look_after_daemons();
    }

  private:
    void stage(const char *name) const { events_.stage(plan_.number, name); }

    void make_inside()
    {
        stage("folders");
        const std::string store = unit_store(plan_);
        flash_.wanted = true;
        flash_.image = store + "/flash.img";
        new_flash_ = ::access(flash_.image.c_str(), F_OK) != 0;
        prepare_flash(flash_);
        start_.inside->kept().keep(store + "/flash");
        start_.inside->kept().keep(flash_.image);
        (void)start_.inside->kept().keep_if_possible(std::filesystem::path{flash_.library}.parent_path().string());
        (void)::sethostname(plan_.host_name().c_str(), plan_.host_name().size());
        start_.inside->make();
        bind_mount((store + "/flash").c_str(), "/mnt/flash");
        make_folder("/etc/switchlab", 0755);
        make_folders("/var/lib/snmp/cert_indexes", 0700); // the agent would tell us that it made them
        write_power_program();
        write_file("/etc/hosts", hosts());
        write_file("/etc/hostname", plan_.host_name() + "\n");
    }

    // On a whole unit these do restart and stop it.
    static void write_power_program()
    {
        write_file(power_program_path, std::string{"#!/bin/sh\nprintf '%s %s\\n' \"${0##*/}\" \"$*\" >>"} + power_log +
                                           "\ncase \"${0##*/} $*\" in\n"
                                           "reboot* | *' -r'*) kill -USR1 1 ;;\n"
                                           "*) kill -USR2 1 ;;\n"
                                           "esac\n");
    }

    std::string hosts() const
    {
        return "127.0.0.1 localhost\n::1 localhost\n" + plan_.management + " " + plan_.host_name() + "\n" +
               station_address + " station\n";
    }

    void make_links()
    {
        stage("links");
        char byte = 0;
        if (::read(start_.links_made, &byte, 1) != 1) {
            throw Refusal("the links were not made");
        }
        bring_up(stacking_interface);
        add_address(stacking_interface, plan_.stacking + "/64");
        bring_up(plan_.management_interface);
        add_address(plan_.management_interface, plan_.management + "/24");
        bring_up(plan_.control_interface);
        for (const std::string &address : plan_.control) {
            add_address(plan_.control_interface, address + "/64");
        }
    }

    void start_flash()
    {
        stage("flash");
        if (new_flash_) {
            program_at_factory();
        }
        start_flash_device(flash_);
    }

    // The boot loader's variables that every switch leaves the factory with.
    void program_at_factory() const
    {
        const std::string tool = find_companion("switchcfg");
        if (tool.empty()) {
            return;
        }
        const Mac &mac = plan_.mac;
        char address[18];
        (void)std::snprintf(
            address, sizeof address, "%02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1], mac[2], mac[3], mac[4], mac[5]);
        write_file("/tmp/factory.txt", std::string{"bootcmd=bootm 0xe8000000\nbootdelay=3\nethaddr="} + address +
                                           "\nserial=" + std::to_string(4711 + plan_.number) + "\n");
        const std::string image = "/tmp/factory.image"; // the tool writes into what is an environment already, or new
        run_to_end({tool, "env", "--image", image, "import", "/tmp/factory.txt"});
        const std::string content = read_file(image);
        if (content.size() == flash_.geometry.size) {
            write_file(flash_.image, content);
        }
    }

    void enter_environment() const
    {
        const char *const path = std::getenv("PATH");
        ::setenv("PATH",
            (companion_folders() + ":" + (path != nullptr ? path : "/usr/bin:/bin") + ":/usr/sbin:/sbin").c_str(), 1);
        nlohmann::json environment;
        for (const char *name : {"PATH", "LD_PRELOAD", "ASAN_OPTIONS"}) {
            if (const char *const value = std::getenv(name); value != nullptr) {
                environment[name] = value;
            }
        }
        nlohmann::json daemons = nlohmann::json::array();
        for (const Daemon &daemon : daemons_) {
            daemons.push_back({{"name", daemon.name}, {"program", daemon.program}, {"state", daemon.state}});
        }
        events_.entrance(plan_.number, environment, daemons);
    }

    // What a switch does before its process manager runs.
    void start_up() const
    {
        stage("daemons");
        write_file(process_list_path, process_list(daemons_));
        if (const std::string tool = find_companion("switchcfg"); !tool.empty()) {
            run_to_end({tool, "env", "start"});
        }
    }

    pid_t start(std::vector<std::string> command) const
    {
        const pid_t child = ::fork();
        if (child < 0) {
            throw refusal("fork", "");
        }
        if (child == 0) {
            ::sigprocmask(SIG_UNBLOCK, &awaited_, nullptr);
            const Descriptor log{::open(daemon_log, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644)};
            const Descriptor nothing{::open("/dev/null", O_RDONLY | O_CLOEXEC)};
            ::dup2(nothing.get(), STDIN_FILENO);
            ::dup2(log.get(), STDOUT_FILENO);
            ::dup2(log.get(), STDERR_FILENO);
            std::vector<char *> words;
            words.reserve(command.size() + 1);
            for (std::string &word : command) {
                words.push_back(word.data());
            }
            words.push_back(nullptr);
            execute(words.data());
        }
        return child;
    }

    void run_to_end(std::vector<std::string> command) const
    {
        const pid_t child = start(std::move(command));
        int status = 0;
        while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
        }
    }

    // Until the unit is told to restart or halt. Its end by power-off is nobody's to see.
    int look_after_daemons()
    {
        const std::string manager = find_companion("switchlab-pm");
        pid_t running = 0;
        for (int looks = 0;; ++looks) {
            if (running == 0) {
                running = start({manager, process_list_path});
            }
            const timespec pause = probe_interval;
            const int number = ready_ ? ::sigwaitinfo(&awaited_, nullptr) : ::sigtimedwait(&awaited_, nullptr, &pause);
            if (number == SIGUSR1 || number == SIGUSR2) {
                return number == SIGUSR1 ? unit_restarts : unit_halted;
            }
            for (pid_t pid = 0; (pid = ::waitpid(-1, nullptr, WNOHANG)) > 0;) {
                if (pid == running) { // its processes have ended with it
                    running = 0;
                    (void)::nanosleep(&respawn_pause, nullptr);
                }
            }
            if (!ready_) {
                see_whether_ready(looks);
            }
        }
    }

    void see_whether_ready(int looks)
    {
        std::string missing;
        if (const int units = units_in_stack(); units < start_.expected_units) {
            missing = std::to_string(units) + " of " + std::to_string(start_.expected_units) + " units in the stack";
        }
        for (const Daemon &daemon : daemons_) {
            if (daemon.state == "enabled" && daemon.port != 0 && !somebody_listens(daemon.port)) {
                missing += (missing.empty() ? "" : ", ") + daemon.name + " does not listen on port " +
                           std::to_string(daemon.port);
            }
        }
        if (missing.empty()) {
            ready_ = true;
            stage("ready");
        } else if (looks == looks_before_complaint) {
            events_.trouble(plan_.number, "not ready: " + missing);
            stage("incomplete");
        }
    }

    int units_in_stack() const
    {
        namespace layout = switchcfg::status_layout;
        const bool has_stackd =
            std::ranges::any_of(daemons_, [](const Daemon &daemon) { return daemon.name == "stackd"; });
        const Descriptor region{::open("/var/status", O_RDONLY | O_CLOEXEC)};
        int present = has_stackd ? 0 : start_.expected_units; // nobody to wait for
        for (std::uint32_t unit = 0; region && has_stackd && unit < layout::max_units; ++unit) {
            std::int32_t word = 0;
            const auto got = ::pread(region.get(), &word, sizeof word, layout::unit_present.place_of(unit));
            present += got == sizeof word && word != 0 ? 1 : 0;
        }
        return present;
    }

    UnitStart start_;
    const UnitPlan &plan_;
    const Events &events_;
    std::vector<Daemon> daemons_ = daemons_of(plan_, start_.units);
    FlashRequest flash_;
    bool new_flash_ = false;
    bool ready_ = false;
    sigset_t awaited_{};
};

} // namespace

std::string unit_store(const UnitPlan &unit)
{
    return "/mnt/.switchlab/" + unit.host_name();
}

int run_unit(const UnitStart &start, const Events &events)
try {
    return Unit{start, events}.run();
} catch (const std::exception &why) {
    events.trouble(start.plan->number, why.what());
    return exit_lab_failed;
}

} // namespace switchlab
