// SPDX-License-Identifier: Apache-2.0
// Senders of traps with any arguments, into a queue in any state, and what reads the queue. The regions lie between
// pages that cannot be touched, and only the queue's own pages can be written.
#include "fuzz/byte_source.h"
#include "fuzz/fuzz_input.h"

#include "core/config_region.h"
#include "core/status_region.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>
#include <switchcfg/locks.h>
#include <switchcfg/trap.h>
#include <switchcfg/vxlog.h>
#include <sys/mman.h>
#include <unistd.h>

using namespace switchcfg::fuzz;

std::uint8_t *switchcfg::running_config = nullptr;
std::uint8_t *switchcfg::status_region = nullptr;

void vxlog(int /*level*/, const char *format, ...)
{
    char line[2048];
    va_list arguments;
    va_start(arguments, format);
    require(std::vsnprintf(line, sizeof line, format, arguments) >= 0);
    va_end(arguments);
}

namespace {

namespace layout = switchcfg::status_layout;

constexpr std::size_t config_size = 21707629;
constexpr std::size_t status_size = 11272288;
constexpr std::size_t page = 4096;

// The region's last byte is the last one before a page that cannot be touched, and there is one ahead of it too.
std::uint8_t *guarded(std::size_t size)
{
    const std::size_t whole = (size + page - 1) / page * page;
    void *memory = ::mmap(nullptr, whole + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    require(memory != MAP_FAILED);
    auto *first = static_cast<std::uint8_t *>(memory) + page;
    require(::mprotect(first, whole, PROT_READ | PROT_WRITE) == 0);
    return first + whole - size;
}

void protect(std::uint8_t *from, std::uint8_t *to, int how)
{
    const auto address = reinterpret_cast<std::uintptr_t>(from);
    const std::uintptr_t start = address / page * page;
    require(::mprotect(from - (address - start), reinterpret_cast<std::uintptr_t>(to) - start, how) == 0);
}

void set_up()
{
    std::uint8_t *config = guarded(config_size);
    std::memset(config + 13865, 1, 416 + 136 + 8 * 2132); // all notifications are enabled
    protect(config, config + config_size, PROT_READ);
    std::uint8_t *status = guarded(status_size);
    for (int unit = 0; unit < 6; ++unit) { // and most units in the stack
        store(status, layout::unit_present, 1, unit);
        store(status, layout::hardware_model, 12 + unit, unit);
    }
    std::memset(status + layout::trap_overrun_end, 0xA5, 4096);
    std::memset(status + layout::trap_id.offset - 4096, 0xA5, 4096);
    protect(status, status + status_size, PROT_READ);
    protect(status + layout::trap_id.offset, status + layout::trap_overrun_end, PROT_READ | PROT_WRITE);
    protect(status + layout::trap_move_step.offset, status + layout::trap_move_text.end(), PROT_READ | PROT_WRITE);
    switchcfg::running_config = config;
    switchcfg::status_region = status;
    cfg_lock_table[CFG_LOCK_TRAPS].fd = ::memfd_create("traps", 0);
    require(cfg_lock_table[CFG_LOCK_TRAPS].fd >= 0);
}

class Input : public ByteSource {
  public:
    using ByteSource::ByteSource;

    // Memory of exactly its size, or null.
    std::unique_ptr<char[]> text()
    {
        const std::uint8_t kind = byte();
        if (kind == 0) {
            return nullptr;
        }
        if (kind > 250) { // a long one
            const std::size_t length = std::size_t{byte()} * 4;
            auto text = std::make_unique<char[]>(length + 1);
            std::memset(text.get(), 'a' + kind % 26, length);
            return text;
        }
        const std::size_t length = std::min<std::size_t>(kind - 1U, left());
        auto text = std::make_unique<char[]>(length + 1);
        fill(text.get(), length);
        return text;
    }
};

template<typename T>
struct Argument {
    explicit Argument(Input &input) : value(static_cast<T>(input.word())) {}
    T get() const { return value; }
    T value;
};

template<>
struct Argument<const char *> {
    explicit Argument(Input &input) : value(input.text()) {}
    const char *get() const { return value.get(); }
    std::unique_ptr<char[]> value;
};

template<>
struct Argument<const std::uint8_t *> {
    explicit Argument(Input &input)
    {
        if (const std::uint8_t first = input.byte(); first != 0) {
            value = std::make_unique<std::uint8_t[]>(6);
            std::memset(value.get(), first, 6);
        }
    }
    const std::uint8_t *get() const { return value.get(); }
    std::unique_ptr<std::uint8_t[]> value;
};

template<>
struct Argument<const trap_link *> {
    explicit Argument(Input &input)
        : value(input.byte() != 0 ? std::make_unique<trap_link>(trap_link{1, input.byte()}) : nullptr)
    {
    }
    const trap_link *get() const { return value.get(); }
    std::unique_ptr<trap_link> value;
};

template<typename Result, typename... T>
int call(Result (*function)(T...) noexcept, Input &input)
{
    const std::tuple<Argument<T>...> arguments{Argument<T>{input}...};
    return std::apply(
        [&](const auto &...argument) { return static_cast<int>(function(argument.get()...)); }, arguments);
}

int mac_move(const std::uint8_t *mac) noexcept
{
    return send_trap_mac_move_detected(mac);
}

int log_attach(int unit, std::uint32_t high, std::uint32_t low, const char *model) noexcept
{
    send_log_stack_attach(unit, high, low, model);
    return 0;
}

template<auto Function>
int send(Input &input)
{
    return call(Function, input);
}

#define SEND(name) send<send_trap_##name>
constexpr int (*senders[])(Input &) = {SEND(cold_start), SEND(warm_start), SEND(linkDown), SEND(linkUp),
    SEND(snmp_authentication_fail), SEND(login_failed), SEND(login_success), SEND(stack_attach), SEND(stack_detach),
    SEND(ip_illegal), SEND(sfp_changed), SEND(config_change), SEND(config_saved), SEND(fan_fail), SEND(power_change),
    SEND(alarm_change), send<mac_move>, SEND(duplicated_ip), SEND(loopback_detected), SEND(loopback_no_more_detected),
    SEND(unidirectional_link_detected), SEND(unidirectional_link_recovered), SEND(critical_event_detected),
    SEND(critical_event_recovered), SEND(link_flap_detected), SEND(link_flap_no_more_detected),
    SEND(lldp_remote_changed), SEND(rmon_alarm), SEND(eaps_status_change), SEND(port_sec_violation),
    SEND(critical_temperature_detected), SEND(critical_temperature_no_more_detected), SEND(fuse_status_change),
    SEND(fans_board_presence), SEND(standby_mpu_presence), SEND(high_cpu_usage_detected),
    SEND(high_cpu_usage_no_more_detected), SEND(high_memory_usage_detected), SEND(high_memory_usage_no_more_detected),
    SEND(new_bootloader_version), SEND(cfm_fault_notification), SEND(remote_device_ready), SEND(remote_device_lost),
    SEND(remote_device_config_fail), SEND(remote_device_config_forced), SEND(fan_fuse_status_change),
    SEND(l3_route_table_full), SEND(egress_table_full), SEND(storm_control_broadcast), SEND(storm_control_multicast),
    SEND(bpdu_protect_limit_reached), SEND(bpdu_protect_timer_expired), SEND(ldp), SEND(rsvp),
    SEND(dying_gasp_received), SEND(erps_status_change), SEND(lldp_remote_changed_global), SEND(core_dump),
    SEND(evc_status_notification), SEND(poe_overcurrent), SEND(poe_restricted), SEND(l3_host_table_full),
    SEND(lldp_med_remote_changed_global), SEND(lst_link_down), SEND(lst_link_up), SEND(system_warnings_units),
    SEND(stack_unit_comm_fail_blocked), SEND(vrrp_new_master), SEND(vrrp_auth_failure), send<log_attach>};

// Ends, and gets on with every step.
void read_bindings(const char *text)
{
    trap_varbind binding{};
    for (const char *before = text; trap_queue_next_varbind(&text, &binding) > 0; before = text) {
        require(text > before);
        require(std::string_view{"iusao"}.find(binding.type) != std::string_view::npos);
        require(std::memchr(binding.oid, 0, TRAP_TEXT_SIZE) != nullptr && binding.oid[0] != '\0');
        require(std::memchr(binding.value, 0, TRAP_TEXT_SIZE) != nullptr);
        require(binding.cut == 0 || (binding.type == 's' && *text == '\0'));
    }
}

void read_queue(int (*read)(trap_entry *, int) noexcept, int max)
{
    const int count = trap_queue_count();
    require(count >= 0 && count <= TRAP_QUEUE_LENGTH);
    const auto entries = std::make_unique<trap_entry[]>(static_cast<std::size_t>(max));
    const int got = read(entries.get(), max);
    require(got == std::min(max, count));
    for (int i = 0; i < got; ++i) {
        read_bindings(entries[static_cast<std::size_t>(i)].text);
    }
    require(trap_queue_count() == count - (read == trap_queue_drain ? got : 0));
}

void fill_queue()
{
    for (int i = 0; i < TRAP_QUEUE_LENGTH; ++i) {
        send_trap_lst_link_up(i);
    }
}

// What a process could leave behind, or a fault in memory.
void damage(Input &input)
{
    std::uint8_t *status = switchcfg::status_region;
    switch (input.byte() % 4) {
    case 0:
        store(status, layout::trap_count, static_cast<std::int32_t>(input.word()));
        break;
    case 1:
        store(status, layout::trap_move_kind, input.word());
        store(status, layout::trap_move_count, static_cast<std::int32_t>(input.word()));
        store(status, layout::trap_move_source, static_cast<std::int32_t>(input.word()));
        store(status, layout::trap_move_step, input.word());
        break;
    case 2:
        std::memset(status + layout::trap_move_text.offset, 'm', 512);
        break;
    default:
        std::memset(status + layout::trap_id.offset + input.byte() % 100 * 516, 'e', 516);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (switchcfg::status_region == nullptr) {
        set_up();
    }
    std::uint8_t *status = switchcfg::status_region;
    require(trap_queue_clear() == 0);
    Input input{data, size};
    int fills = 0;
    while (!input.empty()) {
        const std::uint8_t what = input.byte();
        if (what < std::size(senders)) {
            const int result = senders[what](input);
            require(result == 0 || result == -3 || result == -7 || result == -13 || result == -32);
        } else if (what < 100) {
            read_queue(trap_queue_peek, input.byte());
        } else if (what < 130) {
            read_queue(trap_queue_drain, input.byte());
        } else if (what < 140) {
            if (fills++ < 3) { // a hundred look-ups in a hundred entries each: more of them only cost time
                fill_queue();
            }
        } else if (what < 180) {
            damage(input);
        } else if (const auto text = input.text()) {
            read_bindings(text.get());
        }
    }
    read_queue(trap_queue_drain, TRAP_QUEUE_LENGTH);
    const auto untouched = [&](std::size_t from) {
        return std::all_of(status + from, status + from + 2048, [](std::uint8_t byte) { return byte == 0xA5; });
    };
    require(untouched(layout::trap_id.offset - 2048) && untouched(layout::trap_overrun_end));
    return 0;
}
