// SPDX-License-Identifier: Apache-2.0
// The accumulating printf of the MPLS code.
#include <switchcfg/mpls_print.h>

#include "funclist/mpls_sub_format.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace switchcfg {
namespace {

constexpr std::size_t longest_piece = 199;

// The text being built. It is empty while `size` is 0, and lost while there is a size and no buffer.
struct Context {
    static constexpr std::size_t step = 128;

    char *buffer = nullptr;
    std::size_t length = 0; // bytes used, the terminator included
    std::size_t size = 0;

    bool begin() noexcept
    {
        if (size != 0) {
            return true;
        }
        buffer = static_cast<char *>(std::malloc(step));
        if (buffer == nullptr) {
            return false;
        }
        buffer[0] = '\0';
        length = 1;
        size = step;
        return true;
    }

    void append(const char *text) noexcept
    {
        const std::size_t added = std::strlen(text);
        if (buffer == nullptr || !make_room(length + added)) {
            return;
        }
        std::memcpy(buffer + length - 1, text, added + 1);
        length += added;
    }

  private:
    bool make_room(std::size_t need) noexcept
    {
        if (need <= size) {
            return true;
        }
        const std::size_t grown = (need / step + 1) * step;
        const bool countable = grown <= std::numeric_limits<int>::max();
        auto *const moved = countable ? static_cast<char *>(std::realloc(buffer, grown)) : nullptr;
        if (moved == nullptr) {
            // Length and size stay: that tells a lost text from one that nobody began.
            std::free(std::exchange(buffer, nullptr));
            return false;
        }
        buffer = moved;
        size = grown;
        return true;
    }
};

constinit Context context;

bool ends_conversion(char c) noexcept
{
    return c != '\0' && std::strchr("sduclfrMxX", c) != nullptr;
}

void append_piece(std::string_view piece, MplsValue value)
{
    if (const std::optional<std::string> text = expand_mpls_piece(piece, value)) {
        context.append(text->c_str()); // as far as a zero byte, which %c can print
    }
}

// A va_list that can be handed on by reference, whatever its type is on the machine.
struct Arguments {
    explicit Arguments(va_list list) noexcept { va_copy(rest, list); }
    ~Arguments() { va_end(rest); }
    Arguments(const Arguments &) = delete;
    Arguments &operator=(const Arguments &) = delete;
    std::int32_t word() noexcept { return va_arg(rest, std::int32_t); }
    const void *pointer() noexcept { return va_arg(rest, const void *); }

    va_list rest;
};

MplsValue next_value(char letter, Arguments &arguments)
{
    switch (letter) {
    case 's':
    case 'M':
        return arguments.pointer();
    case 'c':
        return arguments.word() & 0xff;
    case 'f':
        return static_cast<double>(arguments.word());
    case 'r':
        return NoValue{};
    default:
        return arguments.word();
    }
}

void print(const char *format, Arguments &arguments)
{
    std::string piece;
    bool in_conversion = false;
    for (; *format != '\0'; ++format) {
        piece += *format;
        if (piece.size() == longest_piece) {
            return;
        }
        if (*format == '%') {
            in_conversion = !in_conversion;
        } else if (in_conversion && ends_conversion(*format)) {
            append_piece(piece, next_value(*format, arguments));
            piece.clear();
            in_conversion = false;
        }
    }
    append_piece(piece, NoValue{});
}

} // namespace
} // namespace switchcfg

void mpls_printf(const char *format, va_list arguments) noexcept
{
    using namespace switchcfg;
    if (!context.begin()) {
        return;
    }
    Arguments copy{arguments};
    try {
        print(format, copy);
    } catch (const std::bad_alloc &) {
        return; // the piece that needed the memory is left out
    }
}

void mpls_cli_printf(const char *format, ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    mpls_printf(format, arguments);
    va_end(arguments);
}

int mpls_prt_get_context(char **buffer, int *length) noexcept
{
    using namespace switchcfg;
    if (buffer == nullptr || length == nullptr) {
        return -1;
    }
    *buffer = context.buffer;
    *length = static_cast<int>(context.length);
    context = {};
    return 0;
}

void mpls_prt_clean_context() noexcept
{
    using namespace switchcfg;
    std::free(context.buffer);
    context = {};
}
