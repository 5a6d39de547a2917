// SPDX-License-Identifier: Apache-2.0
// Debug lines to the terminals that enabled their class.
#include <switchcfg/debug.h>

#include "core/debug_terminals.h"
#include "util/line_buffer.h"
#include "util/owned.h"

#include <csignal>
#include <cstdarg>
#include <fcntl.h>
#include <optional>
#include <string_view>
#include <unistd.h>

namespace switchcfg {
namespace {

constexpr int line_patience_ms = 100;

// A process in the background that writes to its own terminal would be stopped, where the terminal is set so.
class NotStoppedByTerminals {
  public:
    NotStoppedByTerminals() noexcept
    {
        sigset_t stop;
        ::sigemptyset(&stop);
        ::sigaddset(&stop, SIGTTOU);
        ::sigprocmask(SIG_BLOCK, &stop, &before_);
    }
    ~NotStoppedByTerminals() { ::sigprocmask(SIG_SETMASK, &before_, nullptr); }
    NotStoppedByTerminals(const NotStoppedByTerminals &) = delete;
    NotStoppedByTerminals &operator=(const NotStoppedByTerminals &) = delete;

  private:
    sigset_t before_;
};

bool wants(std::string_view classes, int debug_class) noexcept
{
    while (!classes.empty()) {
        if (take_class(classes) == debug_class) {
            return true;
        }
    }
    return false;
}

// Never waits, and writes to nothing but a terminal, whatever the list says.
void send(std::string_view path, std::string_view line) noexcept
{
    char device[terminal_path_size];
    device[path.copy(device, sizeof device - 1)] = '\0';
    const Descriptor terminal{::open(device, O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)};
    if (terminal && ::isatty(terminal.get()) != 0) {
        [[maybe_unused]] const ssize_t taken = ::write(terminal.get(), line.data(), line.size());
    }
}

bool read_locked(DebugTerminals &terminals) noexcept
{
    const DebugsLock lock{DebugsLock::Kind::shared, line_patience_ms};
    if (!lock) {
        return false;
    }
    const DebugTerminals::Read result = terminals.read();
    return result == DebugTerminals::Read::whole || result == DebugTerminals::Read::too_long;
}

void send_to_all(int debug_class, const char *format, va_list arguments) noexcept
{
    DebugTerminals terminals;
    if (debug_class < 0 || !read_locked(terminals)) {
        return;
    }
    LineBuffer buffer;
    std::string_view line;
    std::optional<NotStoppedByTerminals> protection;
    for (std::string_view text = terminals.text(); !text.empty();) {
        const std::optional<DebugTerminal> terminal = parse_debug_terminal(take_line(text));
        if (!terminal || !wants(terminal->classes, debug_class)) {
            continue;
        }
        if (!protection) {
            protection.emplace();
            buffer.add_list(format, arguments);
            line = buffer.ended("\r\n");
        }
        send(terminal->path, line);
    }
}

} // namespace
} // namespace switchcfg

void debug_process(int debug_class, const char *format, ...) noexcept
{
    using namespace switchcfg;
    const KeepErrno keep;
    if (::access(debug_terminals_path, F_OK) != 0) {
        return;
    }
    va_list arguments;
    va_start(arguments, format);
    send_to_all(debug_class, format, arguments);
    va_end(arguments);
}
