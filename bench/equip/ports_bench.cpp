// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/ports.h>
#include <switchcfg/status.h>

#include "core/status_layout.h"

#include <array>
#include <benchmark/benchmark.h>

namespace {

using namespace switchcfg;

constexpr int models[] = {1, 5, 6, 8, 10, 11, 15, 84}; // one of each wiring, one per unit
constexpr int units = static_cast<int>(std::size(models));

// A mapped region with a stack in which each call of a row meets another board.
std::uint8_t *stack()
{
    static std::uint8_t *const region = [] {
        status_init();
        auto *const status = static_cast<std::uint8_t *>(get_status());
        for (int unit = 0; unit < units; ++unit) {
            store(status, status_layout::unit_present, 1, unit);
            store(status, status_layout::unit_subunits, 1, unit);
            store(status, status_layout::module_id, unit, unit, 0);
            store(status, status_layout::hardware_model, models[unit], unit);
            for (std::uint8_t &byte : bytes(status, status_layout::module_ports, unit, 0)) {
                byte = 0xFF;
            }
        }
        return status;
    }();
    return region;
}

// What the answer cannot do without: the unit's model and module, and one table.
std::uint8_t *floor_region;
std::array<std::array<std::uint8_t, 64>, 128> floor_table;

[[gnu::noinline]] int to_chip_floor(int u, int port, int *module, int *phys_port)
{
    const std::int32_t model = load(floor_region, status_layout::hardware_model, u);
    *module = load(floor_region, status_layout::module_id, u, 0);
    *phys_port = floor_table[static_cast<std::size_t>(model)][static_cast<std::size_t>(port)];
    return 0;
}

[[gnu::noinline]] int to_user_floor(int phys_port, int u, int *user_port)
{
    const std::int32_t model = load(floor_region, status_layout::hardware_model, u);
    *user_port = floor_table[static_cast<std::size_t>(model)][static_cast<std::size_t>(phys_port)];
    return 0;
}

[[gnu::noinline]] int type_floor(int u, int port)
{
    const std::int32_t model = load(floor_region, status_layout::hardware_model, u);
    return floor_table[static_cast<std::size_t>(model)][static_cast<std::size_t>(port)] +
           load(floor_region, status_layout::transceiver_present, u, port);
}

template<typename Call>
void run(benchmark::State &state, Call call)
{
    floor_region = stack();
    int step = 0;
    for (auto _ : state) {
        ++step;
        int first = 0;
        int second = 0;
        benchmark::DoNotOptimize(call(step % units, 2 + step % 16, first, second));
        benchmark::DoNotOptimize(first);
        benchmark::DoNotOptimize(second);
    }
}

void user_to_chip_floor(benchmark::State &state)
{
    run(state, [](int unit, int port, int &module, int &chip) { return to_chip_floor(unit, port, &module, &chip); });
}
BENCHMARK(user_to_chip_floor);

void user_to_chip(benchmark::State &state)
{
    run(state, [](int unit, int port, int &module, int &chip) {
        return cfg_equip_user_to_phys_port_tq5200(unit, port, &module, &chip);
    });
}
BENCHMARK(user_to_chip);

void chip_to_user_floor(benchmark::State &state)
{
    run(state, [](int unit, int port, int &user, int &) { return to_user_floor(port, unit, &user); });
}
BENCHMARK(chip_to_user_floor);

void chip_to_user(benchmark::State &state)
{
    run(state, [](int unit, int port, int &user, int &) {
        return cfg_equip_phys_to_local_user_port_tq5200(port, unit, &user);
    });
}
BENCHMARK(chip_to_user);

void port_type_floor(benchmark::State &state)
{
    run(state, [](int unit, int port, int &, int &) { return type_floor(unit, port); });
}
BENCHMARK(port_type_floor);

void port_type(benchmark::State &state)
{
    run(state, [](int unit, int port, int &, int &) { return cfg_get_port_type_tq5200_up(unit, port); });
}
BENCHMARK(port_type);

// The walk over units and modules is what the look-up means: there is no floor but its own loads.
void module_and_chip_port_to_user(benchmark::State &state)
{
    run(state, [](int unit, int port, int &found, int &user) {
        return cfg_equip_phys_to_user_port_tq5200(unit, port, &found, &user);
    });
}
BENCHMARK(module_and_chip_port_to_user);

} // namespace
