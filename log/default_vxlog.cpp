// SPDX-License-Identifier: Apache-2.0
// Weak defaults for programs that do not bring log functions of their own.
#include <switchcfg/vxlog.h>

#include <cstdarg>
#include <cstdio>
#include <syslog.h>
#include <unistd.h>

namespace {

void log_line(int level, const char *format, va_list arguments) noexcept
{
    if (::isatty(STDERR_FILENO) != 0) {
        va_list again;
        va_copy(again, arguments);
        (void)std::vfprintf(stderr, format, again);
        (void)std::fputc('\n', stderr);
        va_end(again);
    }
    ::vsyslog(level, format, arguments);
}

} // namespace

// Warnings about the format are raised where it is written: these only hand it on.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"

[[gnu::weak]] void vxlog(int level, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    log_line(level, format, arguments);
    va_end(arguments);
}

[[gnu::weak]] void vxlog_internal(int level, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    log_line(level, format, arguments);
    va_end(arguments);
}

#pragma GCC diagnostic pop
