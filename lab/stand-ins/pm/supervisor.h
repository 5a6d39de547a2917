// SPDX-License-Identifier: Apache-2.0
// Starts processes, keeps them running, stops them.
#ifndef SWITCHCFG_LAB_STAND_INS_PM_SUPERVISOR_H
#define SWITCHCFG_LAB_STAND_INS_PM_SUPERVISOR_H

#include "lab/stand-ins/pm/process_list.h"

#include <switchcfg/pm_client.h>

#include <cstdint>
#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace switchlab::pm {

// What a request ends in; -1 is the client's own.
enum Result { done = 0, unknown_process = -2, is_disabled = -3, unknown_command = -4, cannot_start = -5 };

// Times in hundredths of a second, as uptime_cs() counts.
struct Settings {
    std::uint64_t grace = 300;         // between SIGTERM and SIGKILL
    std::uint64_t first_back_off = 20; // before a crashed process is started again; doubles with each crash
    std::uint64_t longest_back_off = 3000;
    std::uint64_t settled = 1000; // a process that ran this long starts over with the first back-off
};

class Supervisor {
  public:
    using Reply = std::function<void(int result)>;

    Supervisor(std::vector<Entry> entries, const Settings &settings);

    // `reply` is called once, at once or from a later tick(): a process that is to be stopped has ended by then.
    void serve(const pm_request &request, Reply reply);
    // Sees who has ended, kills who does not end, starts who is due. To be called every few hundredths of a second.
    void tick();
    void start_all();
    // From now on nothing is started any more.
    void shut_down();
    bool all_down() const;
    std::string table() const;

  private:
    struct Process {
        Entry entry;
        pid_t pid = 0;       // 0 while it does not run
        bool wanted = false; // to be started again whenever it ends
        bool stopping = false;
        bool killed = false;
        int restarts = 0;
        std::uint64_t started_at = 0;
        std::uint64_t kill_at = 0;
        std::uint64_t start_at = 0; // not before, while wanted and not running
        std::uint64_t back_off = 0;
        std::vector<Reply> waiting{};
    };

    Process *find(const pm_request &request);
    void start_by_request(Process &process, const Reply &reply);
    void stop_by_request(Process &process, int signo, Reply reply);
    void restart_by_request(Process &process, Reply reply);
    bool start(Process &process);
    void stop(Process &process, int signo) const;
    void has_ended(Process &process, int status);
    void settle(Process &process) const;

    std::vector<Process> processes_;
    Settings settings_;
    bool shutting_down_ = false;
};

} // namespace switchlab::pm

#endif
