// SPDX-License-Identifier: Apache-2.0
// The two text channels through which a function explains itself to the CLI user.
#include <switchcfg/error.h>

#include "util/owned.h"

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

char cfg_error_msg[CFG_ERROR_MSG_SIZE] = "";
int32_t Warning_times = 0;

static_assert(sizeof cfg_error_msg == 1024, "programs that name the buffer hold a copy of this size");

namespace {

using switchcfg::Malloced;

bool errors_enabled = false;

struct WarningLog {
    bool enabled = false;
    char *text = nullptr; // terminated; null when empty
    std::size_t length = 0;
    std::size_t last = 0; // where the last warning starts; it is followed by its line end
    std::size_t last_length = 0;

    bool repeats(std::string_view warning) const noexcept
    {
        return text != nullptr && std::string_view{text + last, last_length} == warning;
    }

    // All or nothing.
    bool append(std::string_view first, std::string_view second = {}, std::string_view third = {}) noexcept
    {
        const std::size_t grown_length = length + first.size() + second.size() + third.size();
        auto *grown = static_cast<char *>(std::realloc(text, grown_length + 1));
        if (grown == nullptr) {
            return false;
        }
        text = grown;
        for (const std::string_view piece : {first, second, third}) {
            length += piece.copy(text + length, piece.size());
        }
        text[length] = '\0';
        return true;
    }

    void clear() noexcept
    {
        std::free(text);
        *this = WarningLog{.enabled = enabled};
        Warning_times = 0;
    }
};

WarningLog warnings;

// The line that stands for the repeats, empty when there were none. The count is only reset by clearing: the CLI shows
// how often the user was warned, whichever warning came between.
class RepeatLine {
  public:
    RepeatLine() noexcept
    {
        if (Warning_times > 0) {
            (void)std::snprintf(
                text_, sizeof text_, "Last message repeated %d time%s\n", Warning_times, Warning_times > 1 ? "s" : "");
        }
    }
    std::string_view text() const noexcept { return text_; }

  private:
    char text_[sizeof "Last message repeated -2147483648 times\n"] = "";
};

} // namespace

int cfg_error_set_msg(const char *format, ...) noexcept
{
    if (errors_enabled) {
        va_list arguments;
        va_start(arguments, format);
        (void)std::vsnprintf(cfg_error_msg, sizeof cfg_error_msg, format, arguments);
        va_end(arguments);
    }
    return 0;
}

const char *cfg_error_get_msg() noexcept
{
    return cfg_error_msg;
}

void cfg_set_error_msg_enable(int enable) noexcept
{
    if (enable == 0 && errors_enabled) {
        cfg_error_msg[0] = '\0';
    }
    errors_enabled = enable != 0;
}

int cfg_warning_set_msg(const char *format, ...) noexcept
{
    if (!warnings.enabled) {
        return 0;
    }
    if (format == nullptr || *format == '\0') {
        warnings.clear();
        return 0;
    }
    char *formatted = nullptr;
    va_list arguments;
    va_start(arguments, format);
    const int length = ::vasprintf(&formatted, format, arguments);
    va_end(arguments);
    if (length < 0) {
        return 0;
    }
    const Malloced<char> owned{formatted};
    const std::string_view warning{formatted, static_cast<std::size_t>(length)};

    if (warnings.repeats(warning)) {
        ++Warning_times;
        return 0;
    }
    const RepeatLine repeat_line;
    if (warnings.append(repeat_line.text(), warning, "\n")) {
        warnings.last_length = warning.size();
        warnings.last = warnings.length - warning.size() - 1;
    }
    return 0;
}

const char *cfg_warning_get_msg() noexcept
{
    if (Warning_times > 0) {
        const RepeatLine repeat_line;
        (void)warnings.append(repeat_line.text());
    }
    return warnings.text;
}

void cfg_set_warning_msg_enable(int enable) noexcept
{
    if (enable == 0) {
        warnings.clear();
    }
    warnings.enabled = enable != 0;
}
