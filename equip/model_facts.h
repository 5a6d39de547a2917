// SPDX-License-Identifier: Apache-2.0
// What each model is, in the few facts of its data sheet. Everything else about a model follows from them: see
// model_record.h for the equipment record and docs/equipment.md for the whole table.
#ifndef SWITCHCFG_EQUIP_MODEL_FACTS_H
#define SWITCHCFG_EQUIP_MODEL_FACTS_H

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace switchcfg {

enum class Front : std::uint8_t { none, gx, gt, gp };   // gigabit fibre, copper, copper with PoE
enum class Cage : std::uint8_t { none, xx, xs };        // 10G uplinks: XFP, SFP+
enum class Stacking : std::uint8_t { alone, stacking }; // the board has a stacking module with two ports
enum class Layer : std::uint8_t { l2, l3, mpls };       // what the switch chip runs
enum class Supply : std::uint8_t {
    removable,  // two slots, main and backup
    redundant,  // built in, with a socket for a redundant power unit
    dc,         // two DC inputs, A and B
    unlabelled, // built in, inputs without display names: the newest 20-port boards
};

struct ModelFacts {
    std::uint8_t model;
    std::uint8_t front_ports; // gigabit ports of the front group
    Front front;
    std::uint8_t combo_ports; // gigabit uplinks that are copper or fibre
    std::uint8_t cages;       // 10G uplinks
    Cage cage;
    Stacking stacking;
    Layer layer;
    Supply supply;
    std::uint8_t alarm_inputs = 1;

    constexpr bool fibre() const noexcept { return front == Front::gx; }
    constexpr bool poe() const noexcept { return front == Front::gp; }
    constexpr bool stacks() const noexcept { return stacking == Stacking::stacking; }
    constexpr bool newest_20() const noexcept { return supply == Supply::unlabelled; }
    constexpr int user_ports() const noexcept { return front_ports + combo_ports + cages; }
    constexpr bool family_48() const noexcept { return front_ports == 44; }
    constexpr bool family_20() const noexcept { return front_ports == 20; }
    constexpr bool family_24() const noexcept { return front_ports == 24; }
    // Ports that a pluggable transceiver can serve.
    constexpr int transceiver_ports() const noexcept { return fibre() ? user_ports() : combo_ports + cages; }
};

namespace detail {

using enum Front;
using enum Stacking;
using enum Layer;
using enum Supply;
inline constexpr Cage no = Cage::none;
inline constexpr Cage xx = Cage::xx;
inline constexpr Cage xs = Cage::xs;

// clang-format off
inline constexpr ModelFacts model_rows[] = {
//  model, front ports, combo uplinks, 10G uplinks, stacking module, layer, power supply (, alarm inputs)
    {},
    { 1, 24, gx, 4, 0, no, alone,    l2,   removable},
    { 2, 24, gx, 0, 2, xx, alone,    l2,   removable},
    { 3, 24, gx, 0, 0, no, stacking, l2,   removable},
    { 4, 24, gx, 0, 2, xx, stacking, l2,   removable},
    { 5, 24, gx, 0, 4, xx, alone,    l2,   removable},
    { 6, 20, gt, 4, 0, no, alone,    l2,   removable},
    { 7, 20, gt, 4, 2, xx, alone,    l2,   removable},
    { 8, 20, gt, 4, 0, no, stacking, l2,   removable},
    { 9, 20, gt, 4, 2, xx, stacking, l2,   removable},
    {10, 20, gt, 4, 4, xx, alone,    l2,   removable},
    {11, 44, gt, 4, 0, no, alone,    l3,   redundant},
    {12, 44, gt, 4, 2, xx, alone,    l3,   redundant},
    {13, 44, gt, 4, 0, no, stacking, l3,   redundant},
    {14, 44, gt, 4, 2, xx, stacking, l3,   redundant},
    {15, 44, gt, 4, 4, xx, alone,    l3,   redundant},
    {16, 44, gt, 4, 2, xs, alone,    l3,   redundant},
    {17, 44, gt, 4, 2, xs, stacking, l3,   redundant},
    {18, 44, gt, 4, 4, xs, alone,    l3,   redundant},
    {19, 24, gx, 4, 0, no, alone,    l3,   removable},
    {20, 24, gx, 4, 0, no, alone,    mpls, removable},
    {21, 24, gx, 0, 2, xx, alone,    l3,   removable},
    {22, 24, gx, 0, 2, xx, alone,    mpls, removable},
    {23, 24, gx, 0, 0, no, stacking, l3,   removable},
    {24, 24, gx, 0, 0, no, stacking, mpls, removable},
    {25, 24, gx, 0, 2, xx, stacking, l3,   removable},
    {26, 24, gx, 0, 2, xx, stacking, mpls, removable},
    {27, 24, gx, 0, 4, xx, alone,    l3,   removable},
    {28, 24, gx, 0, 4, xx, alone,    mpls, removable, 2},
    {29, 20, gt, 4, 0, no, alone,    l3,   removable},
    {30, 20, gt, 4, 0, no, alone,    mpls, removable},
    {31, 20, gt, 4, 2, xx, alone,    l3,   removable},
    {32, 20, gt, 4, 2, xx, alone,    mpls, removable},
    {33, 20, gt, 4, 0, no, stacking, l3,   removable},
    {34, 20, gt, 4, 0, no, stacking, mpls, removable},
    {35, 20, gt, 4, 2, xx, stacking, l3,   removable},
    {36, 20, gt, 4, 2, xx, stacking, mpls, removable},
    {37, 20, gt, 4, 4, xx, alone,    l3,   removable},
    {38, 20, gt, 4, 4, xx, alone,    mpls, removable},
    {39, 44, gt, 4, 0, no, alone,    mpls, redundant},
    {40, 44, gt, 4, 2, xx, alone,    mpls, redundant},
    {41, 44, gt, 4, 0, no, stacking, mpls, redundant},
    {42, 44, gt, 4, 2, xx, stacking, mpls, redundant},
    {43, 44, gt, 4, 4, xx, alone,    mpls, redundant},
    {44, 44, gt, 4, 2, xs, alone,    mpls, redundant},
    {45, 44, gt, 4, 2, xs, stacking, mpls, redundant},
    {46, 44, gt, 4, 4, xs, alone,    mpls, redundant},
    {47, 20, gp, 4, 0, no, alone,    l2,   redundant},
    {48, 20, gp, 4, 2, xx, alone,    l2,   redundant},
    {49, 20, gp, 4, 0, no, stacking, l2,   redundant},
    {50, 20, gp, 4, 2, xx, stacking, l2,   redundant},
    {51, 20, gp, 4, 4, xx, alone,    l2,   redundant},
    {52, 20, gp, 4, 0, no, alone,    l3,   redundant},
    {53, 20, gp, 4, 0, no, alone,    mpls, redundant},
    {54, 20, gp, 4, 2, xx, alone,    l3,   redundant},
    {55, 20, gp, 4, 2, xx, alone,    mpls, redundant},
    {56, 20, gp, 4, 0, no, stacking, l3,   redundant},
    {57, 20, gp, 4, 0, no, stacking, mpls, redundant},
    {58, 20, gp, 4, 2, xx, stacking, l3,   redundant},
    {59, 20, gp, 4, 2, xx, stacking, mpls, redundant},
    {60, 20, gp, 4, 4, xx, alone,    l3,   redundant},
    {61, 20, gp, 4, 4, xx, alone,    mpls, redundant},
    {62, 44, gp, 4, 0, no, alone,    l3,   redundant},
    {63, 44, gp, 4, 0, no, alone,    mpls, redundant},
    {64, 44, gp, 4, 2, xx, alone,    l3,   redundant},
    {65, 44, gp, 4, 2, xx, alone,    mpls, redundant},
    {66, 44, gp, 4, 0, no, stacking, l3,   redundant},
    {67, 44, gp, 4, 0, no, stacking, mpls, redundant},
    {68, 44, gp, 4, 2, xx, stacking, l3,   redundant},
    {69, 44, gp, 4, 2, xx, stacking, mpls, redundant},
    {70, 44, gp, 4, 4, xx, alone,    l3,   redundant},
    {71, 44, gp, 4, 4, xx, alone,    mpls, redundant},
    {72, 44, gp, 4, 2, xs, alone,    l3,   redundant},
    {73, 44, gp, 4, 2, xs, alone,    mpls, redundant},
    {74, 44, gp, 4, 2, xs, stacking, l3,   redundant},
    {75, 44, gp, 4, 2, xs, stacking, mpls, redundant},
    {76, 44, gp, 4, 4, xs, alone,    l3,   redundant},
    {77, 44, gp, 4, 4, xs, alone,    mpls, redundant},
    {78, 44, gt, 4, 0, no, stacking, mpls, dc},
    {79, 44, gt, 4, 2, xx, stacking, mpls, dc},
    {80, 44, gt, 4, 4, xx, alone,    mpls, dc},
    {81, 20, gt, 4, 2, xs, stacking, l3,   unlabelled},
    {82, 20, gt, 4, 4, xs, alone,    l3,   unlabelled},
    {83, 20, gp, 4, 2, xs, stacking, l3,   unlabelled},
    {84, 20, gp, 4, 4, xs, alone,    l3,   unlabelled},
    {85, 24, gx, 0, 4, xs, alone,    mpls, removable},
};
// clang-format on

} // namespace detail

// Indexed by hardware model number; entry 0 is no model.
inline constexpr const auto &model_facts = detail::model_rows;

inline constexpr int model_limit = static_cast<int>(std::size(model_facts));

} // namespace switchcfg

#endif
