// SPDX-License-Identifier: Apache-2.0
#include "lab/stack/lab.h"

#include "lab/mounts.h"
#include "lab/refusal.h"
#include "lab/sandbox/loopback.h"
#include "lab/sandbox/namespaces.h"
#include "lab/sandbox/sandbox.h"
#include "lab/stack/station.h"
#include "lab/stack/unit.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <string_view>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

namespace switchlab {
namespace {

using switchcfg::Descriptor;

constexpr char management_bridge[] = "management";
constexpr char control_bridge[] = "control";
constexpr char stacking_bridge[] = "stacking";

class Lab {
  public:
    Lab(const LabPlan &plan, Inside &inside, const Events &events, int commands)
        : plan_(plan), inside_(inside), events_(events), commands_(commands), pids_(plan.units.size(), 0)
    {
        sigset_t children;
        ::sigemptyset(&children);
        ::sigaddset(&children, SIGCHLD);
        ::sigprocmask(SIG_SETMASK, &children, nullptr);
        children_.reset(::signalfd(-1, &children, SFD_CLOEXEC | SFD_NONBLOCK));
        if (!children_) {
            throw refusal("signalfd", "");
        }
    }

    int run()
    {
        ::prctl(PR_SET_NAME, "switchlab-lab");
        leave_terminal();
        (void)::sethostname(plan_.name.c_str(), plan_.name.size());
        make_inside();
        make_bridges();
        station_ = start_with_rights(lab_namespaces & ~static_cast<unsigned long>(CLONE_NEWNET),
            [this] { return run_station(inside_, events_); });
        for (const UnitPlan &unit : plan_.units) {
            power_on(unit, static_cast<int>(plan_.units.size()));
        }
        serve();
    }

  private:
    // What the terminal's keys send is for the keeper, and who waits for the end of its output need not wait for ours.
    static void leave_terminal()
    {
        (void)::setsid();
        const Descriptor nothing{::open("/dev/null", O_RDWR | O_CLOEXEC)};
        for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            ::dup2(nothing.get(), standard);
        }
    }

    // The mounts that all units start from: the machine's, and a place that outlives their power.
    void make_inside()
    {
        make_mounts_private();
        inside_.kept().hold();
        mount_tmpfs("/mnt", "mode=755");
        inside_.kept().put_back();
        make_folder("/mnt/.switchlab", 0755);
        for (const UnitPlan &unit : plan_.units) {
            make_folders(unit_store(unit) + "/flash/log", 0755);
        }
        if (::mount("proc", "/proc", "proc", MS_NOSUID | MS_NODEV | MS_NOEXEC, nullptr) != 0) {
            throw refusal("mount proc on", "/proc");
        }
    }

    static void make_bridges()
    {
        bring_loopback_up();
        std::uint8_t number = 0;
        for (const char *bridge : {management_bridge, control_bridge, stacking_bridge}) {
            make_bridge(bridge, {0x02, 0x00, 0x54, 0x51, 0x01, number++});
        }
        add_address(management_bridge, std::string{station_address} + "/24");
    }

    pid_t &pid_of(const UnitPlan &unit) { return pids_[static_cast<std::size_t>(unit.number)]; }

    void power_on(const UnitPlan &unit, int expected_units)
    {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0) {
            throw refusal("pipe", "");
        }
        const Descriptor links_made{ends[0]};
        const Descriptor links_maker{ends[1]};
        const auto units = static_cast<int>(plan_.units.size());
        const UnitStart start{&unit, &inside_, units, expected_units, links_made.get()};
        pid_of(unit) = start_with_rights(lab_namespaces, [&] {
            // It must see the end of the pipe.
            ::close(links_maker.get());
            return run_unit(start, events_);
        });
        const std::string name = unit.host_name() + "-";
        const auto other_mac = [&](std::uint8_t kind) {
            Mac mac = unit.mac;
            mac[4] = kind;
            return mac;
        };
        join_to_bridge({stacking_bridge, name + "stack", stacking_interface, unit.mac}, pid_of(unit));
        join_to_bridge({management_bridge, name + "mgmt", unit.management_interface, other_mac(0x60)}, pid_of(unit));
        join_to_bridge({control_bridge, name + "vlan3", unit.control_interface, other_mac(0x63)}, pid_of(unit));
        (void)!::write(links_maker.get(), "", 1);
    }

    // One unit that cannot come back is no reason to take the others down.
    void power_on_again(const UnitPlan &unit)
    {
        try {
            power_on(unit, powered() + 1);
        } catch (const std::exception &why) {
            events_.trouble(unit.number, why.what());
            power_off(unit);
        }
    }

    // As when the plug is pulled: everything of the unit ends in the middle of what it does.
    void power_off(const UnitPlan &unit)
    {
        if (pid_t &pid = pid_of(unit); pid != 0) {
            ::kill(pid, SIGKILL);
            (void)::waitpid(pid, nullptr, 0);
            pid = 0;
            events_.stage(unit.number, "off");
        }
    }

    int powered() const
    {
        return static_cast<int>(std::ranges::count_if(pids_, [](pid_t pid) { return pid != 0; }));
    }

    void obey(const nlohmann::json &command)
    {
        const auto number = command.value("unit", -1);
        if (number < 0 || number >= static_cast<int>(plan_.units.size())) {
            return;
        }
        const UnitPlan &unit = plan_.units[static_cast<std::size_t>(number)];
        const std::string power = command.value("power", "");
        if (power == "off" || power == "cycle") {
            power_off(unit);
        }
        if ((power == "on" || power == "cycle") && pid_of(unit) == 0) {
            power_on_again(unit);
        }
    }

    void unit_ended(const UnitPlan &unit, int status)
    {
        pid_of(unit) = 0;
        const bool failed = WIFEXITED(status) && WEXITSTATUS(status) == exit_lab_failed;
        events_.stage(unit.number, failed ? "failed" : "off");
        if (WIFEXITED(status) && WEXITSTATUS(status) == unit_restarts) {
            power_on_again(unit);
        }
    }

    void reap()
    {
        signalfd_siginfo info{};
        (void)!::read(children_.get(), &info, sizeof info);
        int status = 0;
        for (pid_t pid = 0; (pid = ::waitpid(-1, &status, WNOHANG)) > 0;) {
            for (const UnitPlan &unit : plan_.units) {
                if (pid == pid_of(unit)) {
                    unit_ended(unit, status);
                }
            }
        }
    }

    [[noreturn]] void serve()
    {
        for (;;) {
            pollfd awaited[] = {{commands_, POLLIN, 0}, {children_.get(), POLLIN, 0}};
            if (::poll(awaited, 2, -1) < 0 && errno != EINTR) {
                throw refusal("poll", "");
            }
            if (awaited[0].revents != 0) {
                const std::optional<Message> command = receive_message(commands_);
                if (!command) {
                    ::_exit(0); // the keeper is gone
                }
                obey(command->body);
            }
            if (awaited[1].revents != 0) {
                reap();
            }
        }
    }

    const LabPlan &plan_;
    Inside &inside_;
    const Events &events_;
    int commands_;
    std::vector<pid_t> pids_;
    pid_t station_ = 0;
    Descriptor children_;
};

} // namespace

int run_lab(const LabPlan &plan, Inside &inside, const Events &events, int commands)
try {
    return Lab{plan, inside, events, commands}.run();
} catch (const std::exception &why) {
    events.trouble(the_station, why.what());
    return exit_lab_failed;
}

} // namespace switchlab
