// SPDX-License-Identifier: Apache-2.0
// switchlab-stackd: the stack manager of the lab. Tells the other units on the stacking link what this one is,
// announces all of them in the status region, and keeps the configuration of all units the same. It owns the status
// region's unit records, so it alone among the lab's daemons knows their layout.
#include "core/status_layout.h"
#include "lab/stackd/clock.h"
#include "lab/stackd/configuration.h"
#include "lab/stackd/neighbours.h"
#include "tools/stack_units.h"
#include "util/byte_order.h"

#include <switchcfg/equip_table.h>
#include <switchcfg/log.h>
#include <switchcfg/signals.h>
#include <switchcfg/startup.h>
#include <switchcfg/status.h>
#include <switchcfg/trap.h>
#include <switchcfg/vxlog.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <vector>

// The library's log, crash reports among it, goes where the process manager's does.
[[gnu::format(printf, 1, 0)]] static void log_line(const char *format, va_list arguments)
{
    (void)std::vfprintf(stderr, format, arguments);
    (void)std::fputc('\n', stderr);
}

extern "C" void vxlog(int /*level*/, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    log_line(format, arguments);
    va_end(arguments);
}

extern "C" void vxlog_internal(int /*level*/, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    log_line(format, arguments);
    va_end(arguments);
}

namespace {

using namespace switchlab::stackd;
namespace layout = switchcfg::status_layout;

constexpr std::uint64_t hello_interval_cs = 20;
constexpr std::uint64_t settled_cs = 100;
constexpr std::uint64_t look_interval_us = 100'000;
constexpr std::uint64_t look_share = 50; // looking for changes takes at most this part of a processor

class StackManager {
  public:
    StackManager(const UnitFacts &own, const std::string &interface)
        : own_(own), neighbours_(interface), configuration_(neighbours_.own_address())
    {
        own_.mac = neighbours_.own_mac();
        region_ = static_cast<std::uint8_t *>(get_status());
        switchcfg::store(region_, layout::mpu_slot, 0);
        switchcfg::store(region_, layout::vendor_code, 1);
        announce(own_);
        say();
    }

    [[noreturn]] void run()
    {
        for (;;) {
            std::vector<pollfd> awaited{{neighbours_.socket(), POLLIN, 0}};
            configuration_.add_to_poll(awaited);
            (void)::poll(awaited.data(), awaited.size(), milliseconds_to_next());
            neighbours_.listen(own_.unit, [this](const UnitFacts &unit) { joined(unit); });
            neighbours_.forget_silent([this](const UnitFacts &unit) { left(unit); });
            configuration_.follow(master());
            configuration_.serve();
            if (now_us() >= next_look_) {
                const std::uint64_t took = configuration_.look();
                configuration_.serve(); // off with it
                next_look_ = now_us() + std::max(look_interval_us, took * look_share);
            }
            if (now_cs() >= next_hello_) {
                say();
            }
        }
    }

  private:
    int milliseconds_to_next() const
    {
        const std::uint64_t next = std::min(next_look_, next_hello_ * 10'000);
        return static_cast<int>(next > now_us() ? (next - now_us()) / 1000 : 0) + 1;
    }

    void say()
    {
        own_.generation = configuration_.generation();
        neighbours_.say(own_);
        next_hello_ = now_cs() + hello_interval_cs;
    }

    void announce(const UnitFacts &unit)
    {
        switchcfg::tool::withdraw_unit(region_, unit.unit);
        switchcfg::tool::announce_unit(
            region_, unit.unit, {.model = unit.model, .version = unit.version, .mac = unit.mac, .plugged = false});
        (void)status_init_port_info_by_unit(unit.unit);
        form();
    }

    void form() { switchcfg::store(region_, layout::stack_formed, neighbours_.all().empty() ? 0U : 1U); }

    // The identifier of a unit in a notification is made of its address.
    template<typename Send>
    void notify(Send send, const UnitFacts &unit) const
    {
        // Units that a master finds when it comes itself have not just joined.
        if (!master() && now_cs() - born_ > settled_cs) {
            std::array<std::uint8_t, 8> identifier{};
            std::ranges::copy(unit.mac, identifier.begin());
            const auto high = switchcfg::load_ordered<std::endian::big, std::uint32_t>(identifier.data());
            const auto low = switchcfg::load_ordered<std::endian::big, std::uint32_t>(identifier.data() + 4);
            (void)send(unit.unit, 0, high, low, Equip_tq5200[unit.model].name);
        }
    }

    void joined(const UnitFacts &unit)
    {
        announce(unit);
        say(); // so that it knows of this one at once
        std::printf("unit %d, %s, is in the stack\n", unit.unit, Equip_tq5200[unit.model].name);
        (void)std::fflush(stdout);
        notify(send_trap_stack_attach, unit);
    }

    void left(const UnitFacts &unit)
    {
        switchcfg::tool::withdraw_unit(region_, unit.unit, switchcfg::tool::Remember::model);
        form();
        std::printf("unit %d has left the stack\n", unit.unit);
        (void)std::fflush(stdout);
        notify(send_trap_stack_detach, unit);
    }

    // Whose configuration has seen most changes; of equals the unit with the lowest number. Nobody when it is this one.
    std::optional<sockaddr_in6> master() const
    {
        std::uint64_t generation = configuration_.generation();
        int unit = own_.unit;
        std::optional<sockaddr_in6> found;
        for (const auto &[number, neighbour] : neighbours_.all()) {
            // What the master has said last is older than the changes that came from it since.
            const std::uint64_t its = configuration_.in_step_with(neighbour.address) ? configuration_.generation()
                                                                                     : neighbour.facts.generation;
            if (its > generation || (its == generation && number < unit)) {
                generation = its;
                unit = number;
                found = neighbour.address;
            }
        }
        return found;
    }

    UnitFacts own_;
    Neighbours neighbours_;
    Configuration configuration_;
    std::uint8_t *region_ = nullptr;
    std::uint64_t born_ = now_cs();
    std::uint64_t next_hello_ = 0;
    std::uint64_t next_look_ = 0;
};

int run(int argc, char **argv)
{
    CLI::App app{"The stack manager of the lab"};
    UnitFacts own;
    own.version = 10; // boards from revision 10 on have all their uplinks
    std::string interface = "atp";
    app.add_option("--unit", own.unit, "Number of this unit")->check(CLI::Range(0, 7))->required();
    app.add_option("--model", own.model, "Its model")->check(CLI::Range(1, CFG_EQUIP_RECORDS - 1))->required();
    app.add_option("--version", own.version, "Revision of its board")->capture_default_str();
    app.add_option("--interface", interface, "The stacking link")->capture_default_str();
    CLI11_PARSE(app, argc, argv);
    if (cfg_init() != 0 || get_status() == nullptr) {
        throw std::runtime_error{"cannot map the shared records"};
    }
    (void)signal_default(SIGINT);
    StackManager{own, interface}.run();
}

} // namespace

int main(int argc, char **argv)
{
    try {
        return run(argc, argv);
    } catch (const std::exception &error) {
        (void)std::fprintf(stderr, "switchlab-stackd: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
