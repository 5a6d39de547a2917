// SPDX-License-Identifier: Apache-2.0
#include "tools/env_text.h"

#include "tools/command_line/failure.h"

#include <charconv>
#include <cstdio>
#include <istream>
#include <ostream>

namespace switchcfg::tool {
namespace {

constexpr struct {
    char letter;
    char meant;
} escapes[] = {{'\\', '\\'}, {'n', '\n'}, {'r', '\r'}, {'t', '\t'}};

std::string hexadecimal(char byte)
{
    char text[8];
    (void)std::snprintf(text, sizeof text, "\\x%02X", static_cast<unsigned char>(byte));
    return text;
}

std::string escaped(char byte)
{
    for (const auto &escape : escapes) {
        if (byte == escape.meant) {
            return {'\\', escape.letter};
        }
    }
    const bool is_control = static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F;
    return is_control ? hexadecimal(byte) : std::string{byte};
}

// The byte that the escape at the start of `text` stands for; the escape is taken off. A NUL can stand nowhere.
char take_escape(std::string_view &text)
{
    if (text.size() >= 2) {
        for (const auto &escape : escapes) {
            if (text[1] == escape.letter) {
                text.remove_prefix(2);
                return escape.meant;
            }
        }
    }
    unsigned value = 0;
    if (text.size() >= 4 && text[1] == 'x' && std::from_chars(&text[2], &text[2] + 2, value, 16).ptr == &text[2] + 2 &&
        value != 0) {
        text.remove_prefix(4);
        return static_cast<char>(value);
    }
    throw Failure{"'" + std::string{text.substr(0, 4)} + "' is no escape: \\\\ \\n \\r \\t \\xHH"};
}

std::string unescaped(std::string_view text)
{
    std::string plain;
    while (!text.empty()) {
        if (text.front() == '\\') {
            plain += take_escape(text);
        } else {
            plain += text.front();
            text.remove_prefix(1);
        }
    }
    return plain;
}

} // namespace

std::string escaped(const std::string &text)
{
    std::string line;
    for (const char byte : text) {
        line += escaped(byte);
    }
    return line;
}

void write_text(std::ostream &out, const Variables &variables)
{
    for (const Variable &variable : variables) {
        std::string line = escaped(variable.name) + '=' + escaped(variable.value);
        if (line.front() == '#') {
            line.replace(0, 1, hexadecimal('#'));
        }
        out << line << '\n';
    }
}

Variables read_text(std::istream &in, const std::string &source)
{
    Variables variables;
    std::size_t number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        if (line.ends_with('\r')) { // an editor's line end; a value's own is escaped
            line.pop_back();
        }
        if (line.empty() || line.front() == '#') {
            continue;
        }
        try {
            const std::size_t sign = line.find('=');
            if (sign == line.npos || sign == 0) {
                throw Failure{"not NAME=VALUE"};
            }
            if (line.find('\0') != line.npos) {
                throw Failure{"a NUL cannot stand in a variable"};
            }
            variables.push_back({unescaped(line.substr(0, sign)), unescaped(line.substr(sign + 1))});
            if (variables.back().name.find('=') != std::string::npos) {
                throw Failure{"a name cannot hold '='"};
            }
        } catch (const Failure &wrong) {
            throw Failure{source + ":" + std::to_string(number) + ": " + wrong.what()};
        }
    }
    if (in.bad()) {
        throw system_failure(source, "cannot read");
    }
    return variables;
}

} // namespace switchcfg::tool
