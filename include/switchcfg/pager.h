/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file pager.h
 * Output of commands: straight to the terminal, or collected and then paged, filtered or uploaded by other programs.
 *
 * A command chooses (pager_enable(), or one of the other pager_init_*() calls; the first to open the stream wins),
 * prints with pprintf(), and ends with one of the pager_finish_*() calls, which returns the stream to idle. The tail
 * printers send one text through a pipeline at once and leave the stream alone.
 *
 * The programs are /bin/more, /bin/grep, /bin/tail and /bin/tftp, run through the shell with this process's standard
 * output and error. Patterns, options and names are put into the shell's command line as they stand (the pattern of the
 * finish calls in double quotes), so pass only text that is safe there. A program that cannot be started, or that ends
 * before it has read everything (a user who leaves the pager), costs the text and nothing else: no SIGPIPE reaches the
 * caller.
 *
 * The stream and the enabled flag belong to the process and are unlocked: one command's output at a time, from one
 * thread. No function here reports an error except as stated.
 */
#ifndef SWITCHCFG_PAGER_H
#define SWITCHCFG_PAGER_H

#include <stdio.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/**
 * @param flag not 0: pager_init() collects output in memory, and the tail printers show theirs through "more". Stays as
 *             set; 0 at start
 */
SWITCHCFG_API void pager_enable(int flag) SWITCHCFG_NOEXCEPT;

/** Open the stream, unless it is open: in memory while the pager is enabled, else on standard output. */
SWITCHCFG_API void pager_init(void) SWITCHCFG_NOEXCEPT;

/** Open the stream, unless it is open, on standard output. */
SWITCHCFG_API void pager_init_stdout(void) SWITCHCFG_NOEXCEPT;

/**
 * Open the stream, unless it is open, on a file that is created or emptied; end with pager_finish(), which then shows
 * nothing. The stream stays idle when the file cannot be opened.
 */
SWITCHCFG_API void pager_init_file(const char *path) SWITCHCFG_NOEXCEPT;

/** pager_init_file() on /dev/null: the output is dropped. */
SWITCHCFG_API void pager_init_null(void) SWITCHCFG_NOEXCEPT;

/** @return the stream, owned by the pager and valid until the next finish call; null while idle */
SWITCHCFG_API FILE *pager_get_out(void) SWITCHCFG_NOEXCEPT;

/**
 * pager_init(), then print onto the stream.
 * @return as vfprintf(3); -1 with nothing printed when the stream could not be opened
 */
SWITCHCFG_API int pprintf(const char *format, ...) SWITCHCFG_NOEXCEPT SWITCHCFG_PRINTF(1, 2);

/** Print onto the given stream; the pager is not involved. @return as vfprintf(3); -1 for a null stream */
SWITCHCFG_API int pfprintf(FILE *stream, const char *format, ...) SWITCHCFG_NOEXCEPT SWITCHCFG_PRINTF(2, 3);

/**
 * Show what was collected through /bin/more and wait until the user has left it. Output that went to standard output is
 * shown already: no program runs and nothing is flushed. After pager_init_file() the program runs on empty input.
 */
SWITCHCFG_API void pager_finish(void) SWITCHCFG_NOEXCEPT;

/** As pager_finish(), through /bin/grep with the options and the pattern, then /bin/more. Null counts as empty. */
SWITCHCFG_API void pager_finish_grep(const char *pattern, const char *grep_options) SWITCHCFG_NOEXCEPT;

/** As pager_finish_grep(), without paging. */
SWITCHCFG_API void pager_finish_grep_only(const char *pattern, const char *grep_options) SWITCHCFG_NOEXCEPT;

/** As pager_finish(), uploading exactly what was collected as that file to a TFTP server with /bin/tftp. */
SWITCHCFG_API void pager_finish_tftp(const char *server, const char *remote_file) SWITCHCFG_NOEXCEPT;

/** Print the last lines, as many as /bin/tail shows by itself, never paged. */
SWITCHCFG_API void tail_printf(const char *format, ...) SWITCHCFG_NOEXCEPT SWITCHCFG_PRINTF(1, 2);

/**
 * Print the last lines, through "more" while the pager is enabled.
 * @param count number of lines; 0 is tail_printf(), never paged
 */
SWITCHCFG_API void tail_printf_number(int count, const char *format, ...) SWITCHCFG_NOEXCEPT SWITCHCFG_PRINTF(2, 3);

/**
 * Print the last of the lines that /bin/grep lets through, through "more" while the pager is enabled.
 * @param count          number of lines; 0 means none
 * @param grep_arguments options and pattern as the shell takes them
 */
SWITCHCFG_API void tail_printf_number_grep(
    int count, const char *grep_arguments, const char *format, ...) SWITCHCFG_NOEXCEPT SWITCHCFG_PRINTF(3, 4);

/**
 * Print the lines, or the last of them, that /bin/grep lets through.
 * @param count          number of lines; 0 means all
 * @param more           not 0: through "more", whether the pager is enabled or not; 0: never
 * @param grep_arguments options and pattern as the shell takes them
 */
SWITCHCFG_API void tail_printf_number_grep_more(
    int count, int more, const char *grep_arguments, const char *format, ...) SWITCHCFG_NOEXCEPT SWITCHCFG_PRINTF(4, 5);

/**
 * Wait for a key without waiting for the end of its line. The key stays in the input. A terminal on standard input is
 * without line mode and echo meanwhile; standard input may also be something else.
 * @param timeout_s seconds; 0 only looks
 * @return 1 when input is waiting, 0 when none came, -1 with errno on an error (EINTR: a signal came first)
 */
SWITCHCFG_API int check_keypress(double timeout_s) SWITCHCFG_NOEXCEPT;

/** Turn the spinner on standard output by one step; does nothing when that is no terminal. */
SWITCHCFG_API void busyindicator(void) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
