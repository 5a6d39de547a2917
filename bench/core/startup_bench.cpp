// SPDX-License-Identifier: Apache-2.0
// Attaching a process on warm files, and writing a configuration value durably, beside the bare system calls.
#include <switchcfg/config_region.h>
#include <switchcfg/locks.h>
#include <switchcfg/mapped_file.h>
#include <switchcfg/startup.h>
#include <switchcfg/status.h>

#include "bench/support/compare.h"
#include "core/status_layout.h"

#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace switchcfg::bench;

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
void attach_detach_bare()
{
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
    benchmark::DoNotOptimize(*static_cast<volatile std::uint8_t *>(status));
    void *const running = map_bare(CFG_RUNNING_PATH, CFG_REGION_SIZE);
    void *const standard = map_bare(CFG_DEFAULT_PATH, CFG_REGION_SIZE);
    ::munmap(running, CFG_REGION_SIZE);
    ::munmap(standard, CFG_REGION_SIZE);
    for (const int fd : locks) {
        ::close(fd);
    }
    ::munmap(status, STATUS_REGION_SIZE);
}

void attach_detach(benchmark::State &state)
{
    prepare_files();
    compare(state, {"`cfg_init` and `cfg_exit` on warm files", "their system calls, replayed bare", 1.3},
        attach_detach_bare, [] { return cfg_init() + cfg_exit() == 0; });
}
SWITCHCFG_ROW(attach_detach);

void map_region(benchmark::State &state)
{
    prepare_files();
    compare(
        state, {"mapping a region", "stat, open, mmap, close, munmap"},
        [] { return ::munmap(map_bare(CFG_RUNNING_PATH, CFG_REGION_SIZE), CFG_REGION_SIZE) == 0; },
        [] {
            void *const map = file_map_create(CFG_RUNNING_PATH, CFG_REGION_SIZE);
            file_unmap(map, CFG_REGION_SIZE);
            return map != nullptr;
        });
}
SWITCHCFG_ROW(map_region);

constexpr std::size_t page = 4096;

void durable_write(benchmark::State &state)
{
    prepare_files();
    auto *const bare = static_cast<char *>(map_bare(CFG_RUNNING_PATH, CFG_REGION_SIZE));
    auto *const map = static_cast<char *>(file_map_create(CFG_RUNNING_PATH, CFG_REGION_SIZE));
    int value = 0;
    compare(
        state, {"durable write of a configuration value", "msync of its page", 1.05},
        [&] {
            std::memcpy(bare + page, &++value, sizeof value);
            return ::msync(bare + page, page, MS_SYNC) == 0;
        },
        [&] {
            std::memcpy(map + page, &++value, sizeof value);
            return file_sync(map + page, page) == 0;
        });
    ::munmap(bare, CFG_REGION_SIZE);
    file_unmap(map, CFG_REGION_SIZE);
}
SWITCHCFG_ROW(durable_write);

} // namespace
