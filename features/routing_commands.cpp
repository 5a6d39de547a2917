// SPDX-License-Identifier: Apache-2.0
// Names of the routing stack's commands: one load from a table that the id indexes. The texts lie in one block and the
// table holds their places in it, so the names cost no relocation.
#include "features/routing_command_rows.h"

#include <switchcfg/routing.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <limits>

namespace {

using switchcfg::routing_command_rows;
using switchcfg::RoutingCommandRow;

static_assert(std::size(routing_command_rows) == 319);
static_assert(std::ranges::is_sorted(routing_command_rows, std::ranges::less{}, &RoutingCommandRow::id));
static_assert(routing_command_rows[0].id == 1 && std::rbegin(routing_command_rows)->id == 392);

constexpr bool twice(std::uint32_t id)
{
    return std::ranges::count(routing_command_rows, id, &RoutingCommandRow::id) == 2;
}
constexpr std::size_t distinct_ids = [] {
    std::size_t count = 1;
    for (std::size_t i = 1; i < std::size(routing_command_rows); ++i) {
        count += routing_command_rows[i].id != routing_command_rows[i - 1].id ? 1U : 0U;
    }
    return count;
}();
static_assert(distinct_ids == 317 && twice(188) && twice(224), "each id once, but for two");

using Place = std::uint16_t;
constexpr Place unknown = 0;
constexpr char unknown_name[] = "Unknown";

constexpr std::size_t id_span = std::rbegin(routing_command_rows)->id + 1;
constexpr std::size_t block_size = [] {
    std::size_t size = sizeof unknown_name;
    for (const RoutingCommandRow &row : routing_command_rows) {
        size += row.name.size() + 1;
    }
    return size;
}();
static_assert(block_size <= std::numeric_limits<Place>::max());

struct Names {
    std::array<Place, id_span> place{};
    std::array<char, block_size> block{};
};

constexpr Names names = [] {
    Names packed;
    std::ranges::copy(unknown_name, packed.block.begin() + unknown);
    std::size_t end = sizeof unknown_name;
    for (const RoutingCommandRow &row : routing_command_rows) {
        packed.place[row.id] = static_cast<Place>(end);
        std::ranges::copy(row.name, packed.block.begin() + static_cast<std::ptrdiff_t>(end));
        end += row.name.size() + 1;
    }
    return packed;
}();

} // namespace

const char *dc_get_cmd_id_name(std::uint32_t id) noexcept
{
    return &names.block[id < id_span ? names.place[id] : unknown];
}
