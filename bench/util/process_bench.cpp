// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/process.h>

#include "bench/support/compare.h"
#include "bench/support/crowd.h"

#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

using namespace switchcfg::bench;

void read_every_status()
{
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

bool find_the_one()
{
    std::int32_t *const list = pid_by_name("the one");
    std::free(list);
    return list != nullptr;
}

void process_by_name(benchmark::State &state)
{
    const Crowd crowd{500};
    compare(state, {"process by name, over 500 processes", "open and read of each status file", 1.2}, read_every_status,
        find_the_one);
}
SWITCHCFG_ROW(process_by_name);

void scaling_processes_present(benchmark::State &state)
{
    const Crowd crowd{static_cast<int>(state.range(0))};
    compare(state, {"process by name, by processes present", "open and read of each status file"}, read_every_status,
        find_the_one);
}
SWITCHCFG_ROW(scaling_processes_present)->Arg(50)->Arg(100)->Arg(250)->Arg(500)->Arg(1000)->Arg(2500)->Arg(5000);

#define HALF "head -c 5000000 /dev/zero"

bool capture_bare()
{
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
    std::free(text);
    return ::pclose(pipe) == 0 && length == 10000000;
}

bool capture()
{
    char *out_text = nullptr;
    char *err_text = nullptr;
    const int status = system_capture(HALF "; " HALF " 1>&2", &out_text, &err_text);
    std::free(out_text);
    std::free(err_text);
    return status == 0;
}

void capture_10_mb(benchmark::State &state)
{
    compare(state, {"10 MB of a command's output", "popen, fread", 0, Row::Clock::wall}, capture_bare, capture);
}
SWITCHCFG_ROW(capture_10_mb);

} // namespace
