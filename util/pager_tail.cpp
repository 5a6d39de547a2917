// SPDX-License-Identifier: Apache-2.0
// The tail printers: one text through one pipeline.
#include <switchcfg/pager.h>

#include "util/pager_command.h"
#include "util/pager_enabled.h"

#include <array>
#include <cstdarg>
#include <cstdio>

namespace switchcfg {
namespace {

// Unlike the finish calls these find the pager through PATH, so that a user's own "more" is honoured.
const char *more_part(bool wanted) noexcept
{
    return wanted ? "| more" : "";
}

void print_through(const char *command, const char *format, std::va_list texts) noexcept
{
    feed_command(command, [&](std::FILE *input) noexcept { (void)std::vfprintf(input, format, texts); });
}

void print_tail(int count, const char *format, std::va_list texts) noexcept
{
    if (count == 0) {
        print_through("/bin/tail", format, texts);
    } else {
        print_through(command_line("/bin/tail -n %d %s", count, more_part(pager_enabled != 0)).get(), format, texts);
    }
}

} // namespace
} // namespace switchcfg

using namespace switchcfg;

void tail_printf(const char *format, ...) noexcept
{
    std::va_list arguments;
    va_start(arguments, format);
    print_tail(0, format, arguments);
    va_end(arguments);
}

void tail_printf_number(int count, const char *format, ...) noexcept
{
    std::va_list arguments;
    va_start(arguments, format);
    print_tail(count, format, arguments);
    va_end(arguments);
}

void tail_printf_number_grep(int count, const char *grep_arguments, const char *format, ...) noexcept
{
    const Malloced<char> command = command_line(
        "/bin/grep %s | /bin/tail -n %d %s", text_or_empty(grep_arguments), count, more_part(pager_enabled != 0));
    std::va_list arguments;
    va_start(arguments, format);
    print_through(command.get(), format, arguments);
    va_end(arguments);
}

void tail_printf_number_grep_more(int count, int more, const char *grep_arguments, const char *format, ...) noexcept
{
    std::array<char, 32> tail_part{};
    if (count != 0) {
        (void)std::snprintf(tail_part.data(), tail_part.size(), "| /bin/tail -n %d", count);
    }
    const Malloced<char> command =
        command_line("/bin/grep %s %s %s", text_or_empty(grep_arguments), tail_part.data(), more_part(more != 0));
    std::va_list arguments;
    va_start(arguments, format);
    print_through(command.get(), format, arguments);
    va_end(arguments);
}
