// SPDX-License-Identifier: Apache-2.0
#include "lab/demo/story.h"

#include "lab/programs.h"

#include <nlohmann/json.hpp>

#include <string_view>
#include <unistd.h>

namespace switchlab::demo {
namespace {

class Story {
  public:
    Story(Stage &stage, int units) : stage_(stage), units_(units), last_(std::to_string(units - 1)) {}

    void tell()
    {
        stage_.chapter("A switch of " + std::to_string(units_) + " units comes up");
        stage_.say(
            "Each unit is a small machine: private folders, its own network, flash and processes, and the daemons "
            "of a switch.");
        const Words up{"up", "--units", std::to_string(units_)};
        stage_.command(up);
        Running lab{up};
        const bool came = lab.read_until("is up:", [this](const std::string &line) { stage_.print(line); });
        stage_.check("the lab is up", came);
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

    nlohmann::json state() const
    {
        return nlohmann::json::parse(stage_.run({"status", "--json"}).text, nullptr, false);
    }

    // -1 when it does not run.
    int pid_of(const std::string &unit, const std::string &daemon) const
    {
        const nlohmann::json lab = state();
        for (const auto &one : lab["units"].at(std::stoul(unit))["daemons"]) {
            if (one["name"] == daemon) {
                return one.value("pid", -1);
            }
        }
        return -1;
    }
    bool has(const std::string &daemon) const { return pid_of("0", daemon) >= 0; }

    void daemons_run()
    {
        const nlohmann::json lab = state();
        int running = 0;
        bool all = lab.is_object();
        for (const auto &unit : lab["units"]) {
            for (const auto &daemon : unit["daemons"]) {
                running += daemon["running"] ? 1 : 0;
                all = all && (daemon["running"] || daemon["state"] == "disabled");
            }
        }
        stage_.check(std::to_string(running) + " daemons run, in " + lab["processes"].dump() + " processes and " +
                         std::to_string(lab["memory_kib"].get<int>() / 1024) + " MiB",
            all, lab.dump(2));
    }

    void stack_is_one()
    {
        stage_.chapter("The units have found one another");
        stage_.say(
            "Every unit says on the stacking link what it is, and all of them write what they hear into the status "
            "region that their daemons share. What unit " +
            last_ + " knows:");
        stage_.show(on(last_, {"switchcfg", "units"}));
        for (int unit = 0; unit < units_; ++unit) {
            std::string text = stage_.run(on(std::to_string(unit), {"switchcfg", "units", "--json"})).text;
            int present = 0;
            for (std::size_t at = 0; (at = text.find("\"present\": true", at)) != std::string::npos; ++at) {
                ++present;
            }
            stage_.check(
                "unit " + std::to_string(unit) + " sees all " + std::to_string(units_), present == units_, text);
        }
    }

    void configuration_is_shared()
    {
        stage_.chapter("A change of the configuration is seen by all");
        stage_.say(
            "Every unit has its own copy of the configuration, mapped into all its daemons. A change is a store into "
            "memory; the stack manager carries it to the other units.");
        stage_.show(on("0", {"switchcfg", "config", "set", "time.utc_offset_minutes", "180"}));
        const auto read = [](int unit) {
            return on(std::to_string(unit), {"switchcfg", "config", "get", "time.utc_offset_minutes"});
        };
        for (int unit = 0; unit < units_; ++unit) {
            stage_.check_comes("unit " + std::to_string(unit) + " has it", read(unit), "180");
        }
        stage_.say("The other way round, too:");
        stage_.show(on(last_, {"switchcfg", "config", "set", "time.utc_offset_minutes", "60"}));
        stage_.check_comes("unit 0 has what unit " + last_ + " was told", read(0), "60");
    }

    void boot_variable_survives()
    {
        stage_.chapter("A boot variable outlives the power");
        stage_.say(
            "The boot loader's variables are in flash, with a backup in another flash. Unit 1 gets one changed and "
            "saved.");
        stage_.show(on("1", {"switchcfg", "env", "set", "bootdelay", "7"}));
        stage_.check("saved", stage_.show(on("1", {"switchcfg", "env", "save"})).status == 0);
        stage_.say(
            "Then it is changed once more, and the power goes in the middle of that save: the flash has been erased, "
            "and hardly anything is written yet.");
        stage_.run(on("1", {"switchcfg", "env", "set", "bootdelay", "0"}));
        stage_.show(on("1", {"switchlab", "flash", "cut-after", "5"}));
        stage_.check("the second save fails", stage_.show(on("1", {"switchcfg", "env", "save"})).status != 0);
        const bool restarts = stage_.run(on("1", {"test", "-x", "/sbin/shutdown"})).status == 0;
        stage_.show({"power", "1", "cycle"});
        stage_.say("The unit finds no environment in flash, writes the backup there, and restarts.");
        if (!restarts) {
            stage_.say("This machine has no /sbin/shutdown that could do it, so the plug has to:");
            stage_.show({"power", "1", "cycle"});
        }
        stage_.check_comes("what was saved is there", on("1", {"switchcfg", "env", "get", "bootdelay"}), "7");
        stage_.check_comes(
            "in flash and in the backup, both whole", on("1", {"switchcfg", "env", "check"}), "in step with flash");
    }

    void flap_is_notified()
    {
        stage_.chapter("A link flaps, and the network management hears of it");
        stage_.show(on("0", {"switchcfg", "trap", "enable", "link_flap_detected"}));
        stage_.show(on("0", {"switchcfg", "trap", "enable", "link_flap_detected", "--port", "1/5"}));
        stage_.say(
            "The daemon that sees the flapping, here on unit 1, makes one call. The notification is queued in the "
            "status region, and the unit's SNMP agent sends it.");
        for (const char *flag : {"trap.enable[25]", "trap.port_enable[1][4][25]"}) {
            stage_.check_comes(std::string{"unit 1 knows that it is wanted: "} + flag,
                on("1", {"switchcfg", "config", "get", flag}), "1");
        }
        const Words send = on("1", {"switchcfg", "trap", "send", "link_flap_detected", "0", "4"});
        if (pid_of_station() < 0) {
            stage_.show(send);
            stage_.say("snmptrapd is not installed here, so nobody receives it.");
            return;
        }
        stage_.show(send);
        stage_.check_comes(
            "the station has received it, and knows it by name", {"logs", "station"}, "swLinkFlapDetectedEvent");
        const Said received = stage_.show({"logs", "station"}, "swLinkFlap");
        stage_.check_says("from unit 1", received, "[10.0.0.11]");
        stage_.check_says("with the port", received, "swPortNumber.5 = 5");
    }

    int pid_of_station() const
    {
        const nlohmann::json lab = state();
        return lab["station"]["daemons"].at(0).value("pid", -1);
    }

    void chip_is_called()
    {
        if (!has("bcmd")) {
            return;
        }
        stage_.chapter("One call into the switch chip, from two sides");
        stage_.say("The chip belongs to one daemon. It called its function \"version\" itself when it started, without "
                   "leaving its process:");
        const Said logs = stage_.run({"logs", "0"});
        const std::size_t at = logs.text.find("result 0, ");
        const std::string own =
            at == std::string::npos ? "" : logs.text.substr(at + 10, logs.text.find('\n', at) - at - 10);
        stage_.print(own);
        stage_.say("Any other process makes the same call, and it travels:");
        const Said call = stage_.show(on("0", {"switchcfg", "call", "general", "version"}));
        stage_.check("both have the same answer", !own.empty() && call.text.find(own) != std::string::npos, call.text);
    }

    void routes_are_set()
    {
        if (!has("routing")) {
            return;
        }
        stage_.chapter("A command to the routing stack");
        stage_.show(on("0", {"switchcfg", "routing", "add", "192.0.2.0/24", "10.0.0.1"}));
        stage_.check_says(
            "the route is in its table", stage_.show(on("0", {"switchcfg", "routing", "routes"})), "192.0.2.0/24");
    }

    void processors_are_watched()
    {
        if (!has("cpumon")) {
            return;
        }
        stage_.chapter("What the processor of another unit does");
        stage_.say(
            "Unit 0 asks the CPU monitor of unit 1, over the stacking link. Units count from 1 for the reader of a "
            "table:");
        const Said table = stage_.show(on("0", {"switchcfg", "cpu", "1"}), "switchlab");
        stage_.check_says("the processes of unit 1", table, "switchlab-unit1");
        stage_.check_says("under the heading of unit 2", table, "of unit 2");
    }

    void crash_is_reported()
    {
        stage_.chapter("A daemon crashes");
        const int before = pid_of("1", "stackd");
        const std::string pid = std::to_string(before);
        stage_.say("The stack manager of unit 1 (PID " + pid + " there) is hit by the signal of a bad memory access.");
        stage_.show(on("1", {"kill", "-SEGV", pid}));
        stage_.check_comes("it left a report of where it was", {"logs", "1"}, "received signal 11");
        stage_.show({"logs", "1"}, "received signal 11");
        stage_.check_comes("the process manager says how it ended", {"logs", "1"}, "killed by signal 11");
        int after = -1;
        for (int again = 0; again < 100 && (after < 0 || after == before); ++again) {
            (void)::usleep(50'000);
            after = pid_of("1", "stackd");
        }
        stage_.check("and has started it again", after > 0 && after != before);
    }

    void end(Running &lab)
    {
        stage_.chapter("The end");
        stage_.show({"down"});
        stage_.check("the lab has ended in order", lab.wait() == 0);
        stage_.check("and nothing of it is left", stage_.run({"status"}).status != 0);
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
