// SPDX-License-Identifier: Apache-2.0
#include "tools/examples.h"

#include <string_view>

namespace switchcfg::tool {
namespace {

struct Example {
    std::string_view command; // of the first level
    std::string_view line;    // behind "switchcfg "
    std::string_view what;
};

constexpr Example examples[] = {
    {"init", "init", "make the files that all processes share"},
    {"config", "config list sntp", "what is set, of the fields whose name begins so"},
    {"config", "config set time.utc_offset_minutes 180", "seen by every process at once"},
    {"config", "config set 'port.channel[0][11]' 512", "one element of a repeated field"},
    {"config", "config diff", "where the running configuration is not the default one"},
    {"lock", "lock list", "each lock, and who holds it"},
    {"lock", "lock run CFG -- sleep 5", "hold one while a command runs"},
    {"env", "env list", "the variables of the boot loader"},
    {"env", "env set bootdelay 5", "into the shadow, the flash and its backup"},
    {"env", "env check", "what is in flash, in the backup, and whether they are whole"},
    {"log", "log send --level warning fan 2 is slow", "one message, as a daemon sends it"},
    {"log", "log show ram --match fan", "the lines of a store with a text in them"},
    {"log", "log follow flash", "lines as they come"},
    {"trap", "trap enable link_flap_detected --port 1/5", "with leave for the port"},
    {"trap", "trap send link_flap_detected 0 4", "as a daemon raises it: unit and port from 0"},
    {"trap", "trap list --json", "what waits for the agent"},
    {"request", "request 61032 --hex 07 --length 44", "a record to a daemon, and its reply"},
    {"routing", "routing commands OSPFV3", "the commands with a text in their name"},
    {"routing", "routing send DC_CMD_RTM_GET_ROUTE --payload 0a020901", "a command, its replies and its result"},
    {"routing", "routing add 10.2.9.0/24 192.0.2.2", "a static route of the lab's routing stack"},
    {"error", "error -3 -140", "what codes mean"},
    {"error", "error --json", "all of them"},
    {"units", "units", "the stack at a glance"},
    {"status", "status get unit.present", "a field of the status region"},
    {"status", "status list unit", "what is set"},
    {"equip", "equip models --ports 48", "boards with 48 ports"},
    {"equip", "equip show --model 17", "all that is known of one"},
    {"stack", "stack populate 2,17,47", "announce three units, as their daemons would"},
    {"stack", "stack provision 3 47", "configure a unit before it is there"},
    {"ports", "ports 1 --panel", "the front of unit 1"},
    {"ports", "ports 1 --svg front.svg", "as a drawing"},
    {"port", "port 1/49", "all about one port"},
    {"ps", "ps --regex 'bcmd|routed'", "processes by command line"},
    {"kill", "kill -s USR1 bcmd", "every process of that name"},
    {"open-files", "open-files /var/status", "who has a file open"},
    {"pm", "pm restart bcmd", "ask the process manager"},
    {"call", "call unit-port counters-get 0 1", "a function of the switch-chip daemon"},
    {"call", "call general echo --input text:hello", "with bytes for it"},
    {"ip", "ip normalize 10.1.2.3/255.255.255.0", "one way to write it"},
    {"mac", "mac parse 00-04-df-01-02-03", "any separator"},
    {"top", "top", "live, q ends"},
    {"top", "top --json --count 2 --interval 0.5", "two samples for a program"},
    {"uri", "uri '[fe80::1%lo]:8080'", "address, scope and port"},
};

} // namespace

void add_examples(CLI::App &app)
{
    for (CLI::App *command : app.get_subcommands({})) {
        std::string text;
        for (const Example &example : examples) {
            if (example.command == command->get_name()) {
                text += text.empty() ? "Examples:" : "";
                text.append("\n  switchcfg ").append(example.line).append("\n      ").append(example.what);
            }
        }
        if (!text.empty()) {
            // The footer of the whole tool is inherited, and shown by it alone.
            std::string footer = command->get_footer() == app.get_footer() ? "" : command->get_footer();
            footer.append(footer.empty() ? "" : "\n\n").append(text);
            command->footer(footer);
        }
    }
}

} // namespace switchcfg::tool
