// SPDX-License-Identifier: Apache-2.0
// A daemon in C++: changes the configuration under its lock, holds that lock, or crashes, as it is told.
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <switchcfg/config_region.h>
#include <switchcfg/locks.h>
#include <switchcfg/startup.h>
#include <switchcfg/vxlog.h>
#include <unistd.h>

// This program's log is its standard error; a daemon of the switch would send its lines to the logging daemon.
static void log_line(int level, const char *format, va_list arguments)
{
    std::fprintf(stderr, "<%d> ", level);
    std::vfprintf(stderr, format, arguments);
    std::fputc('\n', stderr);
}

extern "C" void vxlog(int level, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    log_line(level, format, arguments);
    va_end(arguments);
}

extern "C" void vxlog_internal(int level, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    log_line(level, format, arguments);
    va_end(arguments);
}

// Named in the crash report, so not inlined and not hidden.
extern "C" __attribute__((noinline)) void crash_on_purpose(volatile int *where)
{
    *where = 1;
}

namespace {

int set_utc_offset(std::int32_t minutes)
{
    const int lock = cfg_lock_table[CFG_LOCK_CFG].fd;
    if (lock_write(lock) != 0) {
        std::perror("lock_write");
        return 1;
    }
    std::memcpy(static_cast<char *>(cfg_get_cfg()) + CFG_UTC_OFFSET_MINUTES_AT, &minutes, sizeof minutes);
    cfg_data_sync();
    lock_free(lock);
    std::printf("set the UTC offset to %d minutes\n", static_cast<int>(minutes));
    return 0;
}

int hold_lock()
{
    if (lock_write(cfg_lock_table[CFG_LOCK_CFG].fd) != 0) {
        std::perror("lock_write");
        return 1;
    }
    std::puts("holding");
    std::fflush(stdout);
    for (;;) {
        ::pause();
    }
}

} // namespace

int main(int argc, char **argv)
{
    if (cfg_init() != 0) {
        std::perror("cfg_init");
        return 1;
    }
    const std::string_view job = argc > 1 ? argv[1] : "";
    if (job == "utc-offset" && argc == 3) {
        return set_utc_offset(std::atoi(argv[2]));
    }
    if (job == "hold-lock") {
        return hold_lock();
    }
    if (job == "crash") {
        crash_on_purpose(reinterpret_cast<int *>(0x10));
    }
    std::fputs("usage: setter-daemon utc-offset MINUTES | hold-lock | crash\n", stderr);
    return 2;
}
