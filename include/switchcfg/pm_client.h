/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file pm_client.h
 * Asking the process manager to start, stop and supervise the switch's processes, and signalling a process by name.
 *
 * Each request is one connection to the process manager on 127.0.0.1: the request record goes out, the same record with
 * its result comes back, within PM_CLIENT_TIMEOUT_S seconds. The settings are written once at start-up (cfg_init() does
 * so) and then only read; requests may be made from any thread.
 */
#ifndef SWITCHCFG_PM_CLIENT_H
#define SWITCHCFG_PM_CLIENT_H

#include <stdint.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/** TCP port of the process manager. */
#define PM_CLIENT_PORT 61032

/** Longest wait for the process manager's reply, in seconds. */
#define PM_CLIENT_TIMEOUT_S 10

/** Bytes of the name field of a request: 31 characters and the terminator. */
#define PM_NAME_SIZE 32

/** What the client needs to know. */
struct pm_client_settings {
    uint16_t port; /**< TCP port of the process manager; 0 for none, every request then fails */
    /** Told of each pm_client_kill_proc(), in the manner of vxlog(), at priority 4; may be null. */
    void (*logger)(int priority, const char *format, ...);
};

/** What a request asks for. */
enum pm_command {
    PM_START = 1,        /**< start the named process */
    PM_STOP = 2,         /**< stop it, giving it time to end */
    PM_KILL = 3,         /**< stop it at once */
    PM_RESTART = 4,      /**< stop it and start it again */
    PM_ENABLE = 5,       /**< allow it to run */
    PM_DISABLE = 6,      /**< keep it from running */
    PM_SET_ENABLING = 7, /**< enable or disable it as the value says */
    PM_START_ALL = 8,    /**< start every enabled process; no name */
    PM_SHOW_ALL = 9      /**< print the table of processes on the manager's side; no name */
};

/** Request and reply, sent whole in host byte order: 44 bytes. */
struct pm_request {
    uint32_t command;        /**< enum pm_command */
    uint32_t value;          /**< argument of the command, 0 where it has none */
    int32_t result;          /**< 0 in a request, filled in by the process manager in the reply */
    char name[PM_NAME_SIZE]; /**< process, padded with NULs */
};

/**
 * Store the settings; nothing connects. For the main thread at start-up.
 * @param settings copied; null for none (every request then fails)
 */
SWITCHCFG_API void pm_client_init(const struct pm_client_settings *settings) SWITCHCFG_NOEXCEPT;

/** Counterpart of pm_client_init(); there is nothing to release, and the settings stay. */
SWITCHCFG_API void pm_client_finish(void) SWITCHCFG_NOEXCEPT;

/*
 * Requests. Each gives the process manager's own result, which is 0 when done and negative when not; -1 also when the
 * client is not set up or the exchange failed (connection refused, no full reply in time). A name is cut to its first
 * 31 characters; null counts as empty.
 */

/** Start a process. */
SWITCHCFG_API int pm_client_start(const char *name) SWITCHCFG_NOEXCEPT;

/** Stop a process, giving it time to end by itself. */
SWITCHCFG_API int pm_client_stop(const char *name) SWITCHCFG_NOEXCEPT;

/** Stop a process at once. */
SWITCHCFG_API int pm_client_kill(const char *name) SWITCHCFG_NOEXCEPT;

/** Stop a process and start it again. */
SWITCHCFG_API int pm_client_restart(const char *name) SWITCHCFG_NOEXCEPT;

/** Allow a process to run. */
SWITCHCFG_API int pm_client_enable(const char *name) SWITCHCFG_NOEXCEPT;

/** Keep a process from running. */
SWITCHCFG_API int pm_client_disable(const char *name) SWITCHCFG_NOEXCEPT;

/** Enable or disable a process. @param enabling not 0 enables */
SWITCHCFG_API int pm_client_set_enabling(const char *name, uint32_t enabling) SWITCHCFG_NOEXCEPT;

/** Start every process that is enabled. */
SWITCHCFG_API int pm_client_start_all(void) SWITCHCFG_NOEXCEPT;

/** Make the process manager print its table. */
SWITCHCFG_API int pm_client_show_all(void) SWITCHCFG_NOEXCEPT;

/**
 * Signal a process, or all of a name, without the process manager, never the caller itself. The logger is told first:
 * "Request from user to stop ...", with " (forced)" for signal 9.
 * @param name compared exactly with the process's name; with a pid, names that hold a blank are never equal
 * @param pid  the process, or -1 for all of that name
 * @return with -1: how many processes were signalled, or -5 when the list could not be made. With a pid: 1 when it was
 *         signalled, -1 with errno when that failed, -6 when there is no such process or its name is another, -7 when
 * it is the caller
 */
SWITCHCFG_API int pm_client_kill_proc(const char *name, int pid, int signo) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
