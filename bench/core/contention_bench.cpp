// SPDX-License-Identifier: Apache-2.0
// Many processes on one lock, and on one trap queue: time per operation of all of them together.
#include <switchcfg/locks.h>
#include <switchcfg/startup.h>
#include <switchcfg/trap.h>

#include "bench/support/compare.h"
#include "bench/support/trap_floor.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <new>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace switchcfg::bench;

constexpr double window_seconds = 0.03;

// Processes that do one of two jobs again and again for the length of a window, all at once.
class Workers {
  public:
    Workers(int count, std::function<bool()> floor, std::function<bool()> thing)
        : jobs_{std::move(floor), std::move(thing)}
    {
        void *const page = ::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (page == MAP_FAILED || ::pipe(orders_) != 0 || ::pipe(reports_) != 0) {
            std::abort();
        }
        shared_ = new (page) Shared{};
        for (int i = 0; i < count; ++i) {
            pids_.push_back(::fork());
            if (pids_.back() == 0) {
                ::prctl(PR_SET_PDEATHSIG, SIGKILL);
                work();
            }
        }
    }
    ~Workers()
    {
        for (const pid_t pid : pids_) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, nullptr, 0);
        }
        for (const int fd : {orders_[0], orders_[1], reports_[0], reports_[1]}) {
            ::close(fd);
        }
        ::munmap(shared_, sizeof(Shared));
    }
    Workers(const Workers &) = delete;
    Workers &operator=(const Workers &) = delete;

    // Seconds per operation of the whole crowd, negative when one failed.
    double run(std::size_t job)
    {
        shared_->job = job;
        shared_->operations = 0;
        const double start = seconds_of(Row::Clock::wall);
        shared_->end = start + window_seconds;
        const std::vector<char> orders(pids_.size(), 'x');
        if (::write(orders_[1], orders.data(), orders.size()) != static_cast<ssize_t>(orders.size())) {
            return -1;
        }
        for (std::size_t i = 0; i < pids_.size(); ++i) {
            char good = 0;
            if (::read(reports_[0], &good, 1) != 1 || good == 0) {
                return -1;
            }
        }
        const double took = seconds_of(Row::Clock::wall) - start;
        return took / static_cast<double>(shared_->operations.load());
    }

  private:
    struct Shared {
        std::size_t job;
        double end;
        std::atomic<std::uint64_t> operations;
    };

    // An order is taken by whoever comes first, so a process may take two of a window; late ones do one operation.
    [[noreturn]] void work()
    {
        char order = 0;
        while (::read(orders_[0], &order, 1) == 1) {
            const auto &job = jobs_[shared_->job];
            std::uint64_t done = 0;
            bool good = true;
            do {
                good = job() && good;
                ++done;
            } while (seconds_of(Row::Clock::wall) < shared_->end);
            shared_->operations += done;
            const char report = good ? 1 : 0;
            if (::write(reports_[1], &report, 1) != 1) {
                break;
            }
        }
        ::_exit(1);
    }

    std::function<bool()> jobs_[2];
    Shared *shared_ = nullptr;
    int orders_[2];
    int reports_[2];
    std::vector<pid_t> pids_;
};

void side_by_side(benchmark::State &state, const Row &row, std::function<bool()> floor, std::function<bool()> thing)
{
    Workers workers{static_cast<int>(state.range(0)), std::move(floor), std::move(thing)};
    compare_measured(
        state, row, [&] { return workers.run(0); }, [&] { return workers.run(1); });
}

void scaling_lock(benchmark::State &state)
{
    const int bare = ::open("/tmp/lock_bare", O_RDWR | O_CREAT, 0600);
    const int fd = lock_create("/tmp/lock_bench");
    side_by_side(
        state, {"lock and unlock, by processes on one lock", "the two fcntl calls"},
        [bare] {
            struct flock whole {};
            whole.l_type = F_WRLCK;
            const int locked = ::fcntl(bare, F_SETLKW, &whole);
            whole.l_type = F_UNLCK;
            return ::fcntl(bare, F_SETLK, &whole) + locked == 0;
        },
        [fd] { return lock_write(fd) + lock_free(fd) == 0; });
    ::close(bare);
    lock_destroy(fd);
}
SWITCHCFG_ROW(scaling_lock)->RangeMultiplier(2)->Range(1, 64);

// The queue is full all the time, which is its most expensive state.
void scaling_trap_queue(benchmark::State &state)
{
    std::uint8_t *const status = trap_queue_of(100);
    if (status == nullptr) {
        state.SkipWithError("the regions cannot be had");
        return;
    }
    side_by_side(
        state, {"queueing a trap, by processes on one full queue", "lock pair and the move"},
        [status] { return queue_trap_bare(status, 100); },
        [usage = 0]() mutable { return send_trap_high_memory_usage_detected(usage++) == 0; });
    cfg_exit();
}
SWITCHCFG_ROW(scaling_trap_queue)->RangeMultiplier(2)->Range(1, 64);

} // namespace
