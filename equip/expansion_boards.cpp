// SPDX-License-Identifier: Apache-2.0
// Expansion boards: whether there is one, which, where, and at what address. Each question has a list of its own, and
// the lists do not agree on every model: the board index, the position text and the address are read by different
// daemons, each against the numbering of its own driver.
#include <switchcfg/ports.h>

#include "equip/hardware_revision.h"
#include "equip/model_set.h"
#include "equip/unit_words.h"

namespace switchcfg {
namespace {

// What a model answers at each position, as first built and on boards of the second qualification.
template<typename T>
struct Positions {
    T rear, front;
    T quali2_rear, quali2_front;
};

template<typename T>
constexpr Positions<T> at(T rear, T front)
{
    return {rear, front, rear, front};
}

template<typename T>
T answer(const Positions<T> &positions, bool quali2, bool rear) noexcept
{
    if (quali2) {
        return rear ? positions.quali2_rear : positions.quali2_front;
    }
    return rear ? positions.rear : positions.front;
}

using Boards = Positions<std::int8_t>;
using Addresses = Positions<std::int8_t>;
enum class Place : std::uint8_t { none, rear, front };
using Places = Positions<Place>;

constexpr std::int8_t no = -1;
constexpr std::int8_t bad = result::invalid_parameter;
constexpr std::int8_t rear_address = 84;
constexpr std::int8_t front_address = 87;
constexpr auto none = Place::none;
constexpr auto rear = Place::rear;
constexpr auto front = Place::front;

constexpr ModelSet later_revisions_only = "2 21-22";
constexpr ModelSet always_fitted = "3-5 7-10 12-18 23-28 31-38 40-46 48-51 54-61 64-85";

// clang-format off
constexpr PerModel<Boards> boards{at<std::int8_t>(no, no), {
    {later_revisions_only,                                   {no, no,  no, 1}},
    {"3 23-24",                                              at<std::int8_t>(0, no)},
    {"4-5 25-28 85",                                         {0, no,  0, 1}},
    {"7 12 16 31-32 40 44 48 54-55 64-65 72-73 81 83",       at<std::int8_t>(1, no)},
    {"8 13 33-34 41 49 56-57 66-67 78",                      at<std::int8_t>(no, 0)},
    {"9-10 14-15 17-18 35-38 42-43 45-46 50-51 58-61 68-71 74-77 79-80 82 84", at<std::int8_t>(1, 0)},
}};

constexpr PerModel<Places> places{at(none, none), {
    {later_revisions_only,                                   {none, none,  none, front}},
    {"7 12 31-32 40 48 54-55 64-65",                         at(none, front)},
    {"3 8 13 23-24 33-34 41 49 56-57 66-67 78",              at(rear, none)},
    {"4-5 25-28 85",                                         {rear, none,  rear, front}},
    {"9-10 14-15 17-18 35-38 42-43 45-46 50-51 58-61 68-71 74-77 79-84", at(rear, front)},
}};
// Models whose front is position 1 alone; on the others every position but the rear one is the front.
constexpr ModelSet front_is_position_1 = "2 7 12 21-22 31-32 40 48 54-55 64-65";

constexpr PerModel<Addresses> addresses{at(bad, bad), {
    {"3-5 8 13 23-28 33-34 41 49 56-57 66-67 78 85",         {rear_address, bad,  rear_address, front_address}},
    {"7 12 16 31-32 40 44 48 54-55 64-65 72-73",             at(bad, front_address)},
    {"9-10 14-15 17-18 35-38 42-43 45-46 50-51 58-61 68-71 74-77 79-84", at(rear_address, front_address)},
}};
constexpr ModelSet front_address_is_position_1 = "7 12 16 31-32 40 44 48 54-55 64-65 72-73";
// clang-format on

} // namespace
} // namespace switchcfg

using namespace switchcfg;

int cfg_equip_get_exp_board_is_present_tq5200(int unit) noexcept
{
    if (!is_unit(unit)) {
        return 0;
    }
    const std::int32_t model = model_number(unit);
    return always_fitted.contains(model) || (later_revisions_only.contains(model) && is_quali2(unit)) ? 1 : 0;
}

int cfg_equip_get_exp_board_tq5200(int unit, int position) noexcept
{
    return is_unit(unit) ? answer(boards[model_number(unit)], is_quali2(unit), position == 0) : no;
}

const char *cfg_equip_get_exp_board_name_tq5200(int board) noexcept
{
    switch (board) {
    case 1:
    case 5:
        return "2x10GBase-X (XFP)";
    case 2:
    case 6:
        return "2xStacking";
    case 3:
    case 7:
        return "2x10GBase-X (SFP+)";
    case 4:
    case 8:
        return "2GX (100M, SGMII, 1000-X, 2500-X)";
    default:
        return "Undefined";
    }
}

const char *cfg_equip_get_exp_board_position_tq5200(int unit, int position) noexcept
{
    Place place = none;
    if (is_unit(unit)) {
        const std::int32_t model = model_number(unit);
        if (position == 0 || position == 1 || !front_is_position_1.contains(model)) {
            place = answer(places[model], is_quali2(unit), position == 0);
        }
    }
    switch (place) {
    case rear:
        return "Rear";
    case front:
        return "Front";
    case none:
        break;
    }
    return "None";
}

int cfg_equip_get_exp_board_i2c_addr_tq5200(int position) noexcept
{
    const std::int32_t model = model_number(0);
    if (position != 0 && position != 1 && front_address_is_position_1.contains(model)) {
        return bad;
    }
    return answer(addresses[model], is_quali2(0), position == 0);
}
