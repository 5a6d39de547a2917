// SPDX-License-Identifier: Apache-2.0
// Printing one piece of an mpls_printf format. The C library prints each conversion by itself, so that none takes an
// argument that was not passed.
#include "funclist/mpls_sub_format.h"

#include "util/owned.h"

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace switchcfg {
namespace {

// A conversion without its size modifiers, as text, and its letter.
struct Conversion {
    std::string text;
    char letter;
};

bool append_printed(std::string &text, const char *format, ...)
{
    char *made = nullptr;
    va_list arguments;
    va_start(arguments, format);
    const int length = ::vasprintf(&made, format, arguments);
    va_end(arguments);
    if (length < 0) {
        return false;
    }
    const Malloced<char> printed{made};
    text.append(printed.get(), static_cast<std::size_t>(length));
    return true;
}

std::string_view take_while(std::string_view &rest, std::string_view set)
{
    const std::size_t count = std::min(rest.find_first_not_of(set), rest.size());
    const std::string_view taken = rest.substr(0, count);
    rest.remove_prefix(count);
    return taken;
}

// Takes the conversion at the start of `rest`, behind its percent sign; nothing when the piece ends inside it.
std::optional<Conversion> take_conversion(std::string_view &rest)
{
    constexpr std::string_view digits = "0123456789";
    Conversion conversion{"%", '\0'};
    std::string_view behind_place = rest;
    if (!take_while(behind_place, digits).empty() && behind_place.starts_with('$')) {
        rest = behind_place.substr(1); // there is one argument only, so its place says nothing
    }
    conversion.text += take_while(rest, "-+ #0'I");
    if (take_while(rest, "*").empty()) {
        conversion.text += take_while(rest, digits);
    }
    if (rest.starts_with('.')) {
        rest.remove_prefix(1);
        if (take_while(rest, "*").empty()) {
            conversion.text += '.';
            conversion.text += take_while(rest, digits);
        }
    }
    const std::string_view modifiers = take_while(rest, "hlLqjzZt");
    if (!rest.empty()) {
        conversion.letter = rest.front();
        rest.remove_prefix(1);
    } else if (modifiers.ends_with('l')) {
        conversion.letter = 'd'; // the letter l is a conversion here
    } else {
        return std::nullopt;
    }
    if (std::string_view{"diouxX"}.find(conversion.letter) != std::string_view::npos) {
        conversion.text.append(static_cast<std::size_t>(std::ranges::count(modifiers, 'h')), 'h');
    }
    conversion.text += conversion.letter;
    return conversion;
}

template<typename T>
T value_or_zero(const MplsValue &value)
{
    const T *const fitting = std::get_if<T>(&value);
    return fitting != nullptr ? *fitting : T{};
}

} // namespace

std::optional<std::string> expand_mpls_piece(std::string_view piece, MplsValue value)
{
    std::string printed;
    while (!piece.empty()) {
        const std::string_view plain = piece.substr(0, piece.find('%'));
        printed += plain;
        piece.remove_prefix(plain.size());
        if (piece.empty()) {
            break;
        }
        piece.remove_prefix(1);
        const std::optional<Conversion> conversion = take_conversion(piece);
        if (!conversion) {
            return std::nullopt;
        }
        const char *const format = conversion->text.c_str();
        bool done = true;
        switch (conversion->letter) {
        case '%':
            printed += '%';
            continue;
        case 'n': // would write through its argument
            continue;
        case 'd':
        case 'i':
        case 'o':
        case 'u':
        case 'x':
        case 'X':
        case 'c':
            done = append_printed(printed, format, value_or_zero<std::int32_t>(value));
            break;
        case 'a':
        case 'A':
        case 'e':
        case 'E':
        case 'f':
        case 'F':
        case 'g':
        case 'G':
            done = append_printed(printed, format, value_or_zero<double>(value));
            break;
        case 's':
        case 'M':
        case 'D': // these end no piece, but one that ends with an s has their argument
        case 'B':
        case 'P':
        case 'p':
            done = append_printed(printed, format, value_or_zero<const void *>(value));
            break;
        default: // prints as it stands, or a null pointer
            done = append_printed(printed, format, static_cast<const void *>(nullptr));
            break;
        }
        if (!done) {
            return std::nullopt;
        }
        value = NoValue{};
    }
    return printed;
}

} // namespace switchcfg
