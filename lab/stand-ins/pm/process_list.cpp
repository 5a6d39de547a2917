// SPDX-License-Identifier: Apache-2.0
#include "lab/stand-ins/pm/process_list.h"

#include <switchcfg/pm_client.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

namespace switchlab::pm {

namespace {

constexpr std::string_view blanks = " \t\r";

// Takes the next word and the blanks behind it off the text.
std::string_view take_word(std::string_view &text)
{
    const std::size_t end = std::min(text.find_first_of(blanks), text.size());
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(std::min(text.find_first_not_of(blanks, end), text.size()));
    return word;
}

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

Entry parse_line(std::string_view line, const std::vector<Entry> &known)
{
    const std::string_view name = take_word(line);
    const std::string_view state = take_word(line);
    if (name.size() >= PM_NAME_SIZE) {
        throw ListError{"name '" + std::string{name} + "' has more than 31 characters"};
    }
    if (std::ranges::any_of(known, [&](const Entry &entry) { return entry.name == name; })) {
        throw ListError{"process '" + std::string{name} + "' is listed twice"};
    }
    if (state != "enabled" && state != "disabled") {
        throw ListError{"'enabled' or 'disabled' expected, not '" + std::string{state} + "'"};
    }
    if (line.empty() || line.find('\0') != std::string_view::npos) {
        throw ListError{"process '" + std::string{name} + "' has no command"};
    }
    return {std::string{name}, state == "enabled", std::string{line}};
}

} // namespace

std::vector<Entry> parse_process_list(std::string_view text, const std::string &origin)
{
    std::vector<Entry> entries;
    for (int number = 1; !text.empty(); ++number) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = trimmed(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.empty() || line.front() == '#') {
            continue;
        }
        try {
            entries.push_back(parse_line(line, entries));
        } catch (const ListError &error) {
            throw ListError{origin + ":" + std::to_string(number) + ": " + error.what()};
        }
    }
    return entries;
}

std::vector<Entry> read_process_list(const std::string &path)
{
    std::ifstream file{path};
    if (!file) {
        throw ListError{path + ": " + std::strerror(errno)};
    }
    return parse_process_list(std::string{std::istreambuf_iterator<char>{file}, {}}, path);
}

} // namespace switchlab::pm
