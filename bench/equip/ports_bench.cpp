// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/ports.h>
#include <switchcfg/status.h>

#include "bench/support/compare.h"
#include "core/status_layout.h"

#include <array>

namespace {

using namespace switchcfg;
using namespace switchcfg::bench;

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

// The walk over units and their modules is what a look-up by module means.
[[gnu::noinline]] int owner_floor(int module, int phys_port, int *user_port)
{
    for (int unit = 0; unit < units; ++unit) {
        if (load(floor_region, status_layout::unit_present, unit) == 0) {
            continue;
        }
        const int chips = load(floor_region, status_layout::unit_subunits, unit);
        for (int chip = 0; chip < chips; ++chip) {
            if (load(floor_region, status_layout::module_id, unit, chip) == module) {
                const std::int32_t model = load(floor_region, status_layout::hardware_model, unit);
                *user_port = floor_table[static_cast<std::size_t>(model)][static_cast<std::size_t>(phys_port)];
                return unit;
            }
        }
    }
    return -1;
}

template<typename Call>
auto over_ports(Call call)
{
    return [call, step = 0U]() mutable {
        int first = 0;
        int second = 0;
        const auto turn = static_cast<int>(step % 16);
        const int result = call(turn % units, 2 + turn, first, second);
        step += 1 + zero_after(result) + zero_after(first) + zero_after(second);
        return result;
    };
}

void user_to_chip(benchmark::State &state)
{
    floor_region = stack();
    compare(state, {"user port to chip port", "the same loads and one table load", 2},
        over_ports([floor = through_pointer(to_chip_floor)](
                       int unit, int port, int &module, int &chip) { return floor(unit, port, &module, &chip); }),
        over_ports([](int unit, int port, int &module, int &chip) {
            return cfg_equip_user_to_phys_port_tq5200(unit, port, &module, &chip);
        }));
}
SWITCHCFG_ROW(user_to_chip);

void chip_to_user(benchmark::State &state)
{
    floor_region = stack();
    compare(state, {"chip port to user port", "the same loads and one table load", 2},
        over_ports([floor = through_pointer(to_user_floor)](
                       int unit, int port, int &user, int &) { return floor(port, unit, &user); }),
        over_ports([](int unit, int port, int &user, int &) {
            return cfg_equip_phys_to_local_user_port_tq5200(port, unit, &user);
        }));
}
SWITCHCFG_ROW(chip_to_user);

void port_type(benchmark::State &state)
{
    floor_region = stack();
    compare(state, {"type of a port", "the same loads and one table load", 2},
        over_ports(
            [floor = through_pointer(type_floor)](int unit, int port, int &, int &) { return floor(unit, port); }),
        over_ports([](int unit, int port, int &, int &) { return cfg_get_port_type_tq5200_up(unit, port); }));
}
SWITCHCFG_ROW(port_type);

void module_and_chip_port_to_user(benchmark::State &state)
{
    floor_region = stack();
    compare(state, {"module and chip port to unit and user port", "the loads of each unit up to it, one table load", 2},
        over_ports([floor = through_pointer(owner_floor)](
                       int module, int port, int &, int &user) { return floor(module, port, &user); }),
        over_ports([](int module, int port, int &found, int &user) {
            return cfg_equip_phys_to_user_port_tq5200(module, port, &found, &user);
        }));
}
SWITCHCFG_ROW(module_and_chip_port_to_user);

} // namespace
