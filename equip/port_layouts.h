// SPDX-License-Identifier: Apache-2.0
// How the front ports of each board are wired to the ports of its switch chip. All models of a layout group are the
// same board, so a model's group decides.
#ifndef SWITCHCFG_EQUIP_PORT_LAYOUTS_H
#define SWITCHCFG_EQUIP_PORT_LAYOUTS_H

#include "equip/model_set.h"

namespace switchcfg {

enum class Layout : std::uint8_t {
    none, // no such board
    f24,  // 24 fibre ports, at most two 10G cages
    f24x, // 24 fibre ports, four 10G cages
    c20,  // 20 copper and 4 combo ports, at most two 10G cages
    c20s, // 20 copper and 4 combo ports, a stacking module
    c20x, // 20 copper and 4 combo ports, four 10G cages
    c48,  // 44 copper and 4 combo ports, at most two 10G cages or a stacking module
    c48x, // 44 copper and 4 combo ports, four 10G cages
};

namespace models {

inline constexpr ModelSet f24 = "1-4 19-26";
inline constexpr ModelSet f24x = "5 27-28 85";
inline constexpr ModelSet c20 = "6-7 9 29-32 35-36 47-48 50 52-55 58-59 81 83";
inline constexpr ModelSet c20s = "8 33-34 49 56-57";
inline constexpr ModelSet c20x = "10 37-38 51 60-61 82 84";
inline constexpr ModelSet c48 = "11-14 16-17 39-42 44-45 62-69 72-75 78-79";
inline constexpr ModelSet c48x = "15 18 43 46 70-71 76-77 80";

inline constexpr ModelSet family_24 = f24 | f24x;
inline constexpr ModelSet family_20 = c20 | c20s | c20x;
inline constexpr ModelSet family_48 = c48 | c48x;

static_assert((family_24 | family_20 | family_48) == all_models);
static_assert(family_24.count() + family_20.count() + family_48.count() == all_models.count());

} // namespace models

// clang-format off
inline constexpr PerModel<Layout> layout_of{Layout::none, {
    {models::f24,  Layout::f24},
    {models::f24x, Layout::f24x},
    {models::c20,  Layout::c20},
    {models::c20s, Layout::c20s},
    {models::c20x, Layout::c20x},
    {models::c48,  Layout::c48},
    {models::c48x, Layout::c48x},
}};
// clang-format on

inline constexpr int user_port_limit = 52; // user ports of a unit are below this
inline constexpr int chip_port_limit = 54; // front ports of a chip are below this

// Chip ports 0 and 1 are wired to no front port; the others follow the front panel from here on where nothing else is
// said, and ports outside the tables are counted the same way.
inline constexpr int first_front_chip_port = 2;

using UserToChip = std::array<std::int8_t, user_port_limit>;
using ChipToUser = std::array<std::int8_t, chip_port_limit>;

struct alignas(64) PortMap { // a power of two in size, so that finding a map is a shift
    UserToChip to_chip;
    ChipToUser to_user;
};

namespace detail {

struct Wire {
    int user;
    int chip;
};

consteval PortMap straight()
{
    PortMap map{};
    for (int user = 0; user < user_port_limit; ++user) {
        map.to_chip[static_cast<std::size_t>(user)] = static_cast<std::int8_t>(user + first_front_chip_port);
    }
    for (int chip = 0; chip < chip_port_limit; ++chip) {
        map.to_user[static_cast<std::size_t>(chip)] = static_cast<std::int8_t>(chip - first_front_chip_port);
    }
    return map;
}

template<std::size_t Count>
consteval PortMap rewired(PortMap map, const Wire (&wires)[Count])
{
    for (const Wire &wire : wires) {
        map.to_chip[static_cast<std::size_t>(wire.user)] = static_cast<std::int8_t>(wire.chip);
        map.to_user[static_cast<std::size_t>(wire.chip)] = static_cast<std::int8_t>(wire.user);
    }
    return map;
}

consteval PortMap listed(const UserToChip &to_chip)
{
    PortMap map{to_chip, {}};
    map.to_user.fill(-1);
    for (int user = 0; user < user_port_limit; ++user) {
        map.to_user[static_cast<std::size_t>(to_chip[static_cast<std::size_t>(user)])] = static_cast<std::int8_t>(user);
    }
    return map;
}

// Every board with 20 copper ports has its four combo ports wired in reverse.
inline constexpr PortMap c20 = rewired(straight(), {{16, 21}, {17, 20}, {18, 19}, {19, 18}});

// clang-format off
inline constexpr PortMap c48 = listed({
    30, 31, 32, 33, 34, 35, 36, 37,   2,  3,  4,  5,  6,  7,  8,  9,
    38, 39, 40, 41,                  10, 11, 12, 13, 14, 15, 16, 17,
    42, 43, 44, 45,                  18, 19, 20, 21, 22, 23, 24, 25,
    49, 48, 47, 46,                  50, 51, 52, 53,
    26, 27, 28, 29,
});
// clang-format on

} // namespace detail

// clang-format off
inline constexpr std::array<PortMap, 8> port_maps{
    detail::straight(), // no such board: what is asked of it counts straight on
    detail::straight(), // f24
    detail::rewired(detail::straight(), {{26, 29}, {27, 28}}), // f24x
    detail::c20,
    detail::rewired(detail::c20, {{24, 28}, {25, 29}}), // c20s
    detail::rewired(detail::c20, {{26, 29}, {27, 28}}), // c20x
    detail::c48,
    detail::rewired(detail::c48, {{50, 29}, {51, 28}}), // c48x
};
// clang-format on

constexpr const PortMap &port_map(Layout layout) noexcept
{
    return port_maps[static_cast<std::size_t>(layout)];
}

constexpr bool is_user_port(int port) noexcept
{
    return static_cast<unsigned>(port) < static_cast<unsigned>(user_port_limit);
}

// The chip port of any user port number: those that no board has count straight on, whatever they are.
constexpr int chip_port_of(Layout layout, int user_port) noexcept
{
    if (is_user_port(user_port)) {
        return port_map(layout).to_chip[static_cast<std::size_t>(user_port)];
    }
    return static_cast<int>(static_cast<unsigned>(user_port) + first_front_chip_port);
}

constexpr bool is_front_chip_port(int chip_port) noexcept
{
    return static_cast<unsigned>(chip_port) < static_cast<unsigned>(chip_port_limit);
}

// The other way round.
constexpr int user_port_of(Layout layout, int chip_port) noexcept
{
    if (is_front_chip_port(chip_port)) {
        return port_map(layout).to_user[static_cast<std::size_t>(chip_port)];
    }
    return static_cast<int>(static_cast<unsigned>(chip_port) - first_front_chip_port);
}

} // namespace switchcfg

#endif
