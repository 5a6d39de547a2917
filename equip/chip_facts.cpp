// SPDX-License-Identifier: Apache-2.0
// The switch chip of a board and what it can do.
#include <switchcfg/ports.h>

#include "equip/port_layouts.h"
#include "equip/unit_words.h"

namespace switchcfg {
namespace {

constexpr std::int8_t no_chip = -1;
constexpr PerModel<std::int8_t> chip_ids{
    no_chip, {{models::family_24, 65}, {models::family_20, 66}, {models::family_48, 67}}};

constexpr ModelSet ten_gigabit =
    "2 4-5 7 9-10 12 14-15 21-22 25-28 31-32 35-38 40 42-43 48 50-51 54-55 58-61 64-65 68-71 79-85";
constexpr ModelSet layer_3 = "11-19 21 23 25 27 29 31 33 35 37 52 54 56 58 60 62 64 66 68 70 72 74 76 81-84";
constexpr ModelSet apollo = "11-18 62 64 66 68 70 72 74 76";
constexpr ModelSet triumph2 = "12-16 24 39-40 42-46 63 65 69 71 73 75 77";

constexpr int chipset_small = 128;
constexpr int chipset_large = 256;

} // namespace
} // namespace switchcfg

using namespace switchcfg;

int cfg_equip_get_chip_id_tq5200(int model) noexcept
{
    return chip_ids[model];
}

int cfg_equip_unit_local_is_10gx_tq5200(int unit) noexcept
{
    return unit_is_one_of(unit, ten_gigabit) ? 1 : 0;
}

int cfg_equip_get_is_L3_tq5200(int unit) noexcept
{
    return unit_is_one_of(unit, layer_3) ? 1 : 0;
}

int cfg_equip_get_is_apollo_tq5200(int unit) noexcept
{
    return unit_is_one_of(unit, apollo) ? 1 : 0;
}

int cfg_equip_get_is_triumph2_tq5200(int unit) noexcept
{
    return unit_is_one_of(unit, triumph2) ? 1 : 0;
}

int cfg_equip_check_ipfix_enabled_tq5200(int unit) noexcept
{
    return unit_is_one_of(unit, apollo | triumph2) ? 1 : 0;
}

int cfg_equip_is_optical_model_tq5200() noexcept
{
    return unit_is_one_of(0, models::family_24) ? 1 : 0;
}

int cfg_equip_is_cos_wfq_through_rr_tq5200(int unit) noexcept
{
    if (!is_unit(unit)) {
        return 0;
    }
    const int chipset = model_record(model_number(unit)).chipset;
    return chipset == chipset_small || chipset == chipset_large ? 1 : 0;
}
