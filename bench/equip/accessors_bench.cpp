// SPDX-License-Identifier: Apache-2.0
// Equipment accessors and status look-ups beside the two loads that they cannot do without: the model number of the
// unit, and the field of its record. The floor is a call too, as every caller of the library makes one.
#include <switchcfg/equip.h>
#include <switchcfg/status.h>

#include "core/status_layout.h"

#include <benchmark/benchmark.h>

namespace {

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

template<typename Get>
void for_each_unit(benchmark::State &state, Get get)
{
    base = stack();
    std::uint32_t unit = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(get(unit));
        unit = (unit + 1) % layout::max_units;
    }
}

void equipment_floor(benchmark::State &state)
{
    for_each_unit(state, two_loads);
}
BENCHMARK(equipment_floor);

void equipment_accessor(benchmark::State &state)
{
    for_each_unit(state, cfg_equip_get_user_ports);
}
BENCHMARK(equipment_accessor);

void equipment_accessor_of_an_array(benchmark::State &state)
{
    for_each_unit(state, [](std::uint32_t unit) { return cfg_equip_get_xfp_port(unit, 1); });
}
BENCHMARK(equipment_accessor_of_an_array);

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
void for_each_modid(benchmark::State &state, Get get)
{
    base = stack();
    int modid = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(get(modid));
        modid = (modid + 1) % 16;
    }
}

void status_lookup_floor(benchmark::State &state)
{
    for_each_modid(state, owner_floor);
}
BENCHMARK(status_lookup_floor);

void status_lookup(benchmark::State &state)
{
    for_each_modid(state, status_modid_to_unit);
}
BENCHMARK(status_lookup);

void status_word_lookup(benchmark::State &state)
{
    for_each_unit(state, [](std::uint32_t unit) { return status_get_hw_model_num(static_cast<int>(unit)); });
}
BENCHMARK(status_word_lookup);

} // namespace
