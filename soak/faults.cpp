// SPDX-License-Identifier: Apache-2.0
#include "soak/faults.h"
#include "soak/processes.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace switchcfg::soak {
namespace {

constexpr char logging_daemon[] = "switchlab-logge";
constexpr char process_manager[] = "switchlab-pm";
constexpr char log_folder[] = "/mnt/flash/log";

bool is_daemon(const std::string &name)
{
    return name.starts_with("switchlab-") && !name.starts_with("switchlab-unit");
}

} // namespace

Faults::Faults(Shared &shared, std::uint32_t seed) : shared_(shared), random_(seed) {}

Faults::Victim Faults::some_daemon()
{
    std::vector<Victim> all;
    for (const Process &process : processes()) {
        // The manager takes all with it: one of many is enough.
        if (is_daemon(process.name) && !process.zombie && (process.name != process_manager || random(6) == 0)) {
            all.push_back({process.pid, process.name, nullptr});
        }
    }
    return all.empty() ? Victim{} : all[static_cast<std::size_t>(random(static_cast<int>(all.size())))];
}

Faults::Victim Faults::some_worker(bool with_chip)
{
    std::vector<Victim> all;
    for (Worker &worker : shared_.workers) {
        if (worker.pid > 0 && (with_chip || worker.kind != Kind::chip)) {
            all.push_back({worker.pid, kind_names[static_cast<std::size_t>(worker.kind)], &worker});
        }
    }
    return all.empty() ? Victim{} : all[static_cast<std::size_t>(random(static_cast<int>(all.size())))];
}

void Faults::hold(int most_ms)
{
    const int ms = random(most_ms);
    const timespec pause{ms / 1000, static_cast<long>(ms % 1000) * 1000000};
    (void)::nanosleep(&pause, nullptr);
}

// Before and after: what is said of lines that were logged between holds no more.
void Faults::touches(const Victim &victim)
{
    if (victim.name == logging_daemon || victim.name == process_manager) {
        ++shared_.log_epoch;
        ++shared_.flash_epoch;
    }
}

void Faults::kill_one(const Victim &victim)
{
    touches(victim);
    (void)::kill(victim.pid, SIGKILL);
    hold(200);
    touches(victim);
}

// Nothing may be lost by it.
void Faults::stall(const Victim &victim, int most_ms)
{
    if (victim.worker != nullptr) {
        ++victim.worker->stops;
    }
    (void)::kill(victim.pid, SIGSTOP);
    hold(most_ms);
    (void)::kill(victim.pid, SIGCONT);
    if (victim.worker != nullptr) {
        ++victim.worker->stops;
    }
}

// No descriptor more than it has, or hardly any memory more.
void Faults::limit(const Victim &victim, bool memory)
{
    const auto resource = memory ? RLIMIT_AS : RLIMIT_NOFILE;
    rlimit before{};
    if (victim.pid == 0 || ::prlimit(victim.pid, resource, nullptr, &before) != 0) {
        return;
    }
    rlimit tight = before;
    if (memory) {
        const long now = address_space_kib(victim.pid);
        if (now < 0) {
            return;
        }
        tight.rlim_cur = static_cast<rlim_t>(now + random(256)) * 1024;
    } else {
        tight.rlim_cur = static_cast<rlim_t>(std::max(open_descriptors(victim.pid), 3));
    }
    touches(victim);
    if (victim.worker != nullptr) {
        ++victim.worker->stops;
    }
    (void)::prlimit(victim.pid, resource, &tight, nullptr);
    hold(2000);
    (void)::prlimit(victim.pid, resource, &before, nullptr);
    if (victim.name == process_manager) { // whom it has started meanwhile has the limit from it
        for (const Process &process : processes()) {
            if (is_daemon(process.name) || process.name == "sh") {
                (void)::prlimit(process.pid, resource, &before, nullptr);
            }
        }
    }
    touches(victim);
}

void Faults::fill(const std::string &folder)
{
    if (folder == log_folder) {
        ++shared_.flash_epoch;
    }
    const std::string path = folder + "/soak.filler";
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    off_t size = 0;
    for (off_t piece = off_t{64} << 20; fd >= 0 && piece >= 4096;) {
        if (::posix_fallocate(fd, size, piece) == 0) {
            size += piece;
        } else {
            piece /= 2;
        }
    }
    hold(2000);
    if (fd >= 0) {
        ::close(fd);
    }
    (void)::unlink(path.c_str());
    if (folder == log_folder) {
        ++shared_.flash_epoch;
    }
    var_was_full_ = var_was_full_ || folder == "/var";
}

void Faults::watch_logging_daemon()
{
    pid_t now = 0;
    for (const Process &process : processes()) {
        now = process.name == logging_daemon && !process.zombie ? process.pid : now;
    }
    if (now != 0 && now != logging_daemon_) {
        if (logging_daemon_ != 0 && shared_.log_epoch == seen_epoch_) {
            violation(shared_, "the logging daemon was started anew, and nothing had been done to it");
        }
        ++shared_.log_epoch;
        ++shared_.flash_epoch;
        logging_daemon_ = now;
        seen_epoch_ = shared_.log_epoch;
    }
}

void Faults::inject()
{
    watch_logging_daemon();
    const auto on = [&](const char *what, const Victim &victim) {
        if (victim.pid != 0) {
            ++counts_[std::string{what} + ", " + victim.name];
        }
        return victim.pid != 0;
    };
    switch (random(12)) {
    case 0:
    case 1:
        if (const Victim victim = some_daemon(); on("SIGKILL to a daemon", victim)) {
            kill_one(victim);
        }
        break;
    case 2:
    case 3:
        if (const Victim victim = some_worker(true); on("SIGKILL to a client", victim)) {
            kill_one(victim);
        }
        break;
    case 4:
        if (const Victim victim = some_daemon(); on("daemon stalled (SIGSTOP)", victim)) {
            stall(victim, random(4) == 0 ? 12000 : 1500);
        }
        break;
    case 5:
        if (const Victim victim = some_worker(true); on("client stalled (SIGSTOP)", victim)) {
            stall(victim, 2000);
        }
        break;
    case 6:
        if (const Victim victim = some_daemon(); on("no descriptors left to a daemon", victim)) {
            limit(victim, false);
        }
        break;
    case 7:
        if (const Victim victim = some_worker(true); on("no descriptors left to a client", victim)) {
            limit(victim, false);
        }
        break;
    case 8:
        if (const Victim victim = some_daemon(); on("no memory left to a daemon", victim)) {
            limit(victim, true);
        }
        break;
    case 9:
        if (const Victim victim = some_worker(false); on("no memory left to a client", victim)) {
            limit(victim, true);
        }
        break;
    case 10:
        ++counts_["file system full, /mnt/flash/log"];
        fill(log_folder);
        break;
    default: {
        const std::string folder = random(2) == 0 ? "/var" : "/tmp";
        ++counts_["file system full, " + folder];
        fill(folder);
    }
    }
    hold(400);
}

} // namespace switchcfg::soak
