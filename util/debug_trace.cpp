// SPDX-License-Identifier: Apache-2.0
// The developer trace.
#include <switchcfg/debug.h>

#include "util/line_buffer.h"
#include "util/owned.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

namespace switchcfg {
namespace {

constexpr char silent[] = "";

// Null until the environment was looked at, then a text that stays for good.
constinit std::atomic<const char *> chosen_output = nullptr;

const char *output() noexcept
{
    const char *known = chosen_output.load(std::memory_order_acquire);
    if (known != nullptr) {
        return known;
    }
    const char *const wanted = ::secure_getenv("SWITCHCFG_TRACE");
    char *const copy = wanted != nullptr ? ::strdup(wanted) : nullptr; // setenv may take the original away
    const char *const choice = copy != nullptr ? copy : silent;
    if (chosen_output.compare_exchange_strong(known, choice, std::memory_order_acq_rel)) {
        return choice;
    }
    std::free(copy); // another thread was first
    return known;
}

bool to_file() noexcept
{
    return output()[0] == '/';
}

bool to_standard_error() noexcept
{
    return std::strcmp(output(), "stderr") == 0;
}

void write_line(int fd, std::string_view line) noexcept
{
    if (::write(fd, line.data(), line.size()) < 0) {
        return; // there is nobody to tell
    }
}

} // namespace
} // namespace switchcfg

int devel_debug_level() noexcept
{
    const switchcfg::KeepErrno keep;
    return switchcfg::to_file() || switchcfg::to_standard_error() ? 1 : 0;
}

void devel_vprint_implementation(const char *tag, int line, const char *function, const char *format, ...) noexcept
{
    using namespace switchcfg;
    if (devel_debug_level() == 0) {
        return;
    }
    const KeepErrno keep;
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    LineBuffer buffer;
    buffer.add("[%6lld.%06ld] %s[%d] %s:%d %s(): ", static_cast<long long>(now.tv_sec), now.tv_nsec / 1000,
        program_invocation_short_name, ::getpid(), tag, line, function);
    va_list arguments;
    va_start(arguments, format);
    buffer.add_list(format, arguments);
    va_end(arguments);
    const std::string_view text = buffer.ended("\n");
    if (to_standard_error()) {
        write_line(STDERR_FILENO, text);
        return;
    }
    // Opened for each line: a daemon closes descriptors that it does not know, and their numbers come to name others.
    const Descriptor file{::open(output(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0600)};
    if (file) {
        write_line(file.get(), text);
    }
}
