// SPDX-License-Identifier: Apache-2.0
// Running programs and waiting for them.
#include <switchcfg/process.h>

#include "util/owned.h"
#include "util/process_trace.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int fork_tries = 10;

// _exec() copies its arguments: texts of callers that are on the way out of scope are safe, long ones are refused.
constexpr int most_arguments = 14;
constexpr std::size_t argument_size = 40;
constexpr std::size_t longest_argument = argument_size - 2;

} // namespace

int _execv(char *const argv[]) noexcept
{
    const pid_t child = ::fork();
    if (child < 0) {
        SWITCHCFG_TRACE_PROCESS("fork failed for %s!", argv[0]);
        return -1;
    }
    if (child == 0) {
        ::execv(argv[0], argv);
        std::exit(1);
    }
    int status = 0;
    if (::waitpid(child, &status, 0) != child) {
        const int why = errno;
        SWITCHCFG_TRACE_PROCESS("Waitpid for %s error %d, %s", argv[0], why, std::strerror(why));
        return -1;
    }
    if (WIFEXITED(status)) {
        SWITCHCFG_TRACE_PROCESS("%s: exited, status %d", argv[0], WEXITSTATUS(status));
    } else if (WIFSIGNALED(status)) {
        SWITCHCFG_TRACE_PROCESS("%s: killed by signal %d", argv[0], WTERMSIG(status));
    }
    return 0;
}

int _execvp(const char *program, char *const argv[]) noexcept
{
    int tries = 0;
    pid_t child = -1;
    while (child < 0 && tries < fork_tries) {
        ++tries;
        child = ::fork();
    }
    if (child == 0) {
        ::execvp(program, argv);
        std::exit(1);
    }
    if (child > 0) {
        int status = 0;
        if (::waitpid(child, &status, 0) < 0) {
            const int why = errno;
            SWITCHCFG_TRACE_PROCESS("Waitpid for %s error %d, %s", program, why, std::strerror(why));
            return -1;
        }
        if (WIFEXITED(status) && WEXITSTATUS(status) != 0) {
            SWITCHCFG_TRACE_PROCESS("Application %s error %d", program, WEXITSTATUS(status));
            return -1;
        }
    }
    // Start-up scripts treat the last try as too late: it counts as failed although the program has run.
    if (tries == fork_tries) {
        SWITCHCFG_TRACE_PROCESS("%s", "Could not fork/exec in boot process");
        return -1;
    }
    return 0;
}

int _exec(const char *program, ...) noexcept
{
    char texts[most_arguments][argument_size];
    char *argv[most_arguments + 1];
    int count = 0;
    bool fits = true;
    va_list arguments;
    va_start(arguments, program);
    while (const char *const argument = va_arg(arguments, const char *)) {
        const std::size_t length = ::strnlen(argument, argument_size);
        fits = length <= longest_argument && count < most_arguments;
        if (!fits) {
            break;
        }
        std::memcpy(texts[count], argument, length + 1);
        argv[count] = texts[count];
        ++count;
    }
    va_end(arguments);
    argv[count] = nullptr;
    return fits ? _execvp(program, argv) : -1;
}

int systemf(const char *format, ...) noexcept
{
    char *text = nullptr;
    va_list arguments;
    va_start(arguments, format);
    const int length = ::vasprintf(&text, format, arguments);
    va_end(arguments);
    if (length < 0) {
        return -1;
    }
    const switchcfg::Malloced<char> command{text};
    return std::system(command.get()); // NOLINT(cert-env33-c): running the caller's command line is the job
}
