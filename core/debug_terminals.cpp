// SPDX-License-Identifier: Apache-2.0
// The list of terminals that receive debug lines: reading, and changing it by replacing the file.
#include "core/debug_terminals.h"

#include <switchcfg/debug.h>
#include <switchcfg/locks.h>
#include <switchcfg/robust_io.h>

#include "util/owned.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <limits>
#include <system_error>
#include <unistd.h>

namespace switchcfg {

DebugsLock::DebugsLock(Kind kind, int patience_ms) noexcept
{
    constexpr int pause_ms = 10;
    const int fd = cfg_lock_table[CFG_LOCK_DEBUGS].fd;
    for (int waited = 0;; waited += pause_ms) {
        if ((kind == Kind::shared ? lock_try_read(fd) : lock_try_write(fd)) == 0) {
            fd_ = fd;
            return;
        }
        if ((errno != EAGAIN && errno != EACCES) || waited >= patience_ms) {
            return;
        }
        const KeepErrno keep;
        const timespec pause{0, pause_ms * 1000000L};
        ::nanosleep(&pause, nullptr);
    }
}

DebugsLock::~DebugsLock()
{
    if (fd_ >= 0) {
        const KeepErrno keep;
        lock_free(fd_);
    }
}

DebugTerminals::Read DebugTerminals::read() noexcept
{
    used_ = 0;
    const Descriptor file{::open(debug_terminals_path, O_RDONLY | O_CLOEXEC | O_NONBLOCK)};
    if (!file) {
        return errno == ENOENT ? Read::none : Read::failed;
    }
    while (used_ < text_.size()) {
        const ssize_t count = ::read(file.get(), text_.data() + used_, text_.size() - used_);
        if (count < 0) {
            return Read::failed;
        }
        if (count == 0) {
            break;
        }
        used_ += static_cast<std::size_t>(count);
    }
    if (used_ < text_.size()) {
        return Read::whole;
    }
    used_ = text().rfind('\n') + 1; // 0 when there is none
    return Read::too_long;
}

std::string_view take_line(std::string_view &text) noexcept
{
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(text.size(), line.size() + 1));
    return line;
}

int take_class(std::string_view &classes) noexcept
{
    const std::string_view digits = classes.substr(0, classes.find(','));
    classes.remove_prefix(std::min(classes.size(), digits.size() + 1));
    int number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return error == std::errc{} && end == digits.data() + digits.size() ? number : -1;
}

std::optional<DebugTerminal> parse_debug_terminal(std::string_view line) noexcept
{
    const std::size_t blank = line.find(' ');
    if (!line.starts_with('/') || blank >= terminal_path_size) {
        return std::nullopt;
    }
    return DebugTerminal{line.substr(0, blank), line.substr(blank + 1)};
}

namespace {

constexpr char new_list_path[] = "/var/run/debug_terminals.new"; // written under the exclusive lock only
constexpr int edit_patience_ms = 2000;

// The list as it will be.
class NewList {
  public:
    void add(std::string_view text) noexcept
    {
        // A full buffer is how a reader tells a list that is too long.
        full_ = full_ || text.size() >= text_.size() - used_;
        used_ += full_ ? 0 : text.copy(text_.data() + used_, text.size());
    }

    void add_terminal(const DebugTerminal &terminal, std::optional<int> added, std::optional<int> removed) noexcept
    {
        std::string_view classes = terminal.classes;
        bool first = true;
        const auto add_class = [&](int number) noexcept {
            if (first) {
                add(terminal.path);
            }
            char text[std::numeric_limits<int>::digits10 + 2];
            add(first ? " " : ",");
            add({text, std::to_chars(text, text + sizeof text, number).ptr});
            first = false;
        };
        while (!classes.empty()) {
            const int number = take_class(classes);
            if (number >= 0 && number != removed && number != added) {
                add_class(number);
            }
        }
        if (added) {
            add_class(*added);
        }
        if (!first) {
            add("\n");
        }
    }

    // Replaces the file, or removes it when nothing is left.
    int put_in_place() const noexcept
    {
        if (full_) {
            errno = ENOSPC;
            return -1;
        }
        if (used_ == 0) {
            return ::unlink(debug_terminals_path) == 0 || errno == ENOENT ? 0 : -1;
        }
        Descriptor file{::open(new_list_path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0644)};
        if (!file) {
            return -1;
        }
        if (vx_write_nointr(file.get(), text_.data(), static_cast<std::uint32_t>(used_)) == 0 &&
            ::rename(new_list_path, debug_terminals_path) == 0) {
            return 0;
        }
        const KeepErrno keep;
        ::unlink(new_list_path);
        return -1;
    }

  private:
    std::array<char, debug_terminals_size> text_;
    std::size_t used_ = 0;
    bool full_ = false;
};

bool is_terminal_path(std::string_view path) noexcept
{
    return path.starts_with('/') && path.size() < terminal_path_size &&
           std::ranges::all_of(path, [](char c) { return static_cast<unsigned char>(c) > ' '; });
}

int failed(int error) noexcept
{
    errno = error;
    return -1;
}

int edit(std::string_view path, std::optional<int> added, std::optional<int> removed) noexcept
{
    const DebugsLock lock{DebugsLock::Kind::exclusive, edit_patience_ms};
    if (!lock) {
        return -1;
    }
    DebugTerminals current;
    switch (current.read()) {
    case DebugTerminals::Read::failed:
        return -1;
    case DebugTerminals::Read::too_long:
        return failed(ENOSPC);
    case DebugTerminals::Read::none:
    case DebugTerminals::Read::whole:
        break;
    }
    NewList changed;
    for (std::string_view text = current.text(); !text.empty();) {
        const std::string_view line = take_line(text);
        const std::optional<DebugTerminal> terminal = parse_debug_terminal(line);
        if (terminal && terminal->path == path) {
            // DEBUG_CLASS_ALL removes every class by leaving the whole line out.
            if (removed != DEBUG_CLASS_ALL) {
                changed.add_terminal(*terminal, added, removed);
                added.reset();
            }
        } else {
            changed.add(line);
            changed.add("\n");
        }
    }
    if (added) {
        changed.add_terminal({path, ""}, added, std::nullopt);
    }
    return changed.put_in_place();
}

} // namespace
} // namespace switchcfg

int debug_terminal_enable(const char *path, int debug_class) noexcept
{
    using namespace switchcfg;
    if (path == nullptr || !is_terminal_path(path) || debug_class < 0) {
        return failed(EINVAL);
    }
    const Descriptor terminal{::open(path, O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)};
    if (!terminal || ::isatty(terminal.get()) == 0) {
        return -1;
    }
    return edit(path, debug_class, std::nullopt);
}

int debug_terminal_disable(const char *path, int debug_class) noexcept
{
    using namespace switchcfg;
    if (path == nullptr || !is_terminal_path(path) || (debug_class < 0 && debug_class != DEBUG_CLASS_ALL)) {
        return failed(EINVAL);
    }
    return edit(path, std::nullopt, debug_class);
}
