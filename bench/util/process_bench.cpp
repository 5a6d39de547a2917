// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/process.h>

#include <benchmark/benchmark.h>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int crowd_size = 500;

// Real processes, gone again when it is destroyed.
class Crowd {
  public:
    Crowd()
    {
        int told[2];
        if (::pipe(told) != 0) {
            std::abort();
        }
        for (int i = 0; i < crowd_size; ++i) {
            const pid_t child = ::fork();
            if (child == 0) {
                ::prctl(PR_SET_PDEATHSIG, SIGKILL);
                ::prctl(PR_SET_NAME, i == crowd_size / 2 ? "the one" : "one of many");
                ::_exit(::write(told[1], "", 1) == 1 ? ::pause() : 1);
            }
            pids_.push_back(child);
            char byte = 0;
            if (child < 0 || ::read(told[0], &byte, 1) != 1) {
                std::abort();
            }
        }
        ::close(told[0]);
        ::close(told[1]);
    }
    ~Crowd()
    {
        for (const pid_t pid : pids_) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, nullptr, 0);
        }
    }
    Crowd(const Crowd &) = delete;
    Crowd &operator=(const Crowd &) = delete;

  private:
    std::vector<pid_t> pids_;
};

void process_by_name_floor(benchmark::State &state)
{
    const Crowd crowd;
    for (auto _ : state) {
        DIR *const folder = ::opendir("/proc");
        while (const dirent *const entry = ::readdir(folder)) {
            if (*entry->d_name < '0' || *entry->d_name > '9') {
                continue;
            }
            char path[300];
            (void)std::snprintf(path, sizeof path, "/proc/%s/status", entry->d_name);
            char text[126];
            const int fd = ::open(path, O_RDONLY);
            benchmark::DoNotOptimize(::read(fd, text, sizeof text));
            ::close(fd);
        }
        ::closedir(folder);
    }
}
BENCHMARK(process_by_name_floor)->Unit(benchmark::kMicrosecond);

void process_by_name(benchmark::State &state)
{
    const Crowd crowd;
    for (auto _ : state) {
        std::int32_t *const list = pid_by_name("the one");
        if (list == nullptr) {
            state.SkipWithError("not found");
        }
        std::free(list);
    }
}
BENCHMARK(process_by_name)->Unit(benchmark::kMicrosecond);

#define HALF "head -c 5000000 /dev/zero"

void capture_10_mb_floor(benchmark::State &state)
{
    for (auto _ : state) {
        std::FILE *const pipe = ::popen(HALF "; " HALF " 2>&1", "r");
        std::size_t room = 4096;
        std::size_t length = 0;
        auto *text = static_cast<char *>(std::malloc(room));
        while (const std::size_t got = std::fread(text + length, 1, room - length - 1, pipe)) {
            length += got;
            if (room - length < 4096) {
                room *= 2;
                text = static_cast<char *>(std::realloc(text, room));
            }
        }
        if (length != 10000000) {
            state.SkipWithError("output is missing");
        }
        std::free(text);
        ::pclose(pipe);
    }
}
BENCHMARK(capture_10_mb_floor)->Unit(benchmark::kMillisecond)->UseRealTime();

void capture_10_mb(benchmark::State &state)
{
    for (auto _ : state) {
        char *out_text = nullptr;
        char *err_text = nullptr;
        if (system_capture(HALF "; " HALF " 1>&2", &out_text, &err_text) != 0) {
            state.SkipWithError("the command failed");
        }
        std::free(out_text);
        std::free(err_text);
    }
}
BENCHMARK(capture_10_mb)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
