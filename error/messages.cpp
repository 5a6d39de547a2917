// SPDX-License-Identifier: Apache-2.0
// Error codes to messages: one load from a table that the code indexes. The texts lie in one block and the table holds
// their places in it, so the 423 messages cost no relocation and a process that never fails never pages them in.
#include <switchcfg/error.h>

#include "error/message_rows.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <limits>

namespace {

using switchcfg::message_rows;
using switchcfg::MessageRow;

static_assert(std::size(message_rows) == 423);
static_assert(message_rows[0].code == -1);
static_assert(std::ranges::adjacent_find(message_rows, std::ranges::less_equal{}, &MessageRow::code) ==
                  std::ranges::end(message_rows),
    "each code once, in order");

using Place = std::uint16_t;
constexpr Place no_text = 0;

constexpr std::size_t code_span = 1U - static_cast<unsigned>(std::rbegin(message_rows)->code);
constexpr std::size_t block_size = [] {
    std::size_t size = 1; // the byte at no_text
    for (const MessageRow &row : message_rows) {
        size += row.text.size() + 1;
    }
    return size;
}();
static_assert(block_size <= std::numeric_limits<Place>::max());

struct Messages {
    std::array<Place, code_span> place{};
    std::array<char, block_size> block{};
};

constexpr Messages messages = [] {
    Messages packed;
    std::size_t end = 1;
    for (const MessageRow &row : message_rows) {
        packed.place[static_cast<std::size_t>(-row.code)] = static_cast<Place>(end);
        std::ranges::copy(row.text, packed.block.begin() + static_cast<std::ptrdiff_t>(end));
        end += row.text.size() + 1;
    }
    return packed;
}();

} // namespace

void cfg_error_init() noexcept {}

const char *cfg_strerror(int code) noexcept
{
    const unsigned index = 0U - static_cast<unsigned>(code); // positive codes wrap to far beyond the table
    if (index >= code_span) {
        return nullptr;
    }
    const Place place = messages.place[index];
    return place == no_text ? nullptr : &messages.block[place];
}
