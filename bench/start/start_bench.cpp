// SPDX-License-Identifier: Apache-2.0
// What linking the library costs a C program that does nothing, beside one that links libc and zlib.
#include "bench/support/compare.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <spawn.h>
#include <string>
#include <sys/wait.h>

namespace {

using namespace switchcfg::bench;

// A program of the build, beside this one.
std::string beside(const char *name)
{
    return std::filesystem::read_symlink("/proc/self/exe").parent_path() / name;
}

bool run(const std::string &program)
{
    char *const arguments[] = {const_cast<char *>(program.c_str()), nullptr};
    pid_t child = 0;
    int status = -1;
    return ::posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments, nullptr) == 0 &&
           ::waitpid(child, &status, 0) == child && status == 0;
}

// KiB that are this process's alone: written to, or without a file behind them. Negative when it failed.
double private_memory(const std::string &program)
{
    std::FILE *const pipe = ::popen((program + " memory").c_str(), "r");
    double kib = -1;
    char line[256];
    while (std::fgets(line, sizeof line, pipe) != nullptr) {
        (void)std::sscanf(line, "Private_Dirty: %lf kB", &kib);
    }
    return ::pclose(pipe) == 0 ? kib : -1;
}

void program_start(benchmark::State &state)
{
    const std::string bare = beside("switchcfg-bench-start-bare");
    const std::string linked = beside("switchcfg-bench-start-linked");
    compare(
        state,
        {"start of a C program that links the library", "the same program with libc and zlib", 1.1, Row::Clock::wall},
        [&] { return run(bare); }, [&] { return run(linked); });
}
SWITCHCFG_ROW(program_start);

// How much of the row above any library costs, whatever is in it.
void program_start_with_nothing(benchmark::State &state)
{
    const std::string bare = beside("switchcfg-bench-start-bare");
    const std::string nothing = beside("switchcfg-bench-start-nothing");
    compare(
        state,
        {"start of a C program that links a library with nothing in it", "the same program with libc and zlib", 0,
            Row::Clock::wall},
        [&] { return run(bare); }, [&] { return run(nothing); });
}
SWITCHCFG_ROW(program_start_with_nothing);

void program_memory(benchmark::State &state)
{
    const double bare = private_memory(beside("switchcfg-bench-start-bare"));
    const double linked = private_memory(beside("switchcfg-bench-start-linked"));
    if (bare < 0 || linked < 0) {
        state.SkipWithError("a program did not run");
        return;
    }
    report_amounts(
        state, {"private memory of that program", "the same program with libc and zlib"}, bare, linked, "KiB", 64);
}
SWITCHCFG_ROW(program_memory);

} // namespace
