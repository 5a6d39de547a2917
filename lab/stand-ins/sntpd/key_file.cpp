// SPDX-License-Identifier: Apache-2.0
#include "lab/stand-ins/sntpd/key_file.h"

#include <algorithm>
#include <charconv>

namespace switchlab::sntpd {

namespace {

std::vector<std::string_view> words_of(std::string_view line)
{
    constexpr std::string_view blanks = " \t\r\v\f";
    line = line.substr(0, line.find('#'));
    std::vector<std::string_view> words;
    while (true) {
        line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
        if (line.empty()) {
            return words;
        }
        const std::size_t end = std::min(line.find_first_of(blanks), line.size());
        words.push_back(line.substr(0, end));
        line.remove_prefix(end);
    }
}

bool parse_key(const std::vector<std::string_view> &words, const std::vector<Key> &known, Key &key)
{
    if (words.size() != 3) {
        return false;
    }
    const char *const end = words[0].data() + words[0].size();
    const auto parsed = std::from_chars(words[0].data(), end, key.id);
    key.type = words[1];
    key.value = words[2];
    return parsed.ec == std::errc{} && parsed.ptr == end && key.id != 0 &&
           std::ranges::find(known, key.id, &Key::id) == known.end();
}

} // namespace

KeyFile parse_keys(std::string_view text)
{
    KeyFile file;
    for (int number = 1; !text.empty(); ++number) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const auto words = words_of(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        Key key{};
        if (words.empty()) {
            continue;
        }
        if (parse_key(words, file.keys, key)) {
            file.keys.push_back(std::move(key));
        } else {
            file.wrong_lines.push_back(number);
        }
    }
    return file;
}

} // namespace switchlab::sntpd
