// SPDX-License-Identifier: Apache-2.0
// Attaching a process on warm files, and writing a configuration value durably, beside the bare system calls. Run it in
// a lab: switchlab run -- switchcfg-bench.
#include <switchcfg/config_region.h>
#include <switchcfg/locks.h>
#include <switchcfg/mapped_file.h>
#include <switchcfg/startup.h>
#include <switchcfg/status.h>

#include <benchmark/benchmark.h>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

void prepare_files()
{
    std::filesystem::create_directories("/var/run/cfg");
    if (cfg_init() != 0) {
        std::abort();
    }
    cfg_exit();
}

void *map_bare(const char *path, std::size_t length)
{
    struct stat info {};
    ::stat(path, &info);
    const int fd = ::open(path, O_RDWR);
    void *const map = ::mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    ::close(fd);
    return map;
}

void ignore(int /*signo*/) {}

// What cfg_init() and cfg_exit() ask of the kernel once their files exist.
void attach_detach_floor(benchmark::State &state)
{
    prepare_files();
    for (auto _ : state) {
        struct sigaction action {};
        action.sa_handler = SIG_IGN;
        ::sigaction(SIGQUIT, &action, nullptr);
        ::sigaction(SIGINT, &action, nullptr);
        action.sa_handler = ignore;
        for (const int signo : {SIGSEGV, SIGBUS, SIGABRT, SIGILL, SIGFPE, SIGKILL, SIGRTMIN}) {
            ::sigaction(signo, &action, nullptr);
        }
        const rlimit unlimited{RLIM_INFINITY, RLIM_INFINITY};
        ::setrlimit(RLIMIT_CORE, &unlimited);
        int locks[10];
        for (int i = 0; i < 8; ++i) {
            locks[i] = ::open(cfg_lock_table[i].path, O_RDWR | O_CREAT, 0600);
        }
        locks[8] = ::open("/tmp/dcGetSetLock", O_RDWR | O_CREAT, 0600);
        locks[9] = ::open("/tmp/ipmclock", O_RDWR | O_CREAT, 0600);
        void *const status = map_bare(STATUS_PATH, STATUS_REGION_SIZE);
        benchmark::DoNotOptimize(::open("/dev/flash_env", O_RDONLY));
        benchmark::DoNotOptimize(*(static_cast<volatile int *>(status) + 9593692 / 4));
        void *const running = map_bare(CFG_RUNNING_PATH, CFG_REGION_SIZE);
        void *const standard = map_bare(CFG_DEFAULT_PATH, CFG_REGION_SIZE);
        ::munmap(running, CFG_REGION_SIZE);
        ::munmap(standard, CFG_REGION_SIZE);
        for (const int fd : locks) {
            ::close(fd);
        }
        ::munmap(status, STATUS_REGION_SIZE);
    }
}
BENCHMARK(attach_detach_floor);

void attach_detach(benchmark::State &state)
{
    prepare_files();
    for (auto _ : state) {
        benchmark::DoNotOptimize(cfg_init());
        benchmark::DoNotOptimize(cfg_exit());
    }
}
BENCHMARK(attach_detach);

void map_region_floor(benchmark::State &state)
{
    prepare_files();
    for (auto _ : state) {
        void *const map = map_bare(CFG_RUNNING_PATH, CFG_REGION_SIZE);
        benchmark::DoNotOptimize(map);
        ::munmap(map, CFG_REGION_SIZE);
    }
}
BENCHMARK(map_region_floor);

void map_region(benchmark::State &state)
{
    prepare_files();
    for (auto _ : state) {
        void *const map = file_map_create(CFG_RUNNING_PATH, CFG_REGION_SIZE);
        benchmark::DoNotOptimize(map);
        file_unmap(map, CFG_REGION_SIZE);
    }
}
BENCHMARK(map_region);

constexpr std::size_t page = 4096;

void durable_write_floor(benchmark::State &state)
{
    prepare_files();
    auto *const map = static_cast<char *>(map_bare(CFG_RUNNING_PATH, CFG_REGION_SIZE));
    int value = 0;
    for (auto _ : state) {
        std::memcpy(map + page, &++value, sizeof value);
        benchmark::DoNotOptimize(::msync(map + page, page, MS_SYNC));
    }
    ::munmap(map, CFG_REGION_SIZE);
}
BENCHMARK(durable_write_floor);

void durable_write(benchmark::State &state)
{
    prepare_files();
    auto *const map = static_cast<char *>(file_map_create(CFG_RUNNING_PATH, CFG_REGION_SIZE));
    int value = 0;
    for (auto _ : state) {
        std::memcpy(map + page, &++value, sizeof value);
        benchmark::DoNotOptimize(file_sync(map + page, page));
    }
    file_unmap(map, CFG_REGION_SIZE);
}
BENCHMARK(durable_write);

} // namespace
