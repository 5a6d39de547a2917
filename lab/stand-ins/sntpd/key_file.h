// SPDX-License-Identifier: Apache-2.0
// The key file of an SNTP daemon: one key per line, "ID TYPE VALUE" between blanks; '#' starts a comment.
#ifndef SWITCHLAB_SNTPD_KEY_FILE_H
#define SWITCHLAB_SNTPD_KEY_FILE_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace switchlab::sntpd {

struct Key {
    std::uint32_t id; // from 1
    std::string type;
    std::string value;
    bool operator==(const Key &) const = default;
};

struct KeyFile {
    std::vector<Key> keys;
    std::vector<int> wrong_lines; // counted from 1; the keys of the others hold
    bool operator==(const KeyFile &) const = default;
};

KeyFile parse_keys(std::string_view text);

} // namespace switchlab::sntpd

#endif
