// SPDX-License-Identifier: Apache-2.0
// Equipment accessors and status look-ups beside the two loads that they cannot do without: the model number of the
// unit, and the field of its record. The floor is a call too, as every caller of the library makes one.
#include <switchcfg/equip_table.h>
#include <switchcfg/status.h>

#include "bench/support/compare.h"
#include "core/status_layout.h"

namespace {

using namespace switchcfg::bench;
namespace layout = switchcfg::status_layout;
using switchcfg::load;
using switchcfg::store;

// A full stack of different models, each unit with one chip and two modids.
std::uint8_t *stack()
{
    (void)status_init();
    auto *const region = static_cast<std::uint8_t *>(get_status());
    for (std::uint32_t unit = 0; unit < layout::max_units; ++unit) {
        const auto number = static_cast<std::int32_t>(unit);
        store(region, layout::unit_present, 1, unit);
        store(region, layout::hardware_model, 10 * number + 1, unit);
        store(region, layout::subunit_physical_unit, number, unit, 0);
        store(region, layout::subunit_first_modid, 2 * number, unit, 0);
        store(region, layout::subunit_modids, 2, unit, 0);
    }
    return region;
}

std::uint8_t *base = nullptr;

[[gnu::noinline]] int two_loads(std::uint32_t unit)
{
    const std::int32_t model = load(base, layout::hardware_model, unit);
    return Equip_tq5200[model].user_ports;
}

[[gnu::noinline]] int word_load(std::uint32_t unit)
{
    return load(base, layout::hardware_model, unit);
}

[[gnu::noinline]] int two_loads_of_an_array(std::uint32_t unit, std::uint32_t index)
{
    const std::int32_t model = load(base, layout::hardware_model, unit);
    return Equip_tq5200[model].xfp_port[index];
}

template<typename Get>
auto over_units(Get get)
{
    return [get, unit = std::uint32_t{0}]() mutable {
        const auto result = get(unit);
        unit = (unit + 1 + zero_after(result)) % layout::max_units;
        return result;
    };
}

void equipment_accessor(benchmark::State &state)
{
    base = stack();
    compare(state, {"equipment accessor", "a call of two dependent loads", 1.5}, over_units(through_pointer(two_loads)),
        over_units(through_pointer(cfg_equip_get_user_ports)));
}
SWITCHCFG_ROW(equipment_accessor);

void equipment_accessor_of_an_array(benchmark::State &state)
{
    base = stack();
    compare(state, {"equipment accessor of an array", "a call of two dependent loads", 1.5},
        over_units([get = through_pointer(two_loads_of_an_array)](std::uint32_t unit) { return get(unit, 1); }),
        over_units([get = through_pointer(cfg_equip_get_xfp_port)](std::uint32_t unit) { return get(unit, 1); }));
}
SWITCHCFG_ROW(equipment_accessor_of_an_array);

void status_word_lookup(benchmark::State &state)
{
    base = stack();
    compare(state,
        {"status look-up of a unit's model", "a call of two dependent loads: where the region is, the word", 1.5},
        over_units(through_pointer(word_load)),
        over_units([get = through_pointer(status_get_hw_model_num)](
                       std::uint32_t unit) { return get(static_cast<int>(unit)); }));
}
SWITCHCFG_ROW(status_word_lookup);

// What a look-up by modid must read of each unit before the one it finds: presence, chips of its model, the chip's
// range.
[[gnu::noinline]] int owner_floor(int modid)
{
    for (int unit = 0; unit < 8; ++unit) {
        if (load(base, layout::unit_present, unit) == 0 || two_loads(static_cast<std::uint32_t>(unit)) == 0) {
            continue;
        }
        const std::int32_t first = load(base, layout::subunit_first_modid, unit, 0);
        if (modid >= first && modid < first + load(base, layout::subunit_modids, unit, 0)) {
            return unit;
        }
    }
    return -1;
}

template<typename Get>
auto over_modids(Get get)
{
    return [get, modid = 0U]() mutable {
        const auto result = get(static_cast<int>(modid));
        modid = (modid + 1 + zero_after(result)) % 16;
        return result;
    };
}

void status_lookup(benchmark::State &state)
{
    base = stack();
    compare(state, {"status look-up of a module's unit", "the loads of each unit up to it", 1.5},
        over_modids(through_pointer(owner_floor)), over_modids(through_pointer(status_modid_to_unit)));
}
SWITCHCFG_ROW(status_lookup);

} // namespace
