// SPDX-License-Identifier: Apache-2.0
// Cable test results from the chip's order of pairs into the connector's.
#include <switchcfg/ports.h>

#include "equip/unit_words.h"

#include <utility>

namespace {

constexpr int header_values = 2;
constexpr int values_per_pair = 2; // status and length

void exchange_pairs(int *results, int first, int second) noexcept
{
    int *const pairs = results + header_values;
    for (int value = 0; value < values_per_pair; ++value) {
        std::swap(pairs[values_per_pair * first + value], pairs[values_per_pair * second + value]);
    }
}

} // namespace

using namespace switchcfg;

// Upper sockets are turned over against lower ones, so their pairs arrive mirrored; the board crosses the pairs of the
// others. The two sockets whose lanes are not inverted (cfg_equip_is_txrx_inverted) keep their middle pairs straight.
void cfg_equip_unscramble_cable_pairs_tq5200(int unit, int port, int *results) noexcept
{
    if (!is_unit(unit) || port < 0 || results == nullptr) {
        return;
    }
    const int copper_ports = model_record(model_number(unit)).num_electrical_ports;
    if (port >= copper_ports) {
        return;
    }
    const int number = port + 1;
    const int last_mirrored = copper_ports <= 24 ? 15 : 39;
    if (number % 2 == 0 || number > last_mirrored) {
        exchange_pairs(results, 0, 1);
        exchange_pairs(results, 2, 3);
    } else {
        exchange_pairs(results, 0, 3);
        exchange_pairs(results, 1, 2);
    }
    if (number == 11 || number == 15) {
        exchange_pairs(results, 1, 2);
    }
}
