// SPDX-License-Identifier: Apache-2.0
// The list of terminals that receive debug lines. The public header describes the file.
#ifndef SWITCHCFG_CORE_DEBUG_TERMINALS_H
#define SWITCHCFG_CORE_DEBUG_TERMINALS_H

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace switchcfg {

inline constexpr char debug_terminals_path[] = "/var/run/debug_terminals";

inline constexpr std::size_t debug_terminals_size = 4096;
inline constexpr std::size_t terminal_path_size = 256;

// The "Debugs" lock for as long as the object lives, if it could be had.
class DebugsLock {
  public:
    enum class Kind { shared, exclusive };
    DebugsLock(Kind kind, int patience_ms) noexcept;
    ~DebugsLock();
    DebugsLock(const DebugsLock &) = delete;
    DebugsLock &operator=(const DebugsLock &) = delete;
    explicit operator bool() const noexcept { return fd_ >= 0; }

  private:
    int fd_ = -1;
};

// The file's content, whole lines only.
class DebugTerminals {
  public:
    enum class Read { none, whole, too_long, failed };
    Read read() noexcept; // too_long has the lines that fit
    std::string_view text() const noexcept { return {text_.data(), used_}; }

  private:
    std::array<char, debug_terminals_size> text_;
    std::size_t used_ = 0;
};

struct DebugTerminal {
    std::string_view path;
    std::string_view classes; // "5,27"
};

// Takes the first line off `text`, without its newline.
std::string_view take_line(std::string_view &text) noexcept;

// Takes the first class off `classes`; negative when it is none.
int take_class(std::string_view &classes) noexcept;

// Nothing when the line is a comment or makes no sense.
std::optional<DebugTerminal> parse_debug_terminal(std::string_view line) noexcept;

} // namespace switchcfg

#endif
