// SPDX-License-Identifier: Apache-2.0
#include "tests/log/trap_fixture.h"

#include <cstdarg>
#include <switchcfg/equip.h>
#include <switchcfg/ports.h>
#include <switchcfg/vxlog.h>

namespace {

std::string last_log; // level and line

} // namespace

// The program's own, in place of the library's.
void vxlog(int level, const char *format, ...)
{
    char line[4096];
    va_list arguments;
    va_start(arguments, format);
    (void)std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    last_log = std::to_string(level) + " " + line;
}

namespace {

using switchcfg::testing::Traps;
using switchcfg::tool::TrapArgument;
using switchcfg::tool::TrapSender;

const std::string sub = ".1.3.6.1.4.1.64711.3.5.201.1"; // NOLINT(cert-err58-cpp): a test may end when it cannot start
const std::string common = sub + ".14.2.21.0 i 1 " + sub + ".14.2.22.0 i 1"; // NOLINT(cert-err58-cpp): as above

class TrapSenders : public switchcfg::testing::TrapTest {
  protected:
    static void expect_trap(int result, std::uint32_t id, const std::string &text)
    {
        EXPECT_EQ(result, 0);
        EXPECT_EQ(drained(), (Traps{{id, text}}));
    }
    // Number of bindings; -1 when the text cannot be read to its end.
    static int bindings(const std::string &text)
    {
        const char *at = text.c_str();
        trap_varbind binding{};
        int count = 0;
        int result = 0;
        for (; (result = trap_queue_next_varbind(&at, &binding)) > 0; ++count) {
        }
        return result < 0 ? -1 : count;
    }
};

TEST_F(TrapSenders, AllObeyTheirFlagsAndQueueTextThatCanBeRead)
{
    join_unit(1, 12);
    for (const TrapSender &sender : switchcfg::tool::trap_senders()) {
        SCOPED_TRACE(sender.name);
        const std::vector<std::string> arguments = words(sender, "1", "10.0.0.1", "1");
        const std::uint8_t id = static_cast<std::uint8_t>(sender.ids[0]);
        config[14281 + id] = 0;
        EXPECT_EQ(sender.call(arguments), 0);
        EXPECT_EQ(trap_queue_count(), 0) << "disabled";
        config[14281 + id] = 1;
        if (sender.port_byte >= 0) {
            // The transceiver sender's port is the interface number: 1 is the first port of the first unit.
            std::uint8_t &flag = config[14417 + 41 * (sender.name == "sfp_changed" ? 0 : 53) + sender.port_byte];
            flag = 0;
            EXPECT_EQ(sender.call(arguments), 0);
            EXPECT_EQ(trap_queue_count(), 0) << "disabled for the port";
            flag = 1;
        }
        EXPECT_EQ(sender.call(arguments), 0);
        const Traps traps = drained();
        ASSERT_EQ(traps.size(), 1U);
        EXPECT_EQ(traps[0].first, id);
        EXPECT_EQ(bindings(traps[0].second) == 0, id == 1 || id == 4) << traps[0].second;
    }
}

TEST(TrapSendersAlone, QueueNothingBeforeStartUp)
{
    EXPECT_EQ(send_trap_config_change(), 0) << "nothing is enabled";
    EXPECT_EQ(trap_queue_count(), -1);
}

TEST_F(TrapSenders, WithstandAnyArguments)
{
    for (const char *number : {"-2147483648", "2147483647", "-1", "0", "53", "600"}) {
        for (const std::string &text : {std::string{}, std::string(511, 'x'), std::string(5000, 'y')}) {
            for (const TrapSender &sender : switchcfg::tool::trap_senders()) {
                const int result = sender.call(words(sender, number, text, *number == '-' ? "4294967295" : number));
                const Traps traps = drained();
                EXPECT_TRUE(result == 0 || traps.empty()) << sender.name;
                for (const auto &[id, line] : traps) {
                    EXPECT_LE(line.size(), 511U);
                    const bool whole = !text.empty() && line.size() < 511 && line.find(".-") == std::string::npos;
                    EXPECT_TRUE(bindings(line) >= 0 || !whole) << sender.name << ' ' << line;
                }
            }
        }
    }
    EXPECT_EQ(count_word(), 0);
    EXPECT_EQ(send_trap_login_failed(nullptr, nullptr), 0);
    EXPECT_EQ(last_log, "4 User (null) authentication was denied by (null)");
    EXPECT_EQ(send_trap_linkUp(0, 0, nullptr), 0);
    EXPECT_EQ(send_trap_mac_move_detected(nullptr), 0);
    EXPECT_EQ(send_trap_vrrp_auth_failure(nullptr, 1), 0);
    EXPECT_EQ(trap_queue_count(), 4);
}

TEST_F(TrapSenders, LinkTrapsTellStates)
{
    const std::string table = ".1.3.6.1.2.1.2.2.1";
    const trap_link up{1, 7};
    expect_trap(send_trap_linkUp(1, 4, &up), 3,
        table + ".1.69 i 69 " + table + ".7.69 i 1 " + common + " " + table + ".8.69 i 1");
    config[21701472 + 52 + 4] = 1;
    const trap_link blocked{2, 1};
    expect_trap(send_trap_linkDown(1, 4, &blocked), 2,
        table + ".1.69 i 69 " + table + ".7.69 i 2 " + common + " " + table + ".8.69 i 2");
    config[13865 + 52 + 4] = 0;
    EXPECT_EQ(send_trap_linkUp(1, 4, &up), 0);
    EXPECT_EQ(trap_queue_count(), 0);
}

TEST_F(TrapSenders, LogLinesComeBeforeTheFlags)
{
    std::memset(config + 14281, 0, 136);
    send_trap_loopback_no_more_detected(0, 0, 1);
    EXPECT_EQ(last_log, "4 Loopback no more detected on port 1/1, enabling");
    send_trap_lldp_remote_changed(0, -1);
    EXPECT_EQ(last_log, "5 LLDP change in list of neighbors on management port");
    send_trap_login_success("ann", nullptr);
    EXPECT_EQ(last_log, "5 User ann authenticated by public-key");
    send_trap_stack_attach(2, 0, 1, 5, "M");
    EXPECT_EQ(last_log, "3 Unit 3: Ready (model M, ID 4294967301)");
    send_trap_stack_detach(2, 0, 1, 5, "M");
    EXPECT_EQ(last_log, "3 Unit 3: Physically Removed (model M, ID 4294967301)");
    set_word(11268096 + 2 * 4, 1);
    send_trap_stack_detach(2, 0, 1, 5, "M");
    EXPECT_EQ(last_log, "3 Unit 3: Logically Removed (model M, ID 4294967301)");
    for (int model = 0; cfg_equip_get_stacking_support_tq5200() != 2; ++model) {
        ASSERT_LT(model, CFG_EQUIP_RECORDS);
        join_unit(0, model);
    }
    send_trap_stack_detach(2, 0, 1, 5, "M");
    EXPECT_EQ(last_log, "3 Unit 3: Removed (model M, ID 4294967301)") << "stacks that cannot tell";
    last_log.clear();
    send_trap_new_bootloader_version(3, "2.1");
    EXPECT_EQ(last_log, "") << "the one that logs only when it is enabled";
    config[14281 + 42] = 1;
    expect_trap(send_trap_new_bootloader_version(3, "2.1"), 42, sub + ".1.2.1.1 i 4 " + sub + ".14.2.20.0 s 2.1\x03");
    EXPECT_EQ(last_log, "7 Slot 4 notified new bootloader version 2.1");
}

TEST_F(TrapSenders, PlainRowsInTheirOrderAndWords)
{
    const std::string scalar = sub + ".14.2.";
    const std::string port = sub + ".2.1.1.1.69 i 69";
    const std::string unit = sub + ".1.2.1.1 i 3 ";
    const std::uint8_t mac[] = {0, 0x1a, 0x2b, 0x3c, 0x4d, 0x5e};
    const std::string alarm = "1.3.6.1.2.1.16.3.1.1.";
    const std::string lldp = ".1.0.8802.1.1.2.1.";
    struct Row {
        std::uint32_t id;
        std::function<int()> send;
        std::string text;
        const char *log = "";
    };
    const Row rows[] = {
        {4, [] { return send_trap_snmp_authentication_fail(); }, "", "4 SNMP authentication failure"},
        {5, [] { return send_trap_login_failed("ann", "tacacs"); }, common + " " + scalar + "3.0 s ann\x03",
            "4 User ann authentication was denied by tacacs"},
        {6, [] { return send_trap_login_success("ann", "local"); }, common + " " + scalar + "3.0 s ann\x03",
            "5 User ann authenticated by local"},
        {11, [] { return send_trap_config_change(); }, common},
        {12, [] { return send_trap_config_saved(1, "Saved", "ann"); }, common + " " + scalar + "4.0 i 2",
            "5 Saved by user ann."},
        {15, [] { return send_trap_power_change(1, 3, 4); },
            sub + ".1.4.1.1.2.3 i 2 " + sub + ".1.4.1.2.2.3 i 3 " + sub + ".1.4.1.3.2.3 i 4"},
        {16, [] { return send_trap_alarm_change(1, 3, 1); },
            sub + ".1.6.1.1.2.3 i 2 " + sub + ".1.6.1.2.2.3 i 3 " + sub + ".1.6.1.3.2.3 i 2"},
        {17, [&] { return send_trap_mac_move_detected(mac); }, scalar + "18.0 s 00:1A:2B:3C:4D:5E\x03"},
        {19, [] { return send_trap_loopback_detected(1, 4, 0); }, port, "4 Loopback detected on port 2/5, blocking"},
        {20, [] { return send_trap_loopback_no_more_detected(1, 4, 0); }, port,
            "4 Loopback no more detected on port 2/5, unblocking"},
        {21, [] { return send_trap_unidirectional_link_detected(1, 4); }, port + " " + common,
            "4 Unidirectional link detected or link down on port 2/5, blocking"},
        {22, [] { return send_trap_unidirectional_link_recovered(1, 4); }, port + " " + common,
            "4 Unidirectional link recovered or link up on port 2/5, unblocking"},
        {23, [] { return send_trap_critical_event_detected(1, 4); }, port + " " + common,
            "4 OAM: critical event detected on port 2/5, blocking"},
        {24, [] { return send_trap_critical_event_recovered(1, 4); }, port + " " + common,
            "4 OAM: critical event recovered on port 2/5, unblocking"},
        {25, [] { return send_trap_link_flap_detected(1, 4); }, port, "4 Link-Flap detected on port 2/5, blocking"},
        {26, [] { return send_trap_link_flap_no_more_detected(1, 4); }, port,
            "4 Link-Flap no more detected on port 2/5, unblocking"},
        {27, [] { return send_trap_lldp_remote_changed(1, 4); }, port + " " + common,
            "5 LLDP change in list of neighbors on port 2/5"},
        {28, [] { return send_trap_rmon_alarm(1, 10, 3, 2, ".1.3.6", 4); },
            alarm + "7.4 i 10 " + alarm + "5.4 i 3 " + alarm + "4.4 i 2 " + alarm + "3.4 o .1.3.6 " + alarm +
                "1.4 i 4"},
        {31, [] { return send_trap_port_sec_violation(1, 4); }, port},
        {32, [] { return send_trap_critical_temperature_detected(2, 80); }, unit + common + " " + scalar + "13.0 i 80"},
        {33, [] { return send_trap_critical_temperature_no_more_detected(2, 70); },
            unit + common + " " + scalar + "13.0 i 70"},
        {34, [] { return send_trap_fuse_status_change(2, 5, 1); }, unit + scalar + "14.0 i 5 " + scalar + "15.0 i 1"},
        {35, [] { return send_trap_fans_board_presence(1); }, scalar + "16.0 i 2"},
        {38, [] { return send_trap_high_cpu_usage_detected(); }, common},
        {39, [] { return send_trap_high_cpu_usage_no_more_detected(); }, common},
        {40, [] { return send_trap_high_memory_usage_detected(91); }, common + " " + scalar + "19.0 i 91"},
        {41, [] { return send_trap_high_memory_usage_no_more_detected(60); }, common + " " + scalar + "19.0 i 60"},
        {44, [] { return send_trap_remote_device_ready(1, 4); }, port + " " + common},
        {45, [] { return send_trap_remote_device_lost(1, 4); }, port + " " + common},
        {46, [] { return send_trap_remote_device_config_fail(1, 4); }, port + " " + common},
        {47, [] { return send_trap_remote_device_config_forced(1, 4); }, port + " " + common},
        {48, [] { return send_trap_fan_fuse_status_change(2, 5, 0); },
            unit + scalar + "14.0 i 5 " + scalar + "15.0 i 2"},
        {49, [] { return send_trap_l3_route_table_full(); }, common,
            "4 Unable to add a route to hardware: Routing table is full. Please check memory configuration."},
        {50, [] { return send_trap_egress_table_full(); }, common,
            "4 The amount of resources to create hosts or/and MPLS actions is depleted."},
        {71, [] { return send_trap_storm_control_broadcast(1, 4, 100, 0); },
            common + " .1.3.6.1.2.1.2.2.1.1.69 i 69 " + scalar + "35.0 i 1 " + scalar + "36.0 i 100"},
        {73, [] { return send_trap_bpdu_protect_limit_reached(68); }, port + " " + common},
        {74, [] { return send_trap_bpdu_protect_timer_expired(68); }, port + " " + common},
        {76, [] { return send_trap_rsvp(1, 2); }, common + " " + scalar + "41.0 i 2 " + scalar + "42.0 i 1"},
        {77, [] { return send_trap_dying_gasp_received(1, 4); }, port + " " + common,
            "4 OAM: Dying Gasp Flag received on port 2/5"},
        {78, [] { return send_trap_erps_status_change(3, 1, nullptr); },
            common + " " + scalar + "49.0 i 3 " + scalar + "48.0 s (unnamed)\x03 " + scalar + "50.0 i 1"},
        {93, [] { return send_trap_core_dump(); }, common},
        {95, [] { return send_trap_poe_overcurrent(1, 4); }, port},
        {96, [] { return send_trap_poe_restricted(1, 4); }, port},
        {97, [] { return send_trap_l3_host_table_full(); }, common,
            "4 Unable to add a host to hardware: Host table is full. Please check memory configuration."},
        {98, [] { return send_trap_lldp_med_remote_changed_global(1, nullptr, 2); },
            lldp + "4.1.1.4 i 1 " + lldp + "4.1.1.5 s (unknown)\x03 " + lldp + "5.4795.1.3.1.1.3 i 2",
            "5 Global LLDP-MED change in list of neighbors"},
        {130, [] { return send_trap_lst_link_down(6); }, common + " " + scalar + "44.0 i 6"},
        {131, [] { return send_trap_lst_link_up(6); }, common + " " + scalar + "44.0 i 6"},
        {135, [] { return send_trap_vrrp_auth_failure("10.0.0.1", 2); },
            "1.3.6.1.2.1.68.1.5.0 a 10.0.0.1 1.3.6.1.2.1.68.1.6.0 i 2"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.id);
        last_log.clear();
        expect_trap(row.send(), row.id, row.text);
        EXPECT_EQ(last_log, row.log);
    }
}

TEST_F(TrapSenders, IrregularOnesWriteTheirOwnText)
{
    const std::string scalar = sub + ".14.2.";
    expect_trap(send_trap_cold_start(), 0, ".1.3.6.1.6.3.1.1.4.3.0 o .1.3.6.1.4.1.64711.3.5.201");
    expect_trap(send_trap_warm_start(), 1, "");
    expect_trap(send_trap_stack_unit_comm_fail_blocked(2, 9, 0xFFFFFFFE, 7), 133,
        sub + ".1.2.1.1.3 i 3 " + sub + ".1.2.1.8.3 s -2\x03");
    expect_trap(send_trap_standby_mpu_presence(1, 0, 1, 5, 3), 36,
        sub + ".1.14.1.1.1 i 1 " + sub + ".1.14.1.4.1 s 4294967301\x03 " + sub + ".1.14.1.5.1 i 3 " + scalar +
            "17.0 i 2");
    expect_trap(send_trap_fan_fail(0, 2, 5), 13,
        sub + ".1.5.1.1.1.2 i 1 " + sub + ".1.5.1.2.1.2 i 2 " + common + " " + sub + ".1.5.1.3.1.2 i 5");
    const std::uint8_t mac[] = {0, 0x1a, 0x2b, 0x3c, 0x4d, 0x5e};
    expect_trap(send_trap_duplicated_ip(2, "10.0.0.1", mac), 18,
        scalar + "7.0 i 2 " + scalar + "8.0 s 10.0.0.1\x03 " + scalar + "9.0 s 00:1A:2B:3C:4D:5E\x03");
    const std::string alarm = "1.3.6.1.2.1.16.3.1.1.";
    expect_trap(send_trap_rmon_alarm(0, 10, -3, 2, ".1.3.6", 4), 29,
        alarm + "8.4 i 10 " + alarm + "5.4 i -3 " + alarm + "4.4 i 2 " + alarm + "3.4 o .1.3.6 " + alarm + "1.4 i 4");
    expect_trap(send_trap_eaps_status_change(3, 1, ""), 30,
        common + " " + scalar + "11.0 i 3 " + scalar + "10.0 s (unnamed)\x03 " + scalar + "12.0 i 1");
    expect_trap(send_trap_ldp(1, 2, "10.0.0.1"), 75,
        common + " " + scalar + "39.0 i 2 " + scalar + "40.0 i 1 " + scalar + "62.0 a 10.0.0.1");
    expect_trap(send_trap_system_warnings_units(0x80000001), 132, common + " " + scalar + "60.0 i 2147483649");
    expect_trap(send_trap_vrrp_new_master(7, 9, "10.0.0.1"), 134, "1.3.6.1.2.1.68.1.3.1.7.7.9 a 10.0.0.1");
    expect_trap(send_trap_lldp_remote_changed_global(1, 2, 3, 4000000000U), 91,
        ".1.0.8802.1.1.2.1.2.2 u 1 .1.0.8802.1.1.2.1.2.3 u 2 .1.0.8802.1.1.2.1.2.4 u 3 .1.0.8802.1.1.2.1.2.5 u "
        "4000000000");
    expect_trap(send_trap_storm_control_multicast(0, 0, 100, 1), 72,
        common + " .1.3.6.1.2.1.2.2.1.1.1 i 1 " + scalar + "37.0 i 2 " + scalar + "38.0 i 100");

    set_word(0, 0);
    const std::uint32_t web = 8080;
    std::memcpy(config + 57834, &web, 4);
    for (const auto &[port, code] :
        std::vector<std::pair<int, int>>{{23, 3}, {8080, 1}, {0, 1}, {161, 2}, {22, 4}, {80, 80}}) {
        expect_trap(send_trap_ip_illegal(port, "10.0.0.1"), 9,
            common + " " + scalar + "1.0 i " + std::to_string(code) + " " + scalar + "2.0 s 10.0.0.1\x03");
    }
    std::memcpy(config + 57829, "\x17\0\0\x17", 4);

    expect_trap(send_trap_sfp_changed(70, 1), 10, sub + ".2.1.1.1.70 i 70 " + common + " " + scalar + "5.0.70 i 2");
    EXPECT_EQ(send_trap_sfp_changed(0, 1), 0);
    EXPECT_EQ(send_trap_sfp_changed(640, 1), 0);
    EXPECT_EQ(trap_queue_count(), 0) << "no record, not enabled";
    for (const int channel : {512, 639}) {
        std::uint8_t *flag = config + 14417 + 41 * (channel - 1) + 2;
        EXPECT_EQ(send_trap_sfp_changed(channel, 1), 0);
        EXPECT_EQ(trap_queue_count(), 0);
        *flag = 1;
        const std::string number = std::to_string(channel);
        expect_trap(send_trap_sfp_changed(channel, 0), 10,
            sub + ".2.1.1.1." + number + " i " + number + " " + common + " " + scalar + "5.0." + number + " i 1");
        *flag = 0;
    }
}

TEST_F(TrapSenders, RefuseBadArgumentsByCode)
{
    join_unit(1, 12);
    const std::string longest(400, 'x');
    EXPECT_EQ(send_trap_evc_status_notification(8, 0, "n", 1), -3);
    EXPECT_EQ(send_trap_evc_status_notification(0, 0, "n", 1), -3) << "not in the stack";
    EXPECT_EQ(send_trap_evc_status_notification(1, -1, "n", 1), -3);
    EXPECT_EQ(send_trap_evc_status_notification(1, 200, "n", 1), -3);
    EXPECT_EQ(send_trap_evc_status_notification(1, 0, nullptr, 1), -7);
    EXPECT_EQ(send_trap_evc_status_notification(1, 0, longest.c_str(), 1), -32);
    EXPECT_EQ(send_trap_cfm_fault_notification("", "b", 1, 1, 1), -7);
    EXPECT_EQ(send_trap_cfm_fault_notification("a", nullptr, 1, 1, 1), -7);
    EXPECT_EQ(send_trap_cfm_fault_notification("a", "b", 1, 0, 1), -13);
    EXPECT_EQ(send_trap_cfm_fault_notification("a", "b", 1, 4095, 1), -13);
    EXPECT_EQ(send_trap_cfm_fault_notification(longest.c_str(), "b", 1, 1, 1), -32);
    EXPECT_EQ(trap_queue_count(), 0);
    expect_trap(send_trap_cfm_fault_notification("a b", "c", 1, 4094, 3), 43,
        common + " " + sub + ".14.2.51.0 s a b \x03 " + sub + ".14.2.52.0 s c\x03 " + sub + ".14.2.53.0 i 1 " + sub +
            ".14.2.54.0 i 4094 " + sub + ".14.2.55.0 i 3");
}

} // namespace
