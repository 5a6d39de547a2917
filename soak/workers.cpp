// SPDX-License-Identifier: Apache-2.0
// Nothing here allocates by itself: under a memory limit it is the library's behaviour that counts.
#include "soak/workers.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <netinet/in.h>
#include <switchcfg/bootenv.h>
#include <switchcfg/config_region.h>
#include <switchcfg/cpumon.h>
#include <switchcfg/funclist.h>
#include <switchcfg/locks.h>
#include <switchcfg/log.h>
#include <switchcfg/log_store.h>
#include <switchcfg/pm_client.h>
#include <switchcfg/process.h>
#include <switchcfg/provision.h>
#include <switchcfg/routing.h>
#include <switchcfg/startup.h>
#include <switchcfg/trap.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace switchcfg::soak {
namespace {

constexpr int scheduling_slack_s = 20; // the run shares its machine
constexpr std::uint32_t lines_at_a_time = 40;
constexpr std::uint64_t patience_for_lines_ms = 40000;

struct Free {
    void operator()(void *memory) const { std::free(memory); }
};
using Text = std::unique_ptr<char, Free>;

class Client {
  public:
    Client(Shared &shared, int index, std::uint32_t seed)
        : shared_(shared), self_(shared.workers[static_cast<std::size_t>(index)]), index_(index), seed_(seed)
    {
    }

    [[noreturn]] void run()
    {
        if (!timed(Call::start, [] { return cfg_init() == 0; })) {
            ::_exit(could_not_start);
        }
        const pm_client_settings manager{PM_CLIENT_PORT, nullptr};
        pm_client_init(&manager);
        while (!shared_.end) {
            if (shared_.pause) {
                self_.paused = true;
                pause_ms(20);
                continue;
            }
            self_.paused = false;
            turn();
            pause_ms(random(40));
        }
        cfg_exit();
        ::_exit(0);
    }

  private:
    std::uint32_t random(std::uint32_t below)
    {
        seed_ = seed_ * 1664525U + 1013904223U;
        return (seed_ >> 8U) % below;
    }

    static void pause_ms(std::uint32_t ms)
    {
        const timespec pause{ms / 1000, static_cast<long>(ms % 1000) * 1000000};
        (void)::nanosleep(&pause, nullptr);
    }

    template<typename Function>
    bool timed(Call call, Function function)
    {
        const auto which = static_cast<std::size_t>(call);
        const std::uint32_t stops = self_.stops;
        self_.call = static_cast<int>(which);
        const std::uint64_t start = now_ms();
        const bool done = function();
        const auto took = static_cast<std::uint32_t>(now_ms() - start);
        self_.call = -1;
        Tally &tally = shared_.tallies[which];
        ++(done ? tally.done : tally.failed);
        if (stops != self_.stops) {
            return done; // the wait was not the library's
        }
        std::uint32_t longest = tally.longest_ms;
        while (took > longest && !tally.longest_ms.compare_exchange_weak(longest, took)) {
        }
        if (took > static_cast<std::uint32_t>(calls[which].limit_s + scheduling_slack_s) * 1000) {
            violation(shared_, "%s took %u ms, its limit is %d s", calls[which].name, took, calls[which].limit_s);
        }
        return done;
    }

    void turn()
    {
        switch (self_.kind) {
        case Kind::logs:
            log_lines();
            break;
        case Kind::traps:
            send_traps();
            break;
        case Kind::configuration:
            change_configuration();
            break;
        case Kind::requests:
            ask_daemons();
            break;
        case Kind::chip:
            call_chip();
            break;
        case Kind::toolkit:
            use_toolkit();
        }
    }

    bool is_in(const char *text, std::uint32_t line) const
    {
        char wanted[32];
        (void)std::snprintf(wanted, sizeof wanted, "soak-%d-%u-", index_, line);
        return text != nullptr && std::strstr(text, wanted) != nullptr;
    }

    void log_lines()
    {
        const std::uint32_t epoch = shared_.log_epoch;
        std::uint32_t accepted[lines_at_a_time];
        std::uint32_t count = 0;
        for (std::uint32_t i = 0; i < lines_at_a_time; ++i) {
            const std::uint32_t line = self_.next_line++;
            if (timed(Call::log_send, [&] {
                    return log_send_cat("soak", 4, "soak-%d-%u- a line that must not be lost", index_, line) == 0;
                })) {
                accepted[count++] = line;
            }
        }
        shared_.lines_acknowledged += count;
        look_for(accepted, count, epoch);
        note_in_flash(accepted, count);
    }

    // Lines that the daemon took are in its store, unless something was done to it.
    void look_for(const std::uint32_t *lines, std::uint32_t count, std::uint32_t epoch)
    {
        const std::uint64_t start = now_ms();
        std::uint32_t stops = self_.stops;
        std::uint64_t deadline = start + patience_for_lines_ms;
        for (std::uint32_t found = 0;;) {
            Text text;
            (void)timed(Call::log_fetch, [&] { return (text = Text{logger_get(LOG_STORE_RAM)}) != nullptr; });
            while (found < count && is_in(text.get(), lines[found])) {
                ++found;
            }
            if (found == count) {
                shared_.lines_verified += count;
                return;
            }
            if (shared_.log_epoch != epoch) {
                shared_.lines_undecided += count;
                return;
            }
            if (stops != self_.stops) {
                stops = self_.stops;
                deadline = now_ms() + patience_for_lines_ms;
            }
            if (now_ms() > deadline) {
                violation(shared_, "line soak-%d-%u (one of %u) was taken but is not in the store, which %s", index_,
                    lines[found], count, text ? "can be read" : "cannot be read");
                return;
            }
            pause_ms(100);
        }
    }

    void note_in_flash(const std::uint32_t *lines, std::uint32_t count)
    {
        Text text;
        if (!timed(Call::log_fetch, [&] { return (text = Text{logger_get(LOG_STORE_FLASH)}) != nullptr; })) {
            return;
        }
        for (std::uint32_t i = 0; i < count; ++i) {
            if (lines[i] < remembered_lines && is_in(text.get(), lines[i])) {
                self_.in_flash[lines[i]] = 1;
            }
        }
    }

    void send_traps()
    {
        for (int i = 0; i < 10; ++i) {
            const int unit = static_cast<int>(random(2));
            const int port = static_cast<int>(random(24));
            const std::uint32_t kind = random(6);
            (void)timed(Call::trap_send, [&] {
                switch (kind) {
                case 0:
                    return send_trap_linkUp(unit, port, nullptr) == 0;
                case 1:
                    return send_trap_link_flap_detected(unit, port) == 0;
                case 2:
                    return send_trap_login_failed("somebody", "console") == 0;
                case 3:
                    return send_trap_lst_link_up(port) == 0;
                case 4:
                    return send_trap_rsvp(unit, port) == 0;
                default:
                    return send_trap_cold_start() == 0;
                }
            });
        }
        const int queued = trap_queue_count();
        int most = shared_.most_queued;
        while (queued > most && !shared_.most_queued.compare_exchange_weak(most, queued)) {
        }
        if (queued > TRAP_QUEUE_LENGTH) {
            violation(shared_, "the trap queue has %d entries", queued);
        }
        trap_entry entries[3];
        (void)timed(Call::trap_peek, [&] { return trap_queue_peek(entries, 3) >= 0; });
    }

    void change_configuration()
    {
        const int unit = static_cast<int>(random(8));
        const int port = static_cast<int>(random(52));
        const int channel = 512 + static_cast<int>(random(128));
        const auto offset = static_cast<std::int32_t>(random(1680)) - 840;
        (void)timed(Call::config_change, [&] {
            const int lock = cfg_lock_table[CFG_LOCK_CFG].fd;
            if (lock_write(lock) != 0) {
                return false;
            }
            const bool set =
                cfg_port_set_channel(unit, port, channel) == 0 && cfg_port_set_disabled(unit, port, channel % 2) == 0;
            // The time zone of every process that looks jumps with it.
            std::memcpy(static_cast<char *>(cfg_get_cfg()) + CFG_UTC_OFFSET_MINUTES_AT, &offset, sizeof offset);
            updateTZ();
            const bool kept = cfg_port_get_channel(unit, port) == channel;
            (void)lock_free(lock);
            if (set && !kept) {
                violation(shared_, "port %d of unit %d lost its channel while the lock was held", port, unit);
            }
            return set;
        });
        (void)timed(Call::config_sync, [] { return cfg_data_sync() == 0; });
    }

    void ask_daemons()
    {
        (void)timed(Call::process_request, [] { return pm_client_start("agent") == 0; });
        cpumon_target target{};
        target.port = CPUMON_PORT;
        target.address[15] = 1;
        (void)timed(Call::monitor_request, [&] {
            cpumon_request record{};
            record.type = htonl(CPUMON_XML);
            char *text = nullptr;
            const int result = cpumon_daemon_request_extra_data(&record, &text, &target);
            const Text owned{text};
            return result == 0;
        });
        (void)timed(Call::routing_command, [] {
            void *reply = nullptr;
            std::uint32_t length = 0;
            const int result = dc_socket_send(257, nullptr, 0, &reply, &length);
            std::free(reply);
            return result > 0;
        });
    }

    void call_chip()
    {
        (void)timed(Call::chip_call, [] {
            void *output = nullptr;
            std::uint32_t length = 0;
            const int result = bcm_cmd(BCMD_GENERAL_ECHO, 1, 2, 3, 4, "echo", 5, &output, &length);
            const bool same = output != nullptr && length >= 4 && std::memcmp(output, "echo", 4) == 0;
            std::free(output);
            return result >= 0 && same;
        });
    }

    void use_toolkit()
    {
        (void)timed(Call::process_lookup, [] {
            const std::unique_ptr<std::int32_t, Free> found{pid_by_name("switchlab-pm")};
            return found != nullptr;
        });
        (void)timed(Call::command_capture, [] {
            char *out = nullptr;
            char *err = nullptr;
            const int result = system_capture("echo captured", &out, &err);
            const Text texts[] = {Text{out}, Text{err}};
            return result == 0 && out != nullptr && std::strcmp(out, "captured\n") == 0;
        });
        (void)timed(Call::boot_variable, [] { return Text{bootenv_get("bootcmd")} != nullptr; });
    }

    Shared &shared_;
    Worker &self_;
    int index_;
    std::uint32_t seed_;
};

} // namespace

void work(Shared &shared, int index, std::uint32_t seed)
{
    const auto *const kind = kind_names[static_cast<std::size_t>(shared.workers[static_cast<std::size_t>(index)].kind)];
    char name[16];
    (void)std::snprintf(name, sizeof name, "soak-%s", kind);
    (void)::prctl(PR_SET_NAME, name);
    (void)::prctl(PR_SET_PDEATHSIG, SIGKILL);
    Client{shared, index, seed}.run();
}

} // namespace switchcfg::soak
