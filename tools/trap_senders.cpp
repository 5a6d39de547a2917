// SPDX-License-Identifier: Apache-2.0
#include "tools/trap_senders.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <stdexcept>
#include <switchcfg/trap.h>
#include <tuple>
#include <utility>

namespace switchcfg::tool {
namespace {

template<typename Number>
Number number(const std::string &text)
{
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) {
        throw std::invalid_argument{"'" + text + "' is no number that fits"};
    }
    return value;
}

// One argument of a sender: read from a word, and kept while the sender runs.
template<typename T>
struct Argument;

template<>
struct Argument<int> {
    static constexpr auto type = TrapArgument::integer;
    explicit Argument(const std::string &word) : value(number<int>(word)) {}
    int get() const { return value; }
    int value;
};

template<>
struct Argument<std::uint32_t> {
    static constexpr auto type = TrapArgument::unsigned_integer;
    explicit Argument(const std::string &word) : value(number<std::uint32_t>(word)) {}
    std::uint32_t get() const { return value; }
    std::uint32_t value;
};

template<>
struct Argument<const char *> {
    static constexpr auto type = TrapArgument::text;
    explicit Argument(const std::string &word) : value(word) {}
    const char *get() const { return value.c_str(); }
    std::string value;
};

template<>
struct Argument<const std::uint8_t *> {
    static constexpr auto type = TrapArgument::mac;
    explicit Argument(const std::string &word)
    {
        std::array<unsigned, 6> bytes{};
        int used = 0;
        if (std::sscanf(word.c_str(), "%2x:%2x:%2x:%2x:%2x:%2x%n", &bytes[0], &bytes[1], &bytes[2], &bytes[3],
                &bytes[4], &bytes[5], &used) != 6 ||
            word.size() != static_cast<std::size_t>(used)) {
            throw std::invalid_argument{"'" + word + "' is no MAC address"};
        }
        for (std::size_t i = 0; i < 6; ++i) {
            value[i] = static_cast<std::uint8_t>(bytes[i]);
        }
    }
    const std::uint8_t *get() const { return value.data(); }
    std::array<std::uint8_t, 6> value{};
};

template<>
struct Argument<const trap_link *> {
    static constexpr auto type = TrapArgument::link;
    explicit Argument(const std::string &word)
    {
        if (word != "up" && word != "down") {
            throw std::invalid_argument{"'" + word + "' is neither up nor down"};
        }
        value = {word == "up" ? 1 : 0, word == "up" ? 1 : 0};
    }
    const trap_link *get() const { return &value; }
    trap_link value{};
};

template<typename... T>
TrapSender sender(const char *name, std::vector<int> ids, int port_byte, int (*function)(T...) noexcept,
    std::vector<std::string> arguments)
{
    if (arguments.size() != sizeof...(T)) {
        throw std::logic_error{std::string{name} + ": arguments without names"};
    }
    const auto call = [function](std::span<const std::string> words) {
        return [&]<std::size_t... I>(std::index_sequence<I...>)
        {
            const std::tuple<Argument<T>...> values{Argument<T>{words[I]}...};
            return function(std::get<I>(values).get()...);
        }
        (std::index_sequence_for<T...>{});
    };
    return {name, std::move(ids), port_byte, std::move(arguments), {Argument<T>::type...}, call};
}

int mac_move(const std::uint8_t *mac) noexcept
{
    return send_trap_mac_move_detected(mac);
}

#define SENDER(name, id, port_byte, ...) sender(#name, {id}, port_byte, send_trap_##name, {__VA_ARGS__})

} // namespace

const std::vector<TrapSender> &trap_senders()
{
    constexpr int none = -1;
    // clang-format off
    static const std::vector<TrapSender> senders{
        SENDER(cold_start, 0, none),
        SENDER(warm_start, 1, none),
        SENDER(linkDown, 2, 0, "unit", "port", "link"),
        SENDER(linkUp, 3, 1, "unit", "port", "link"),
        SENDER(snmp_authentication_fail, 4, none),
        SENDER(login_failed, 5, none, "user", "method"),
        SENDER(login_success, 6, none, "user", "method"),
        SENDER(stack_attach, 7, none, "unit", "reserved", "id_high", "id_low", "model"),
        SENDER(stack_detach, 8, none, "unit", "reserved", "id_high", "id_low", "model"),
        SENDER(ip_illegal, 9, none, "service_port", "address"),
        SENDER(sfp_changed, 10, 2, "port_number", "present"),
        SENDER(config_change, 11, none),
        SENDER(config_saved, 12, none, "what", "action", "user"),
        SENDER(fan_fail, 13, none, "unit", "fan", "state"),
        SENDER(power_change, 15, none, "unit", "supply", "state"),
        SENDER(alarm_change, 16, none, "unit", "alarm", "active"),
        sender("mac_move_detected", {17}, none, mac_move, {"mac"}),
        SENDER(duplicated_ip, 18, none, "kind", "address", "mac"),
        SENDER(loopback_detected, 19, 3, "unit", "port", "disable"),
        SENDER(loopback_no_more_detected, 20, 4, "unit", "port", "disable"),
        SENDER(unidirectional_link_detected, 21, 5, "unit", "port"),
        SENDER(unidirectional_link_recovered, 22, 6, "unit", "port"),
        SENDER(critical_event_detected, 23, none, "unit", "port"),
        SENDER(critical_event_recovered, 24, none, "unit", "port"),
        SENDER(link_flap_detected, 25, 7, "unit", "port"),
        SENDER(link_flap_no_more_detected, 26, 8, "unit", "port"),
        SENDER(lldp_remote_changed, 27, none, "unit", "port"),
        sender("rmon_alarm", {28, 29}, none, send_trap_rmon_alarm, {"rising", "threshold", "value", "sample_type", "variable", "index"}),
        SENDER(eaps_status_change, 30, none, "domain", "state", "name"),
        SENDER(port_sec_violation, 31, none, "unit", "port"),
        SENDER(critical_temperature_detected, 32, none, "unit", "temperature"),
        SENDER(critical_temperature_no_more_detected, 33, none, "unit", "temperature"),
        SENDER(fuse_status_change, 34, none, "unit", "fuse", "ok"),
        SENDER(fans_board_presence, 35, none, "absent"),
        SENDER(standby_mpu_presence, 36, none, "absent", "slot", "id_high", "id_low", "state"),
        SENDER(high_cpu_usage_detected, 38, none),
        SENDER(high_cpu_usage_no_more_detected, 39, none),
        SENDER(high_memory_usage_detected, 40, none, "usage"),
        SENDER(high_memory_usage_no_more_detected, 41, none, "usage"),
        SENDER(new_bootloader_version, 42, none, "slot", "version"),
        SENDER(cfm_fault_notification, 43, none, "text1", "text2", "first", "second", "third"),
        SENDER(remote_device_ready, 44, 10, "unit", "port"),
        SENDER(remote_device_lost, 45, 11, "unit", "port"),
        SENDER(remote_device_config_fail, 46, 12, "unit", "port"),
        SENDER(remote_device_config_forced, 47, 13, "unit", "port"),
        SENDER(fan_fuse_status_change, 48, none, "unit", "fuse", "ok"),
        SENDER(l3_route_table_full, 49, none),
        SENDER(egress_table_full, 50, none),
        SENDER(storm_control_broadcast, 71, 36, "unit", "port", "rate", "exceeded"),
        SENDER(storm_control_multicast, 72, 37, "unit", "port", "rate", "exceeded"),
        SENDER(bpdu_protect_limit_reached, 73, none, "port"),
        SENDER(bpdu_protect_timer_expired, 74, none, "port"),
        SENDER(ldp, 75, none, "a", "b", "address"),
        SENDER(rsvp, 76, none, "a", "b"),
        SENDER(dying_gasp_received, 77, none, "unit", "port"),
        SENDER(erps_status_change, 78, none, "ring", "state", "name"),
        SENDER(lldp_remote_changed_global, 91, none, "inserts", "deletes", "drops", "ageouts"),
        SENDER(core_dump, 93, none),
        SENDER(evc_status_notification, 94, none, "unit", "port", "name", "status"),
        SENDER(poe_overcurrent, 95, 39, "unit", "port"),
        SENDER(poe_restricted, 96, 40, "unit", "port"),
        SENDER(l3_host_table_full, 97, none),
        SENDER(lldp_med_remote_changed_global, 98, none, "a", "name", "b"),
        SENDER(lst_link_down, 130, none, "group"),
        SENDER(lst_link_up, 131, none, "group"),
        SENDER(system_warnings_units, 132, none, "mask"),
        SENDER(stack_unit_comm_fail_blocked, 133, none, "unit", "reserved", "id_high", "id_low"),
        SENDER(vrrp_new_master, 134, none, "ifindex", "vrid", "address"),
        SENDER(vrrp_auth_failure, 135, none, "address", "error_type"),
    };
    // clang-format on
    return senders;
}

} // namespace switchcfg::tool
