// SPDX-License-Identifier: Apache-2.0
#include "support/power_cut.h"

#include <algorithm>
#include <bit>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace switchcfg::testing {
namespace {

constexpr std::uint32_t low_word_of_argument(unsigned index)
{
    return static_cast<std::uint32_t>(offsetof(seccomp_data, args) + index * sizeof(std::uint64_t) +
                                      (std::endian::native == std::endian::big ? 4 : 0));
}

// The filter that stops the job at every call that changes storage, and lets all others run at full speed.
class StorageCalls {
  public:
    StorageCalls()
    {
        for (const long number : {
#ifdef SYS_rename
                 SYS_rename, SYS_mkdir, SYS_rmdir, SYS_unlink, SYS_link, SYS_symlink, SYS_creat,
#endif
                 SYS_renameat, SYS_renameat2, SYS_mkdirat, SYS_unlinkat, SYS_linkat, SYS_symlinkat, SYS_truncate,
                 SYS_ftruncate, SYS_fallocate}) {
            on(number, {stop});
        }
        for (const long number : {SYS_write, SYS_pwrite64, SYS_writev, SYS_pwritev}) {
            on(number, {load_argument(0), {BPF_JMP | BPF_JGT | BPF_K, 0, 1, STDERR_FILENO}, stop, let});
        }
        constexpr std::uint32_t changes = O_CREAT | O_TRUNC;
#ifdef SYS_open
        on(SYS_open, {load_argument(1), {BPF_JMP | BPF_JSET | BPF_K, 0, 1, changes}, stop, let});
#endif
        on(SYS_openat, {load_argument(2), {BPF_JMP | BPF_JSET | BPF_K, 0, 1, changes}, stop, let});
        on(SYS_ioctl, {load_argument(1), {BPF_JMP | BPF_JEQ | BPF_K, 1, 0, static_cast<std::uint32_t>(MEMERASE)},
                          {BPF_JMP | BPF_JEQ | BPF_K, 0, 1, static_cast<std::uint32_t>(MEMERASE64)}, stop, let});
        program_.push_back(let);
    }

    bool install()
    {
        sock_fprog filter{static_cast<unsigned short>(program_.size()), program_.data()};
        return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
               ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
    }

  private:
    static constexpr sock_filter stop{BPF_RET | BPF_K, 0, 0, SECCOMP_RET_TRACE};
    static constexpr sock_filter let{BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW};
    static sock_filter load_argument(unsigned index)
    {
        return {BPF_LD | BPF_W | BPF_ABS, 0, 0, low_word_of_argument(index)};
    }
    void on(long number, const std::vector<sock_filter> &decision)
    {
        program_.push_back({BPF_LD | BPF_W | BPF_ABS, 0, 0, offsetof(seccomp_data, nr)});
        program_.push_back({BPF_JMP | BPF_JEQ | BPF_K, 0, static_cast<std::uint8_t>(decision.size()),
            static_cast<std::uint32_t>(number)});
        program_.insert(program_.end(), decision.begin(), decision.end());
    }
    std::vector<sock_filter> program_;
};

// Traces the job and every process it starts. A process of its own, so that it waits for nobody else's children.
class Tracer {
  public:
    explicit Tracer(FlashDevice &flash) : flash_(flash) {}

    CutRun run(const std::function<int()> &job)
    {
        StorageCalls calls;
        job_ = ::fork();
        if (job_ == 0) {
            if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) {
                ::_exit(broken);
            }
            ::raise(SIGSTOP);
            ::_exit(calls.install() ? job() : broken);
        }
        int status = 0;
        constexpr long options =
            PTRACE_O_EXITKILL | PTRACE_O_TRACESECCOMP | PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK | PTRACE_O_TRACECLONE;
        if (job_ < 0 || ::waitpid(job_, &status, 0) != job_ || !WIFSTOPPED(status) ||
            ::ptrace(PTRACE_SETOPTIONS, job_, nullptr, options) != 0) {
            ::_exit(broken);
        }
        ::ptrace(PTRACE_CONT, job_, nullptr, nullptr);
        follow();
        return result_;
    }

    static constexpr int broken = 99;

  private:
    void follow()
    {
        int status = 0;
        for (pid_t pid = 0; (pid = ::waitpid(-1, &status, __WALL)) > 0;) {
            if (!WIFSTOPPED(status)) {
                std::erase(processes_, pid);
                if (pid == job_) {
                    result_.status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
                }
                continue;
            }
            if (std::ranges::find(processes_, pid) == processes_.end()) {
                processes_.push_back(pid);
            }
            if (status >> 8 == (SIGTRAP | (PTRACE_EVENT_SECCOMP << 8)) && !flash_.powered()) {
                result_.cut = true;
            }
            if (result_.cut) {
                for (const pid_t process : processes_) {
                    ::kill(process, SIGKILL); // the call it stands at does not happen
                }
            } else {
                ::ptrace(PTRACE_CONT, pid, nullptr, passed_on(status));
            }
        }
        if (!flash_.powered()) {
            result_.cut = true;
        }
    }

    // The signal that goes on to the process: not the stops that tracing makes.
    static long passed_on(int status)
    {
        const int signal = WSTOPSIG(status);
        return status >> 16 != 0 || signal == SIGTRAP || signal == SIGSTOP ? 0 : signal;
    }

    FlashDevice &flash_;
    pid_t job_ = -1;
    std::vector<pid_t> processes_;
    CutRun result_{false, 0};
};

} // namespace

CutRun run_and_cut(FlashDevice &flash, CutAt where, unsigned after, const std::function<int()> &job)
{
    flash.cut_after(after, where == CutAt::half_operation);
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        std::abort();
    }
    const pid_t tracer = ::fork();
    if (tracer == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        const CutRun run = Tracer{flash}.run(job);
        ::_exit(::write(ends[1], &run, sizeof run) == sizeof run ? 0 : Tracer::broken);
    }
    ::close(ends[1]);
    CutRun run{};
    const bool told = ::read(ends[0], &run, sizeof run) == sizeof run;
    ::close(ends[0]);
    int status = 0;
    if (tracer < 0 || ::waitpid(tracer, &status, 0) != tracer || !told || run.status == Tracer::broken) {
        std::abort(); // no ptrace or no seccomp here: better no result than a wrong one
    }
    flash.power_on();
    return run;
}

} // namespace switchcfg::testing
