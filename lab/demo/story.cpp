// SPDX-License-Identifier: Apache-2.0
#include "lab/demo/story.h"

#include "lab/demo/traces.h"

#include <nlohmann/json.hpp>

#include <unistd.h>

namespace switchlab::demo {
namespace {

using nlohmann::json;

class Story {
  public:
    Story(Stage &stage, int units) : stage_(stage), units_(units), last_(std::to_string(units - 1)) {}

    void tell()
    {
        stage_.chapter("A switch of " + std::to_string(units_) + " units comes up");
        stage_.say("Each unit is a small machine: private folders, its own network, flash and processes, and the "
                   "daemons of a switch. Links join them to one another, and to a station that receives their "
                   "notifications. Nothing of it needs rights, or touches this machine.");
        const Words up{"up", "--units", std::to_string(units_)};
        stage_.command(up);
        Running lab{up};
        std::string said;
        const std::string last = lab.read_until("is up:", [&](const std::string &line) {
            stage_.print(line);
            said += line + "\n";
        });
        stage_.check("the lab is up", last.find("ready after") != std::string::npos,
            "the line \"lab ... is up: ... ready after ...\"", said);
        daemons_run();
        stack_is_one();
        configuration_is_shared();
        boot_variable_survives();
        flap_is_notified();
        chip_is_called();
        routes_are_set();
        processors_are_watched();
        crash_is_reported();
        end(lab);
    }

  private:
    static Words on(const std::string &unit, const Words &command)
    {
        Words words{"shell", unit, "--"};
        words.insert(words.end(), command.begin(), command.end());
        return words;
    }

    json state() const
    {
        const Said said = stage_.run({"status", "--json"});
        json lab = json::parse(said.text, nullptr, false);
        if (!lab.is_object()) {
            throw Failed{"switchlab status --json did not say what the lab is like, but:\n" + said.text};
        }
        return lab;
    }

    static int pid_in(const json &daemons, const std::string &name)
    {
        for (const json &one : daemons) {
            if (one["name"] == name) {
                return one.value("pid", -1);
            }
        }
        return -1;
    }
    // Of a daemon, as its unit counts; -1 when it does not run.
    int pid_of(std::size_t unit, const std::string &daemon) const
    {
        return pid_in(state()["units"].at(unit)["daemons"], daemon);
    }

    void daemons_run()
    {
        const json lab = state();
        int running = 0;
        std::string missing;
        for (const json &unit : lab["units"]) {
            for (const json &daemon : unit["daemons"]) {
                const bool runs = daemon["running"];
                running += runs ? 1 : 0;
                if (!runs && daemon["state"] != "disabled") {
                    missing += "unit " + unit["unit"].dump() + " has no " + daemon["name"].get<std::string>() + "\n";
                }
            }
        }
        stage_.check(std::to_string(running) + " daemons run, in " + lab["processes"].dump() + " processes and " +
                         std::to_string(lab["memory_kib"].get<int>() / 1024) + " MiB",
            missing.empty(), "every daemon running that is not disabled", missing);
    }

    void stack_is_one()
    {
        stage_.chapter("The units have found one another");
        stage_.say("Every unit says on the stacking link what it is, and each writes what it hears into the status "
                   "region, memory that all its daemons share. Units count from 0 here. What unit " +
                   last_ + " knows:");
        stage_.show(on(last_, {"switchcfg", "units"}));
        for (int unit = 0; unit < units_; ++unit) {
            const std::string text = stage_.run(on(std::to_string(unit), {"switchcfg", "units", "--json"})).text;
            int present = 0;
            for (std::size_t at = 0; (at = text.find("\"present\": true", at)) != std::string::npos; ++at) {
                ++present;
            }
            stage_.check("unit " + std::to_string(unit) + " sees all " + std::to_string(units_), present == units_,
                std::to_string(units_) + " units that are present", text);
        }
    }

    void configuration_is_shared()
    {
        stage_.chapter("A change of the configuration is seen by all");
        stage_.say("Every unit has its own copy of the configuration, mapped into all its daemons. A change is a store "
                   "into memory; the stack manager carries it to the other units.");
        stage_.show(on("0", {"switchcfg", "config", "set", "time.utc_offset_minutes", "180"}));
        const auto read = [](int unit) {
            return on(std::to_string(unit), {"switchcfg", "config", "get", "time.utc_offset_minutes"});
        };
        for (int unit = 0; unit < units_; ++unit) {
            stage_.check_comes("unit " + std::to_string(unit) + " has it", read(unit), exactly("180"));
        }
        stage_.say("The other way round, too:");
        stage_.show(on(last_, {"switchcfg", "config", "set", "time.utc_offset_minutes", "60"}));
        stage_.check_comes("unit 0 has what unit " + last_ + " was told", read(0), exactly("60"));
    }

    void boot_variable_survives()
    {
        stage_.chapter("A boot variable outlives the power");
        stage_.say("The boot loader's variables are in flash, with a backup in another flash. Unit 1 gets one changed "
                   "and saved.");
        stage_.show(on("1", {"switchcfg", "env", "set", "bootdelay", "7"}));
        stage_.check_says("saved", stage_.show(on("1", {"switchcfg", "env", "save"})), {""});
        stage_.say("Then it is changed once more, and the power goes in the middle of that save: the flash has been "
                   "erased, and hardly anything is written yet.");
        stage_.show(on("1", {"switchcfg", "env", "set", "bootdelay", "0"}));
        stage_.show(on("1", {"switchlab", "flash", "cut-after", "5"}));
        const Said broken = stage_.show(on("1", {"switchcfg", "env", "save"}));
        stage_.check("the second save has failed", broken.status == 1, "exit status 1",
            broken.text + "exit status " + std::to_string(broken.status));
        const bool restarts = stage_.run(on("1", {"test", "-x", "/sbin/shutdown"})).status == 0;
        stage_.show({"power", "1", "cycle"});
        stage_.say("The unit finds no environment in flash, writes the backup there, and restarts.");
        if (!restarts) {
            stage_.say("This machine has no /sbin/shutdown that could do it, so the plug has to:");
            stage_.show({"power", "1", "cycle"});
        }
        stage_.check_comes("what was saved is there", on("1", {"switchcfg", "env", "get", "bootdelay"}), exactly("7"));
        stage_.check_comes(
            "in flash and in the backup, both whole", on("1", {"switchcfg", "env", "check"}), {"in step with flash"});
    }

    void flap_is_notified()
    {
        stage_.chapter("A link flaps, and the network management hears of it");
        stage_.say("The administrator, on unit 0, wants to hear of flapping links, and of those of port 5 of unit 1 "
                   "(for him, units and ports count from 1: 2/5).");
        stage_.show(on("0", {"switchcfg", "trap", "enable", "link_flap_detected"}));
        stage_.show(on("0", {"switchcfg", "trap", "enable", "link_flap_detected", "--port", "2/5"}));
        for (const char *flag : {"trap.enable[25]", "trap.port_enable[1][4]"}) {
            const Words read{"switchcfg", "config", "get", flag};
            const std::string value = stage_.run(on("0", read)).text;
            stage_.check_comes(
                std::string{"unit 1 has heard that it is wanted: "} + flag, on("1", read), exactly(value));
        }
        stage_.say("The daemon that sees the flapping, here on unit 1, makes one call. The notification is queued in "
                   "the status region, and the unit's SNMP agent sends it.");
        stage_.show(on("1", {"switchcfg", "trap", "send", "link_flap_detected", "1", "4"}));
        if (pid_in(state()["station"]["daemons"], "snmptrapd") < 0) {
            stage_.leave_out("snmptrapd is not installed, so nobody receives the notification");
            return;
        }
        stage_.check_comes(
            "the station has received it, and knows it by name", {"logs", "station"}, {"swLinkFlapDetectedEvent"});
        const Said received = stage_.show({"logs", "station"}, {"swLinkFlap"});
        stage_.check_says("from unit 1", received, {"[10.0.0.11]"});
        stage_.check_says("with the port, which has number 69 in the whole stack", received, {"swPortNumber.69 = 69"});
    }

    void chip_is_called()
    {
        stage_.chapter("One call into the switch chip, from two sides");
        if (pid_of(0, "bcmd") < 0) {
            stage_.leave_out("switchlab-bcmd, the daemon of the switch chip, is not built");
            return;
        }
        stage_.say("The chip belongs to one daemon. It called its function \"version\" itself when it started, without "
                   "leaving its process:");
        const std::string mark = "result 0, ";
        const Said logs = stage_.run({"logs", "0"});
        const std::size_t at = logs.text.find(mark);
        const std::size_t begin = at + mark.size();
        const std::string own =
            at == std::string::npos ? "" : logs.text.substr(begin, logs.text.find('\n', begin) - begin);
        stage_.check("its answer is in the log of unit 0", !own.empty(), "a line with '" + mark + "'", logs.text);
        stage_.print(own);
        stage_.say("Any other process makes the same call, and it travels:");
        stage_.check_says(
            "both have the same answer", stage_.show(on("0", {"switchcfg", "call", "general", "version"})), {own});
    }

    void routes_are_set()
    {
        stage_.chapter("A command to the routing stack");
        if (pid_of(0, "routing") < 0) {
            stage_.leave_out("switchlab-routing, the routing stack, is not built");
            return;
        }
        stage_.show(on("0", {"switchcfg", "routing", "add", "192.0.2.0/24", "10.0.0.1"}));
        stage_.check_says(
            "the route is in its table", stage_.show(on("0", {"switchcfg", "routing", "routes"})), {"192.0.2.0/24"});
    }

    void processors_are_watched()
    {
        stage_.chapter("What the processor of another unit does");
        if (pid_of(0, "cpumon") < 0) {
            stage_.leave_out("switchlab-cpumon, the CPU monitor, is not built");
            return;
        }
        stage_.say("Unit 0 asks the CPU monitor of unit 1. The heading is for the administrator, who counts from 1:");
        const Said table = stage_.show(on("0", {"switchcfg", "cpu", "1"}), {"Processor", "PROCESS", "switchlab"});
        stage_.check_says("the processes of unit 1", table, {"switchlab-unit1"});
        stage_.check_says("under the heading of unit 2", table, {"of unit 2"});
    }

    void crash_is_reported()
    {
        stage_.chapter("A daemon crashes");
        const int before = pid_of(1, "stackd");
        stage_.say("The stack manager of unit 1, process " + std::to_string(before) +
                   " there, gets the signal of a bad memory access (the kernel keeps 15 letters of its name).");
        stage_.show(on("1", {"switchcfg", "kill", "-s", "SEGV", "switchlab-stack"}));
        stage_.check_comes("it has left a report of where it was", {"logs", "1"}, {"Backtrace start"});
        const std::string mark = "(PID " + std::to_string(before) + ")";
        stage_.check_says(
            "with the calls that led there", stage_.show({"logs", "1"}, {"received signal", mark}), {mark});
        stage_.check_comes("the process manager says how it ended", {"logs", "1"}, {"killed by signal 11"});
        int after = -1;
        for (int again = 0; again < 100 && (after < 0 || after == before); ++again) {
            (void)::usleep(50'000);
            after = pid_of(1, "stackd");
        }
        stage_.check("and has started it again, as process " + std::to_string(after), after > 0 && after != before,
            "a stackd that is not process " + std::to_string(before),
            after < 0 ? "none" : "process " + std::to_string(after));
        stage_.check_comes("the stack is whole again", on("1", {"switchcfg", "units"}),
            {last_ + std::string(6 - last_.size(), ' ') + "present"});
    }

    void end(Running &lab)
    {
        stage_.chapter("The end");
        const Traces traces{state()["keeper_pid"]};
        stage_.show({"down"});
        const int status = lab.wait();
        stage_.check("the lab has ended in order", status == 0, "exit status 0 of switchlab up",
            "exit status " + std::to_string(status));
        std::string left = traces.left();
        for (int again = 0; again < 40 && !left.empty(); ++again) {
            (void)::usleep(50'000);
            left = traces.left();
        }
        stage_.check("none of its " + std::to_string(traces.processes()) + " processes, " +
                         std::to_string(traces.namespaces()) + " namespaces and " + std::to_string(traces.mounts()) +
                         " mounts is left",
            left.empty(), "nothing", left);
        const Said gone = stage_.run({"status"});
        stage_.check("and nobody answers to its name", gone.status != 0, "switchlab status to fail", gone.text);
    }

    Stage &stage_;
    int units_;
    std::string last_;
};

} // namespace

void tell_story(Stage &stage, int units)
{
    Story{stage, units}.tell();
}

} // namespace switchlab::demo
