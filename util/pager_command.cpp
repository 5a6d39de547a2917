// SPDX-License-Identifier: Apache-2.0
#include "util/pager_command.h"

#include <cstdarg>

namespace switchcfg {

Malloced<char> command_line(const char *format, ...) noexcept
{
    char *text = nullptr;
    std::va_list arguments;
    va_start(arguments, format);
    const int length = ::vasprintf(&text, format, arguments);
    va_end(arguments);
    return Malloced<char>{length < 0 ? nullptr : text};
}

} // namespace switchcfg
