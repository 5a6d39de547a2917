/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file process.h
 * Finding processes, signalling them, running programs, becoming a daemon, rebooting. Signal dispositions are in
 * signals.h.
 *
 * Other processes are looked at through /proc. A process's name is what the kernel keeps of it, at most 15 characters,
 * so a longer name never matches. Its command line is the first 256 bytes of its arguments, joined by blanks; kernel
 * threads and zombies have none. Processes that end while they are looked at count as not there.
 *
 * A process list is a heap array of process IDs that the caller frees. It ends at the first entry that is 0 or less:
 * pid_by_name() and pid_by_regex() end it with 0 and give null when nothing matched, find_pid_by_name() gives a lone
 * -1.
 *
 * The look-ups open one or two files per process and are for start-up and commands, not for loops. Nothing here keeps
 * state; any thread may call unless noted. Only _execv(), _execvp(), _exec() and reboot() say anything, and only in the
 * debug output, tagged "systemAPI".
 */
#ifndef SWITCHCFG_PROCESS_H
#define SWITCHCFG_PROCESS_H

#include <stdint.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/* ---- Looking at processes ---- */

/** @return the command line, heap text; null when there is no such process, it has none, or memory is out */
SWITCHCFG_API char *pid_cmdline(int pid) SWITCHCFG_NOEXCEPT;

/** @return the name, heap text; null when there is no such process or memory is out */
SWITCHCFG_API char *pid_name(int pid) SWITCHCFG_NOEXCEPT;

/**
 * @param name compared exactly
 * @return process list, the caller itself included; null when none has the name, /proc cannot be read or memory is out
 */
SWITCHCFG_API int32_t *pid_by_name(const char *name) SWITCHCFG_NOEXCEPT;

/** As pid_by_name(), but {-1} when there is none; null only when memory is out. */
SWITCHCFG_API int32_t *find_pid_by_name(const char *name) SWITCHCFG_NOEXCEPT;

/**
 * @param expression POSIX extended regular expression, matched anywhere in the command line; one that is not well
 * formed matches nothing
 * @return process list, the caller itself included; null when none matches, /proc cannot be read or memory is out
 */
SWITCHCFG_API int32_t *pid_by_regex(const char *expression) SWITCHCFG_NOEXCEPT;

/** @return 1 when a process has that name, else 0 */
SWITCHCFG_API int process_is_running(const char *name) SWITCHCFG_NOEXCEPT;

/** @return 1 when a command line matches the expression, else 0; the caller's own counts */
SWITCHCFG_API int regex_is_running(const char *expression) SWITCHCFG_NOEXCEPT;

/** @return 1 when the process exists (zombies and threads by their ID included), else 0 */
SWITCHCFG_API int pid_exists(int pid) SWITCHCFG_NOEXCEPT;

/** @return the parent's process ID; -1 when there is no such process or its name holds a blank */
SWITCHCFG_API int get_parent_pid(int pid) SWITCHCFG_NOEXCEPT;

/**
 * @param path as the kernel shows it: absolute, without "." and ".." and symbolic links, at most 256 bytes
 * @return 1 when a descriptor of the process is that file, 0 when none is, -1 when they cannot be listed (no such
 *         process, or not the caller's to look into)
 */
SWITCHCFG_API int pid_has_file_open(int pid, const char *path) SWITCHCFG_NOEXCEPT;

/**
 * @param path as for pid_has_file_open()
 * @return the first process, in the order of /proc, that has the file open; 0 when none has; -1 when /proc cannot be
 *         read. Processes that are not the caller's to look into are passed over.
 */
SWITCHCFG_API int file_is_open(const char *path) SWITCHCFG_NOEXCEPT;

/** As file_is_open(), passing over the calling process. */
SWITCHCFG_API int file_is_open_by_other(const char *path) SWITCHCFG_NOEXCEPT;

/* ---- Signalling processes ---- */

/**
 * @param list process list; may be null
 * @return how many processes the signal was sent to
 */
SWITCHCFG_API int kill_list(const int32_t *list, int signo) SWITCHCFG_NOEXCEPT;

/** Signal every process of that name, the caller itself included. @return how many the signal was sent to */
SWITCHCFG_API int killall(const char *name, int signo) SWITCHCFG_NOEXCEPT;

/** Signal every process whose command line matches, the caller itself included. @return how many it was sent to */
SWITCHCFG_API int kill_regex(const char *expression, int signo) SWITCHCFG_NOEXCEPT;

/* ---- Running programs ----
 * A child that cannot execute its program ends with exit(1): it runs the caller's atexit handlers and flushes what the
 * caller's streams hold, so flush them first. The waits are not retried when a signal comes (EINTR): they fail, and the
 * child remains the caller's to wait for. */

/**
 * Run a program and wait for it.
 * @param argv argument vector ended by null; element 0 is the path of the program
 * @return 0 once the child has ended, whatever its status, also when it could not be executed; -1 when fork or wait
 *         failed
 */
SWITCHCFG_API int _execv(char *const argv[]) SWITCHCFG_NOEXCEPT;

/**
 * Run a program found through PATH and wait for it. A failing fork is tried ten times in a row.
 * @param program name or path
 * @param argv    argument vector ended by null, element 0 included
 * @return 0 when it exited with status 0 or was ended by a signal; -1 when it exited with another status (1 when it
 * could not be executed), when the wait failed, when all forks failed, and also when only the tenth fork succeeded,
 *         although the program has run
 */
SWITCHCFG_API int _execvp(const char *program, char *const argv[]) SWITCHCFG_NOEXCEPT;

/**
 * _execvp() with the arguments, element 0 first, in the call: at most 14 texts of at most 38 characters each, and a
 * null behind them.
 * @return as _execvp(); -1 without running anything when the arguments do not fit
 */
SWITCHCFG_API int _exec(const char *program, ...) SWITCHCFG_NOEXCEPT
#if defined(__GNUC__)
    __attribute__((sentinel))
#endif
    ;

/**
 * Run a formatted command line with system(3).
 * @return the raw wait status as system(3) gives it; -1 when memory is out or the format fails
 */
SWITCHCFG_API int systemf(const char *format, ...) SWITCHCFG_NOEXCEPT SWITCHCFG_PRINTF(1, 2);

/**
 * Run a command line through /bin/sh and collect what it prints. Returns when every process that holds its outputs has
 * closed them and the shell has ended. Both outputs are read as they come, however much there is.
 * @param command what the shell runs
 * @param out_text receives the standard output, terminated heap text that the caller frees; null leaves it uncaptured
 * @param err_text the same for the standard error
 * @return the exit status, 0 to 255; -1 when a signal ended the shell or something failed. A text is handed over when
 *         its output has ended, so after -1 either pointer may have been set: set them to null first and free both. A
 *         failed fork hands over empty texts.
 */
SWITCHCFG_API int system_capture(const char *command, char **out_text, char **err_text) SWITCHCFG_NOEXCEPT;

/**
 * Make a pipe; both ends are inherited by programs the process executes.
 * @return 0, or the failing result of pipe(2), both numbers untouched then
 */
SWITCHCFG_API int pipe_create(int *read_end, int *write_end) SWITCHCFG_NOEXCEPT;

/* ---- Becoming a daemon ----
 * For the main thread at start-up, before there are other threads. */

/** Close every descriptor above 2. */
SWITCHCFG_API void close_all(void) SWITCHCFG_NOEXCEPT;

/**
 * Go into the background: in a session of its own, without a controlling terminal, in folder "/", with descriptors 0, 1
 * and 2 on /dev/null and all others closed. Standard input and output stay open until they are replaced, so what the
 * caller prints until then still arrives. Calling process and its child end with _exit(0).
 * @return 0 in the grandchild, which goes on; -1 with errno when fork, setsid or opening /dev/null failed, in whichever
 *         process that happened
 */
SWITCHCFG_API int daemonize(void) SWITCHCFG_NOEXCEPT;

/** Detach from the controlling terminal. @return 0, also when there is none; -1 when detaching failed */
SWITCHCFG_API int ctty_drop(void) SWITCHCFG_NOEXCEPT;

/** Put descriptors 0, 1 and 2 on /dev/null. @return 0; -1 when any could not be (the others are all the same) */
SWITCHCFG_API int stdfds_close(void) SWITCHCFG_NOEXCEPT;

/* ---- The machine ---- */

/**
 * Make the kernel spare a process, or pick it first, when memory runs out.
 * @param adjustment -17 (never) to 15 (first)
 * @return the result of the shell command that writes it, 0 when done; -1 when out of range
 */
SWITCHCFG_API int oom_adj_set(int pid, int adjustment) SWITCHCFG_NOEXCEPT;

/**
 * Reboot the switch with /sbin/reboot, and wait for it for ever. Not the system call of that name, which a program that
 * needs both reaches with syscall(2): do not include <sys/reboot.h> beside this header.
 */
SWITCHCFG_API void reboot(void) SWITCHCFG_NOEXCEPT
#if defined(__GNUC__)
    __attribute__((noreturn))
#endif
    ;

/**
 * @param n 1 or more; 0 is the result for anything less
 * @return a number from 0 to n - 1 drawn from rand(3), which the caller seeds; not for secrets
 */
SWITCHCFG_API int random_max_n(int n) SWITCHCFG_NOEXCEPT;

/**
 * Sleep for a random time, so that many processes do not act at once.
 * @param minimum_s seconds
 * @param maximum_s seconds, never reached; equal to the minimum for no choice. Spans above 2147 s count as that
 * @return the result of usleep(3): 0, or -1 with EINTR
 */
SWITCHCFG_API int sleep_random(double minimum_s, double maximum_s) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
