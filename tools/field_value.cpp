// SPDX-License-Identifier: Apache-2.0
#include "tools/field_value.h"

#include "tools/command_line/failure.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <type_traits>

namespace switchcfg::tool {
namespace {

constexpr struct {
    const char *name;
    FieldType type;
    std::uint32_t size; // 0: given in brackets
} types[] = {
    {"u8", FieldType::u8, 1},
    {"i8", FieldType::i8, 1},
    {"u16", FieldType::u16, 2},
    {"i16", FieldType::i16, 2},
    {"u32", FieldType::u32, 4},
    {"i32", FieldType::i32, 4},
    {"u64", FieldType::u64, 8},
    {"bytes", FieldType::bytes, 0},
    {"text", FieldType::text, 0},
};

// Calls `use` with a value-initialised integer of the element's type; false for bytes and text.
template<typename Use>
bool with_integer(FieldType type, Use &&use)
{
    switch (type) {
    case FieldType::u8:
        use(std::uint8_t{});
        return true;
    case FieldType::i8:
        use(std::int8_t{});
        return true;
    case FieldType::u16:
        use(std::uint16_t{});
        return true;
    case FieldType::i16:
        use(std::int16_t{});
        return true;
    case FieldType::u32:
        use(std::uint32_t{});
        return true;
    case FieldType::i32:
        use(std::int32_t{});
        return true;
    case FieldType::u64:
        use(std::uint64_t{});
        return true;
    case FieldType::bytes:
    case FieldType::text:
        return false;
    }
    return false;
}

// Aligned elements go through the same single access as the library's own.
template<typename T>
T read_word(const std::uint8_t *region, std::uint32_t offset)
{
    return load(region, Field<T>{"", offset, ""});
}

// Decimal, or hexadecimal behind 0x; the whole text or nothing.
template<typename T>
bool parse_integer(const std::string &text, T &value)
{
    const char *first = text.data();
    const char *const last = first + text.size();
    int base = 10;
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        first += 2;
        base = 16;
    }
    const auto [end, error] = std::from_chars(first, last, value, base);
    return error == std::errc{} && end == last && first != last;
}

std::string hex(std::span<const std::uint8_t> bytes)
{
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

std::vector<std::uint8_t> bytes_of_hex(const std::string &name, std::string text)
{
    std::erase_if(text, [](char c) { return c == ':' || c == ' '; });
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
        std::uint8_t byte = 0;
        const auto [end, error] = std::from_chars(&text[i], &text[i] + 2, byte, 16);
        if (error != std::errc{} || end != &text[i] + 2) {
            break;
        }
        bytes.push_back(byte);
    }
    if (bytes.size() * 2 != text.size()) {
        throw Failure{name + ": '" + text + "' is not pairs of hexadecimal digits"};
    }
    return bytes;
}

} // namespace

std::string type_name(FieldType type, std::uint32_t size)
{
    for (const auto &known : types) {
        if (known.type == type) {
            return known.size != 0 ? known.name : known.name + ("[" + std::to_string(size) + "]");
        }
    }
    return "?";
}

FieldType type_by_name(const std::string &name, std::uint32_t &size)
{
    const std::string base = name.substr(0, name.find('['));
    for (const auto &known : types) {
        if (base != known.name) {
            continue;
        }
        size = known.size;
        if (size != 0 && base == name) {
            return known.type;
        }
        const bool closed = name.size() > base.size() + 2 && name.back() == ']';
        if (size == 0 && closed && parse_integer(name.substr(base.size() + 1, name.size() - base.size() - 2), size) &&
            size > 0) {
            return known.type;
        }
        break;
    }
    throw Failure{"unknown type '" + name + "': one of u8 i8 u16 i16 u32 i32 u64 bytes[N] text[N]"};
}

std::vector<Element> elements_of(const FieldInfo &field)
{
    std::vector<Element> elements;
    const Dimension outer = field.dimensions[0];
    const Dimension inner = field.dimensions[1];
    for (std::uint32_t i = 0; i < outer.count; ++i) {
        for (std::uint32_t j = 0; j < inner.count; ++j) {
            std::string name = field.name;
            if (outer.count > 1) {
                name += "[" + std::to_string(i) + "]";
            }
            if (inner.count > 1) {
                name += "[" + std::to_string(j) + "]";
            }
            elements.push_back({std::move(name), field.place_of(i, j), field.size, field.type});
        }
    }
    return elements;
}

std::vector<Element> elements_by_name(std::span<const FieldInfo> fields, const std::string &name)
{
    const std::string base = name.substr(0, name.find('['));
    const auto field = std::ranges::find_if(fields, [&](const FieldInfo &known) { return base == known.name; });
    if (field == fields.end()) {
        throw Failure{"no field is named '" + base + "' (the fields sub-command lists them)"};
    }
    std::vector<Element> elements = elements_of(*field);
    if (base.size() == name.size()) {
        return elements;
    }
    std::erase_if(elements,
        [&](const Element &element) { return element.name != name && !element.name.starts_with(name + "["); });
    if (elements.empty()) {
        std::string shape = field->name;
        for (const Dimension &dimension : field->dimensions) {
            if (dimension.count > 1) {
                shape += "[0.." + std::to_string(dimension.count - 1) + "]";
            }
        }
        throw Failure{"'" + name + "' is no element of " + shape};
    }
    return elements;
}

bool is_zero(const std::uint8_t *region, const Element &element)
{
    return std::ranges::all_of(std::span{region + element.offset, element.size}, [](std::uint8_t b) { return b == 0; });
}

std::string format_value(const std::uint8_t *region, const Element &element)
{
    std::string text;
    if (with_integer(element.type,
            [&](auto zero) { text = std::to_string(read_word<decltype(zero)>(region, element.offset)); })) {
        return text;
    }
    const std::span bytes{region + element.offset, element.size};
    if (element.type == FieldType::bytes) {
        return hex(bytes);
    }
    const auto *first = reinterpret_cast<const char *>(bytes.data());
    return {first, ::strnlen(first, bytes.size())};
}

Json json_value(const std::uint8_t *region, const Element &element)
{
    Json value;
    if (!with_integer(element.type, [&](auto zero) { value = read_word<decltype(zero)>(region, element.offset); })) {
        value = format_value(region, element);
    }
    return value;
}

void set_value(std::uint8_t *region, const Element &element, const std::string &value)
{
    const bool integer = with_integer(element.type, [&](auto word) {
        using Word = decltype(word);
        if (!parse_integer(value, word)) {
            throw Failure{element.name + ": '" + value + "' is not a number from " +
                          std::to_string(std::numeric_limits<Word>::min()) + " to " +
                          std::to_string(std::numeric_limits<Word>::max())};
        }
        store(region, Field<Word>{"", element.offset, ""}, word);
    });
    if (integer) {
        return;
    }
    std::vector<std::uint8_t> bytes;
    if (element.type == FieldType::bytes) {
        bytes = bytes_of_hex(element.name, value);
        if (bytes.size() != element.size) {
            throw Failure{element.name + ": takes " + std::to_string(element.size) + " bytes, got " +
                          std::to_string(bytes.size())};
        }
    } else {
        bytes.assign(value.begin(), value.end());
        if (bytes.size() >= element.size) {
            throw Failure{element.name + ": takes at most " + std::to_string(element.size - 1) + " characters, got " +
                          std::to_string(bytes.size())};
        }
        bytes.resize(element.size);
    }
    std::ranges::copy(bytes, region + element.offset);
}

} // namespace switchcfg::tool
