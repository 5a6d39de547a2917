// SPDX-License-Identifier: Apache-2.0
// Start-up and teardown of a process: the roof, which calls every family and is included by none.
#include "core/crash_handlers.h"
#include "core/status_region.h"

#include <switchcfg/bootenv.h>
#include <switchcfg/config_region.h>
#include <switchcfg/error.h>
#include <switchcfg/files.h>
#include <switchcfg/locks.h>
#include <switchcfg/pm_client.h>
#include <switchcfg/print_ext.h>
#include <switchcfg/routing.h>
#include <switchcfg/signals.h>
#include <switchcfg/startup.h>
#include <switchcfg/status.h>

#include <csignal>
#include <sys/resource.h>

namespace {

int32_t initialised = 0;

constexpr pm_client_settings process_manager{PM_CLIENT_PORT, nullptr};

// Debugs stands before EAPS, unlike in the table: descriptor numbers of long-running daemons are compared by this
// order.
constexpr cfg_lock_index lock_order[] = {CFG_LOCK_CFG, CFG_LOCK_FW, CFG_LOCK_TRAPS, CFG_LOCK_DEBUGS, CFG_LOCK_EAPS,
    CFG_LOCK_PL, CFG_LOCK_CLI_REG, CFG_LOCK_SYNC};

void lift_core_limit() noexcept
{
    const rlimit unlimited{RLIM_INFINITY, RLIM_INFINITY};
    (void)::setrlimit(RLIMIT_CORE, &unlimited);
}

void create_locks() noexcept
{
    for (const cfg_lock_index index : lock_order) {
        cfg_lock_table[index].fd = lock_create(cfg_lock_table[index].path);
    }
    DClockGetSetCreate();
    IPMClockCreate();
}

void destroy_locks() noexcept
{
    for (const cfg_lock_index index : lock_order) {
        lock_destroy(cfg_lock_table[index].fd);
        cfg_lock_table[index].fd = -1;
    }
    // Their words keep the closed numbers: daemons tell by them that the locks once existed.
    lock_destroy(DCLockGetSetFileFD);
    lock_destroy(IpmcLockFileFD);
}

void default_max_units() noexcept
{
    using namespace switchcfg;
    if (status_region != nullptr && load(status_region, status_layout::max_unit_count) == 0) {
        store(status_region, status_layout::max_unit_count, status_layout::max_units);
    }
}

} // namespace

int cfg_init() noexcept
{
    if (initialised != 0) {
        return 0;
    }
    signal_ignore(SIGQUIT);
    signal_ignore(SIGINT);
    switchcfg::install_crash_handlers();
    switchcfg::install_thread_dump_handler();
    lift_core_limit();
    create_locks();
    printExts_init();
    cfg_print_ip_init();
    cfg_error_init();
    status_init();
    bootenv_init();
    pm_client_init(&process_manager);
    default_max_units();
    if (cfg_data_cfg_map() != 0) {
        return -1;
    }
    if (cfg_data_defcfg_map() != 0) {
        return -1;
    }
    initialised = 1;
    return 0;
}

int cfg_init_generic(cfg_crash_hook *crash_hook) noexcept
{
    switchcfg::set_crash_hook(crash_hook);
    return cfg_init();
}

int cfg_exit() noexcept
{
    if (initialised == 0) {
        return 0;
    }
    initialised = 0;
    cfg_data_cfg_unmap();
    cfg_data_defcfg_unmap();
    cfg_dc_finish_connection();
    destroy_locks();
    status_finish();
    pm_client_finish();
    return 0;
}

int cfg_initial_apply_done() noexcept
{
    return file_exists(CFG_APPLIED_PATH);
}
