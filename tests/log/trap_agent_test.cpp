// SPDX-License-Identifier: Apache-2.0
// From the sender to a receiver of SNMP notifications that knows nothing of us: every sender, binding by binding.
#include "support/command.h"
#include "support/daemon.h"
#include "support/file_text.h"
#include "support/spawned.h"
#include "tests/log/trap_fixture.h"

#include <regex>
#include <sched.h>

namespace {

using namespace switchcfg::testing;
using switchcfg::tool::TrapSender;

constexpr char receiver[] = "/usr/sbin/snmptrapd";

class TrapAgent : public TrapTest {
  protected:
    void SetUp() override
    {
        if (::access(receiver, X_OK) != 0) {
            GTEST_SKIP() << "snmptrapd is not installed";
        }
        TrapTest::SetUp();
        join_unit(1, 12);
    }

    // What receives, once it listens on port 1162 of 127.0.0.1.
    static std::unique_ptr<Spawned> listening()
    {
        write_file("/tmp/snmptrapd.conf", "disableAuthorization yes\nformat2 %v\\n\n");
        const auto listens = [] { return file_text("/proc/net/udp").find("0100007F:048A") != std::string::npos; };
        auto daemon = std::unique_ptr<Spawned>(new Spawned{receiver, "-f", "-C", "-c", "/tmp/snmptrapd.conf", "-Lf",
            "/tmp/received", "-On", "-m", "", "-M", "/nowhere", "-p", "/tmp/snmptrapd.pid", "udp:127.0.0.1:1162"});
        while (!listens()) {
            ::sched_yield();
        }
        return daemon;
    }

    // One line per notification; what the receiver says of itself is left out.
    static std::vector<std::string> received(std::size_t count)
    {
        for (;;) {
            const std::string text = file_text("/tmp/received");
            std::vector<std::string> lines = lines_of(text.substr(0, text.rfind('\n') + 1));
            std::erase_if(
                lines, [](const auto &line) { return !line.starts_with(".1.3.6.1.2.1.1.3.0 = Timeticks: "); });
            if (lines.size() >= count) {
                return lines;
            }
            ::sched_yield();
        }
    }

    // One trap of every sender, as they are queued; two of the one that has two identifiers.
    static std::vector<trap_entry> queue_one_of_each()
    {
        for (const TrapSender &sender : switchcfg::tool::trap_senders()) {
            const bool address = sender.name.starts_with("vrrp") || sender.name == "ldp";
            const std::string text = address                       ? "10.1.2.3"
                                     : sender.name == "rmon_alarm" ? ".1.3.6.1.2.1.2.2.1.10.5"
                                                                   : "a text with blanks";
            std::vector<std::string> arguments = words(sender, "1", text, "4000000000");
            EXPECT_EQ(sender.call(arguments), 0) << sender.name;
            if (sender.ids.size() > 1) {
                arguments[0] = "0";
                EXPECT_EQ(sender.call(arguments), 0);
            }
        }
        std::vector<trap_entry> queued(TRAP_QUEUE_LENGTH);
        const int count = trap_queue_peek(queued.data(), TRAP_QUEUE_LENGTH);
        EXPECT_EQ(static_cast<std::size_t>(count), switchcfg::tool::trap_senders().size() + 1);
        queued.resize(static_cast<std::size_t>(std::max(count, 0)));
        return queued;
    }

    // The identifier of the notification: the standard ones have their own, the others are in our subtree.
    static std::string notification(std::uint32_t id)
    {
        static const std::map<std::uint32_t, const char *> standard{{0, "1.3.6.1.6.3.1.1.5.1"},
            {1, "1.3.6.1.6.3.1.1.5.2"}, {2, "1.3.6.1.6.3.1.1.5.3"}, {3, "1.3.6.1.6.3.1.1.5.4"},
            {4, "1.3.6.1.6.3.1.1.5.5"}, {28, "1.3.6.1.2.1.16.0.1"}, {29, "1.3.6.1.2.1.16.0.2"},
            {91, "1.0.8802.1.1.2.0.0.1"}, {98, "1.0.8802.1.1.2.1.5.4795.0.1"}, {134, "1.3.6.1.2.1.68.0.1"},
            {135, "1.3.6.1.2.1.68.0.2"}};
        const auto found = standard.find(id);
        return found != standard.end() ? std::string{"."} + found->second
                                       : ".1.3.6.1.4.1.64711.3.5.201.0." + std::to_string(id);
    }

    struct Binding {
        std::string oid; // with its dot
        char type;
        std::string value;
    };
    // Read without the library's reader.
    static std::vector<Binding> bindings(const std::string &text)
    {
        static const std::regex one{"[.]?([0-9.]+) (?:([iuao]) ([^ ]*)|(s) ([^\\x03]*)\\x03) ?"};
        std::vector<Binding> all;
        std::string rest = text;
        for (std::smatch match; std::regex_search(rest, match, one, std::regex_constants::match_continuous);) {
            all.push_back({"." + match.str(1), (match.str(2) + match.str(4))[0], match.str(3) + match.str(5)});
            rest = match.suffix();
        }
        EXPECT_EQ(rest, "") << text;
        return all;
    }

    // A queued trap as the receiver prints it, without the time ahead.
    static std::string printed(const trap_entry &trap)
    {
        static const std::map<char, const char *> types{
            {'i', "INTEGER"}, {'u', "Gauge32"}, {'s', "STRING"}, {'a', "IpAddress"}, {'o', "OID"}};
        std::string line = "\t.1.3.6.1.6.3.1.1.4.1.0 = OID: " + notification(trap.id);
        for (const Binding &binding : bindings(trap.text)) {
            const bool text = binding.type == 's';
            line += "\t" + binding.oid + " = " + types.at(binding.type) + (text ? ": \"" : ": ");
            // Masks are written unsigned.
            line += binding.type == 'i' ? std::to_string(static_cast<std::int32_t>(std::stoll(binding.value)))
                                        : binding.value;
            line += text ? "\"" : "";
        }
        return line;
    }
};

TEST_F(TrapAgent, DeliversWhatEverySenderQueued)
{
    const auto daemon = listening();
    const std::vector<trap_entry> queued = queue_one_of_each();
    const Daemon agent{SWITCHLAB_AGENT, {"--port", "1162", "--once"}};
    ASSERT_EQ(agent.exit_status(), 0);
    EXPECT_EQ(trap_queue_count(), 0);
    const std::vector<std::string> lines = received(queued.size());
    for (std::size_t i = 0; i < queued.size(); ++i) {
        EXPECT_EQ(lines[i].substr(lines[i].find('\t')), printed(queued[i]));
    }
}

// With the modules that come along and no others.
TEST_F(TrapAgent, ModulesAreSoundAndNameAllThatIsSent)
{
    const std::string folder = SWITCHCFG_MIBS;
    if (run_command("command -v smilint && command -v snmptranslate").status != 0) {
        GTEST_SKIP() << "smilint (smitools) or snmptranslate (snmp) is not installed";
    }
    const std::string lint = "SMIPATH=" + folder + ":" + folder + "/base smilint ";
    EXPECT_EQ(run_command(lint + "-s -l 4 SWITCHCFG-MIB").err, "");
    for (const char *part : {"IF-MIB", "SNMPv2-MIB", "RMON-MIB", "VRRP-MIB", "LLDP-MIB", "LLDP-EXT-MED-MIB"}) {
        EXPECT_EQ(run_command(lint + "-s -l 3 " + part).err, "");
    }
    std::string command = "snmptranslate -M " + folder + ":" + folder + "/base -m ALL -Td";
    std::size_t objects = 0;
    const std::vector<trap_entry> queued = queue_one_of_each();
    for (const trap_entry &trap : queued) {
        command += " " + notification(trap.id);
        for (const Binding &binding : bindings(trap.text)) {
            command += " " + binding.oid;
            ++objects;
        }
    }
    std::string out = run_command(command).out;
    // What has no name shows as a node above it, which is no object that is sent.
    const auto times = [&](const char *what) {
        const std::regex pattern{what};
        return std::distance(std::sregex_iterator{out.begin(), out.end(), pattern}, std::sregex_iterator{});
    };
    EXPECT_EQ(times(" NOTIFICATION-TYPE\n"), static_cast<std::ptrdiff_t>(queued.size()));
    EXPECT_EQ(times("\tread-(only|write|create)\n|\taccessible-for-notify\n"), static_cast<std::ptrdiff_t>(objects))
        << out;
    EXPECT_THAT(out, ::testing::HasSubstr("SWITCHCFG-MIB::swLinkFlapDetectedEvent\n"));
}

TEST_F(TrapAgent, OutlivesWhatCannotBeSent)
{
    const auto daemon = listening();
    send_trap_login_failed(std::string(600, 'x').c_str(), "m"); // cut
    send_trap_vrrp_auth_failure("no address", 4);
    send_trap_rmon_alarm(1, 1, 1, 1, "not.an.oid", 1);
    send_trap_config_change();
    set_word(entries_at + std::size_t{3} * 516, 99); // a number that no notification has
    send_trap_core_dump();
    const Daemon agent{SWITCHLAB_AGENT, {"--port", "1162", "--once"}};
    ASSERT_EQ(agent.exit_status(), 0);
    const std::vector<std::string> lines = received(4);
    EXPECT_NE(lines[0].find("xxxxxxxx"), std::string::npos);
    EXPECT_TRUE(lines[3].find("201.0.93\t") != std::string::npos) << lines[3];
}

} // namespace
