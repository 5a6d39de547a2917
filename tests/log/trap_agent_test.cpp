// SPDX-License-Identifier: Apache-2.0
// From the sender to a receiver of SNMP notifications that knows nothing of us: every sender, binding by binding.
#include "support/daemon.h"
#include "support/file_text.h"
#include "support/spawned.h"
#include "tests/log/trap_fixture.h"
#include "tools/trap_senders.h"

#include <algorithm>
#include <fstream>
#include <sched.h>
#include <sstream>
#include <unistd.h>

namespace {

using switchcfg::testing::Daemon;
using switchcfg::testing::file_text;
using switchcfg::testing::Spawned;
using switchcfg::tool::TrapArgument;
using switchcfg::tool::TrapSender;

constexpr char receiver[] = "/usr/sbin/snmptrapd";

class TrapAgent : public switchcfg::testing::TrapTest {
  protected:
    void SetUp() override
    {
        if (::access(receiver, X_OK) != 0) {
            GTEST_SKIP() << "snmptrapd is not installed";
        }
        TrapTest::SetUp();
        set_word(48, 1);
        set_word(1348, 12);
        std::ofstream{"/tmp/snmptrapd.conf"} << "disableAuthorization yes\nformat2 %v\\n\n";
    }

    // One line per notification; what the receiver says of itself is left out.
    static std::vector<std::string> received(std::size_t count)
    {
        for (;;) {
            std::vector<std::string> lines;
            std::istringstream text{file_text("/tmp/received")};
            for (std::string line; std::getline(text, line) && !text.eof();) {
                if (line.starts_with(".1.3.6.1.2.1.1.3.0 = Timeticks: ")) {
                    lines.push_back(line);
                }
            }
            if (lines.size() >= count) {
                return lines;
            }
            ::sched_yield();
        }
    }

    // The words after "udp:127.0.0.1:1162" are there once the receiver listens.
    static void wait_for_port()
    {
        while (file_text("/proc/net/udp").find("0100007F:048A") == std::string::npos) {
            ::sched_yield();
        }
    }

    // A queued trap as the receiver prints it, without the time and the notification ahead.
    static std::string printed(const std::string &text)
    {
        std::string line;
        const char *at = text.c_str();
        trap_varbind binding{};
        while (trap_queue_next_varbind(&at, &binding) > 0) {
            const std::string value = binding.value;
            line += std::string{"\t"} + (binding.oid[0] == '.' ? "" : ".") + binding.oid + " = ";
            switch (binding.type) {
            case 'i':
                line += "INTEGER: " + std::to_string(static_cast<std::int32_t>(std::stoll(value)));
                break;
            case 'u':
                line += "Gauge32: " + value;
                break;
            case 's':
                line += "STRING: \"" + value + "\"";
                break;
            case 'a':
                line += "IpAddress: " + value;
                break;
            default:
                line += "OID: " + value;
            }
        }
        return line;
    }
};

TEST_F(TrapAgent, DeliversWhatEverySenderQueued)
{
    const Spawned daemon{receiver, "-f", "-C", "-c", "/tmp/snmptrapd.conf", "-Lf", "/tmp/received", "-On", "-m", "",
        "-M", "/nowhere", "-p", "/tmp/snmptrapd.pid", "udp:127.0.0.1:1162"};
    wait_for_port();
    for (const TrapSender &sender : switchcfg::tool::trap_senders()) {
        std::vector<std::string> words;
        for (const TrapArgument type : sender.types) {
            words.push_back(type == TrapArgument::text   ? sender.name == "rmon_alarm" ? ".1.3.6.1.2.1.2.2.1.10.5"
                                                           : sender.name.starts_with("vrrp") || sender.name == "ldp"
                                                               ? "10.1.2.3"
                                                               : "a text with blanks"
                            : type == TrapArgument::mac  ? "00:1a:2b:3c:4d:5e"
                            : type == TrapArgument::link ? "up"
                            : type == TrapArgument::unsigned_integer
                                ? "4000000000"
                                : std::to_string(words.empty() ? 0 : words.size()));
        }
        if (sender.name == "sfp_changed") {
            words[0] = "7";
        } else if (sender.name == "cfm_fault_notification") {
            words[3] = "100";
        }
        ASSERT_EQ(sender.call(words), 0) << sender.name;
        if (sender.ids.size() > 1) {
            words[0] = "1";
            ASSERT_EQ(sender.call(words), 0);
        }
    }
    static trap_entry queued[TRAP_QUEUE_LENGTH];
    const int count = trap_queue_peek(queued, TRAP_QUEUE_LENGTH);
    ASSERT_EQ(static_cast<std::size_t>(count), switchcfg::tool::trap_senders().size() + 1);
    const Daemon agent{SWITCHLAB_AGENT, {"--port", "1162", "--once"}};
    ASSERT_EQ(agent.exit_status(), 0);
    EXPECT_EQ(trap_queue_count(), 0);
    const std::vector<std::string> lines = received(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        const std::string &line = lines[static_cast<std::size_t>(i)];
        const std::size_t id = line.find("\t.1.3.6.1.6.3.1.1.4.1.0 = OID: ");
        ASSERT_NE(id, std::string::npos) << line;
        const std::size_t bindings = line.find('\t', id + 1);
        EXPECT_EQ(bindings == std::string::npos ? "" : line.substr(bindings), printed(queued[i].text)) << queued[i].id;
    }
}

TEST_F(TrapAgent, OutlivesWhatCannotBeSent)
{
    const Spawned daemon{receiver, "-f", "-C", "-c", "/tmp/snmptrapd.conf", "-Lf", "/tmp/received", "-On", "-m", "",
        "-M", "/nowhere", "-p", "/tmp/snmptrapd.pid", "udp:127.0.0.1:1162"};
    wait_for_port();
    send_trap_login_failed(std::string(600, 'x').c_str(), "m"); // cut
    send_trap_vrrp_auth_failure("no address", 4);
    send_trap_rmon_alarm(1, 1, 1, 1, "not.an.oid", 1);
    send_trap_config_change();
    set_word(entries_at + 516 * 3, 99); // a number that no notification has
    send_trap_core_dump();
    const Daemon agent{SWITCHLAB_AGENT, {"--port", "1162", "--once"}};
    ASSERT_EQ(agent.exit_status(), 0);
    const std::vector<std::string> lines = received(4);
    EXPECT_NE(lines[0].find("xxxxxxxx"), std::string::npos);
    EXPECT_TRUE(lines[3].find("201.0.93\t") != std::string::npos) << lines[3];
}

} // namespace
