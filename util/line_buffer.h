// SPDX-License-Identifier: Apache-2.0
// One line of output, put together in place and cut to fit.
#ifndef SWITCHCFG_UTIL_LINE_BUFFER_H
#define SWITCHCFG_UTIL_LINE_BUFFER_H

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <string_view>

namespace switchcfg {

class LineBuffer {
  public:
    static constexpr std::size_t size = 1024;
    static constexpr std::size_t ending_size = 2; // always left free

    [[gnu::format(printf, 2, 3)]] void add(const char *format, ...) noexcept
    {
        va_list arguments;
        va_start(arguments, format);
        add_list(format, arguments);
        va_end(arguments);
    }

    void add_list(const char *format, va_list arguments) noexcept
    {
        const std::size_t room = size - ending_size - used_;
        const int length = std::vsnprintf(text_.data() + used_, room + 1, format, arguments);
        used_ += std::min(room, static_cast<std::size_t>(std::max(length, 0)));
    }

    // The line with the given ending in place of the newlines it may have.
    std::string_view ended(std::string_view ending) noexcept
    {
        while (used_ > 0 && (text_[used_ - 1] == '\n' || text_[used_ - 1] == '\r')) {
            --used_;
        }
        used_ += ending.copy(text_.data() + used_, ending_size);
        return {text_.data(), used_};
    }

  private:
    std::array<char, size> text_;
    std::size_t used_ = 0;
};

} // namespace switchcfg

#endif
