// SPDX-License-Identifier: Apache-2.0
// Drives a fault run inside a unit of a lab: starts clients, does harm, looks whether everything that must hold holds,
// and says what happened. scripts/soak starts it.
#include "soak/faults.h"
#include "soak/inspection.h"
#include "soak/processes.h"
#include "soak/shared.h"
#include "soak/workers.h"

#include "core/config_layout.h"

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <sched.h>
#include <string>
#include <switchcfg/config_region.h>
#include <switchcfg/startup.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace switchcfg::soak {

void violation(Shared &shared, const char *format, ...)
{
    char line[512];
    va_list arguments;
    va_start(arguments, format);
    (void)std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    ++shared.violations;
    std::fprintf(stderr, "VIOLATION: %s\n", line);
}

namespace {

constexpr Kind kinds[most_workers] = {Kind::logs, Kind::logs, Kind::traps, Kind::traps, Kind::traps,
    Kind::configuration, Kind::configuration, Kind::requests, Kind::chip, Kind::toolkit};
constexpr int faults_between_inspections = 30;

class Driver {
  public:
    Driver(Shared &shared, double minutes, std::uint32_t seed)
        : shared_(shared), end_(now_ms() + static_cast<std::uint64_t>(minutes * 60000)), seed_(seed),
          faults_(shared, seed), inspection_(shared)
    {
        for (int i = 0; i < most_workers; ++i) {
            worker(i).kind = kinds[i];
            worker(i).call = -1;
        }
    }

    void run()
    {
        make_room_small();
        enable_notifications();
        start_missing();
        settle_and_inspect();
        while (now_ms() < end_) {
            for (int i = 0; i < faults_between_inspections && now_ms() < end_; ++i) {
                faults_.inject();
                var_was_full_ = faults_.var_was_full() || var_was_full_;
                reap();
                start_missing();
                inspection_.glance();
            }
            settle_and_inspect();
            (void)::truncate("/var/log/daemons.log", 0);
        }
        settle_and_inspect();
        stop();
    }

    void report(double minutes) const
    {
        std::printf("%-60s %10.1f\n", "minutes", minutes);
        for (const auto &[what, count] : faults_.counts()) {
            std::printf("%-60s %10d\n", what.c_str(), count);
        }
        std::printf("%-60s %10d\n", "clients started", started_);
        std::printf("%-60s %10d\n", "clients whose clock was set elsewhere", with_other_clock_);
        std::printf("%-60s %10d\n", "clients that could not start (full, no memory)", could_not_start_);
        std::printf("%-60s %10d\n", "clients that died of SIGBUS, /var being full", bus_errors_);
        std::printf("\n%-40s %12s %10s %12s\n", "call", "done", "failed", "longest ms");
        for (std::size_t i = 0; i < calls.size(); ++i) {
            const Tally &tally = shared_.tallies[i];
            std::printf("%-40s %12llu %10llu %12u\n", calls[i].name, static_cast<unsigned long long>(tally.done),
                static_cast<unsigned long long>(tally.failed), static_cast<unsigned>(tally.longest_ms));
        }
        const auto line = [](const char *what, std::uint64_t value) {
            std::printf("%-60s %10llu\n", what, static_cast<unsigned long long>(value));
        };
        std::printf("\n");
        line("log lines taken by the daemon", shared_.lines_acknowledged);
        line("  found in its store", shared_.lines_verified);
        line("  undecided: the daemon was killed or starved meanwhile", shared_.lines_undecided);
        line("most traps queued", static_cast<std::uint64_t>(shared_.most_queued));
        line("glances (region sizes, queue)", static_cast<std::uint64_t>(inspection_.glances()));
        line("inspections (all of it)", static_cast<std::uint64_t>(inspection_.thoroughs()));
        line("violations", shared_.violations);
        std::printf("\nmost descriptors of a process at rest:");
        for (const auto &[name, count] : inspection_.descriptors()) {
            std::printf(" %s %d;", name.c_str(), count);
        }
        std::printf("\n");
    }

  private:
    Worker &worker(int index) { return shared_.workers[static_cast<std::size_t>(index)]; }

    // So that they can be filled in no time, and leave the machine alone.
    void make_room_small()
    {
        if (::mount("tmpfs", "/mnt/flash/log", "tmpfs", 0, "size=4m") != 0 ||
            ::mount("tmpfs", "/var", "tmpfs", MS_REMOUNT, "size=96m") != 0 ||
            ::mount("tmpfs", "/tmp", "tmpfs", MS_REMOUNT, "size=16m") != 0) {
            violation(shared_, "the file systems cannot be made small: %s", std::strerror(errno));
        }
        ++shared_.log_epoch;
        ++shared_.flash_epoch;
    }

    // A new configuration sends none.
    static void enable_notifications()
    {
        namespace layout = config_layout;
        auto *const region = static_cast<std::uint8_t *>(cfg_get_cfg());
        std::memset(region + layout::trap_link_enable.offset, 1,
            layout::trap_port_enable.end() - layout::trap_link_enable.offset);
    }

    // Children come up with clocks that run days ahead of those of their peers. The chip daemon's callers do not: a
    // request carries the time on the machine's one clock by which it is worth doing.
    bool set_clock_elsewhere()
    {
        if (::unshare(CLONE_NEWTIME) != 0) {
            return false;
        }
        const int fd = ::open("/proc/self/timens_offsets", O_WRONLY | O_CLOEXEC);
        const unsigned ahead = started_ * 7919U % 1000000U;
        char text[96];
        const int length = std::snprintf(text, sizeof text, "monotonic %u 0\nboottime %u 0\n", ahead, ahead);
        const bool set = fd >= 0 && ::write(fd, text, static_cast<std::size_t>(length)) == length;
        if (fd >= 0) {
            ::close(fd);
        }
        return set;
    }

    void set_clock_back() const { (void)::setns(own_clock_, CLONE_NEWTIME); }

    void start_missing()
    {
        for (int i = 0; i < most_workers; ++i) {
            if (worker(i).pid > 0) {
                continue;
            }
            ++started_;
            const bool elsewhere = worker(i).kind != Kind::chip && set_clock_elsewhere();
            with_other_clock_ += elsewhere ? 1 : 0;
            worker(i).paused = false;
            worker(i).call = -1;
            const pid_t child = ::fork();
            if (child == 0) {
                work(shared_, i, seed_ + static_cast<std::uint32_t>(started_) * 2654435761U);
            }
            worker(i).pid = child > 0 ? child : 0;
            if (elsewhere) {
                set_clock_back();
            }
        }
    }

    void reap()
    {
        int status = 0;
        for (pid_t pid = 0; (pid = ::waitpid(-1, &status, WNOHANG)) > 0;) {
            for (Worker &worker : shared_.workers) {
                if (worker.pid == pid) {
                    worker.pid = 0;
                    judge(worker, status);
                }
            }
        }
    }

    void judge(const Worker &worker, int status)
    {
        const char *const kind = kind_names[static_cast<std::size_t>(worker.kind)];
        const int call = worker.call;
        const char *const where = call >= 0 ? calls[static_cast<std::size_t>(call)].name : "no call";
        if (WIFEXITED(status)) {
            const bool fine = WEXITSTATUS(status) == could_not_start || (WEXITSTATUS(status) == 0 && shared_.end);
            could_not_start_ += WEXITSTATUS(status) == could_not_start ? 1 : 0;
            if (!fine) {
                violation(shared_, "a client (%s) left with status %d in %s", kind, WEXITSTATUS(status), where);
            }
        } else if (WTERMSIG(status) == SIGBUS && var_was_full_) {
            ++bus_errors_;
        } else if (WTERMSIG(status) != SIGKILL) {
            violation(shared_, "a client (%s) died of signal %d in %s", kind, WTERMSIG(status), where);
        }
    }

    // With all clients there.
    void settle_and_inspect()
    {
        for (int i = 0; i < 200; ++i) {
            const timespec pause{0, 50000000};
            (void)::nanosleep(&pause, nullptr);
            reap();
            start_missing();
        }
        inspection_.thorough();
        var_was_full_ = false;
    }

    void stop()
    {
        shared_.end = true;
        const std::uint64_t deadline = now_ms() + 240000;
        bool left = true;
        while (left && now_ms() < deadline) {
            const timespec pause{0, 50000000};
            (void)::nanosleep(&pause, nullptr);
            reap();
            left = false;
            for (const Worker &worker : shared_.workers) {
                left = left || worker.pid > 0;
            }
        }
        for (const Worker &worker : shared_.workers) {
            if (worker.pid > 0) {
                violation(shared_, "client %d does not end", static_cast<int>(worker.pid));
                (void)::kill(worker.pid, SIGKILL);
            }
        }
    }

    Shared &shared_;
    std::uint64_t end_;
    std::uint32_t seed_;
    Faults faults_;
    Inspection inspection_;
    unsigned started_ = 0;
    int with_other_clock_ = 0;
    int could_not_start_ = 0;
    int bus_errors_ = 0;
    bool var_was_full_ = false;
    int own_clock_ = ::open("/proc/self/ns/time", O_RDONLY | O_CLOEXEC);
};

} // namespace
} // namespace switchcfg::soak

int main(int argc, char **argv)
{
    using namespace switchcfg::soak;
    const double minutes = argc > 1 ? std::atof(argv[1]) : 0;
    const auto seed = static_cast<std::uint32_t>(argc > 2 ? std::atol(argv[2]) : 1);
    if (minutes <= 0) {
        std::fprintf(stderr, "usage: switchcfg-soak MINUTES [SEED]   inside a unit of a lab, see scripts/soak\n");
        return 2;
    }
    void *const memory = ::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED || cfg_init() != 0) {
        std::fprintf(stderr, "switchcfg-soak: cannot start\n");
        return 1;
    }
    Shared &shared = *new (memory) Shared{};
    Driver driver{shared, minutes, seed};
    const std::uint64_t start = now_ms();
    driver.run();
    driver.report(static_cast<double>(now_ms() - start) / 60000);
    return shared.violations == 0 ? 0 : 1;
}
