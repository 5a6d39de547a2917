// SPDX-License-Identifier: Apache-2.0
// The pager stream: where a command's output is collected, and what it ends in.
#include <switchcfg/pager.h>

#include "util/owned.h"
#include "util/pager_command.h"
#include "util/pager_enabled.h"

#include <cstdarg>
#include <cstdio>
#include <utility>

namespace switchcfg {

int pager_enabled = 0;

namespace {

std::FILE *stream = nullptr;
char *buffer = nullptr; // filled by a stream in memory
std::size_t size = 0;

void forget_buffer() noexcept
{
    buffer = nullptr;
    size = 0;
}

void finish(const char *command) noexcept
{
    std::FILE *const finished = std::exchange(stream, nullptr);
    if (finished == nullptr || finished == stdout) {
        return;
    }
    (void)std::fclose(finished);
    const Malloced<char> text{std::exchange(buffer, nullptr)};
    feed_command(command, [&](std::FILE *input) noexcept {
        if (text != nullptr) {
            (void)std::fwrite(text.get(), size, 1, input);
        }
    });
}

Malloced<char> grep_command(const char *pattern, const char *options, const char *rest) noexcept
{
    return command_line("/bin/grep %s \"%s\" %s", text_or_empty(options), text_or_empty(pattern), rest);
}

} // namespace
} // namespace switchcfg

using namespace switchcfg;

void pager_enable(int flag) noexcept
{
    pager_enabled = flag;
}

void pager_init() noexcept
{
    if (stream != nullptr) {
        return;
    }
    if (pager_enabled == 0) {
        pager_init_stdout();
        return;
    }
    forget_buffer();
    stream = ::open_memstream(&buffer, &size);
}

void pager_init_stdout() noexcept
{
    if (stream == nullptr) {
        stream = stdout;
        forget_buffer();
    }
}

void pager_init_file(const char *path) noexcept
{
    if (stream == nullptr) {
        stream = path != nullptr ? std::fopen(path, "w") : nullptr;
        forget_buffer();
    }
}

void pager_init_null() noexcept
{
    pager_init_file("/dev/null");
}

std::FILE *pager_get_out() noexcept
{
    return stream;
}

int pprintf(const char *format, ...) noexcept
{
    pager_init();
    if (stream == nullptr) {
        return -1;
    }
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vfprintf(stream, format, arguments);
    va_end(arguments);
    return length;
}

int pfprintf(std::FILE *output, const char *format, ...) noexcept
{
    if (output == nullptr) {
        return -1;
    }
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vfprintf(output, format, arguments);
    va_end(arguments);
    return length;
}

void pager_finish() noexcept
{
    finish("/bin/more");
}

void pager_finish_grep(const char *pattern, const char *grep_options) noexcept
{
    finish(grep_command(pattern, grep_options, "| /bin/more").get());
}

void pager_finish_grep_only(const char *pattern, const char *grep_options) noexcept
{
    finish(grep_command(pattern, grep_options, "").get());
}

void pager_finish_tftp(const char *server, const char *remote_file) noexcept
{
    finish(command_line("/bin/tftp -l - -r %s -p %s", text_or_empty(remote_file), text_or_empty(server)).get());
}
