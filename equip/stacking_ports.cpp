// SPDX-License-Identifier: Apache-2.0
// Stacking ports and their identifiers.
#include <switchcfg/ports.h>

#include "equip/model_set.h"
#include "equip/unit_words.h"

namespace switchcfg {
namespace {

// Stacking port 1. The one below it is stacking port 2: the order is what makes the higher port the first, and the
// cabling of existing stacks goes by it.
constexpr int none = -1;
// clang-format off
constexpr PerModel<std::int8_t> first_stacking_port{none, {
    {"3 8 23-24 33-34 49 56-57",                25},
    {"4 9 25-26 35-36 50 58-59 81 83",          27},
    {"13-14 17 41-42 45 66-69 74-75 78-79",     51},
}};
// clang-format on

// The port at a 1-based position.
constexpr int stacking_port(std::int32_t model, int id) noexcept
{
    return first_stacking_port[model] - (id - 1);
}

} // namespace
} // namespace switchcfg

using namespace switchcfg;

int cfg_equip_get_stacking_support_tq5200() noexcept
{
    return stacking_support();
}

int cfg_equip_get_stack_port_num_tq5200(int unit, int *ports, int max) noexcept
{
    if (!is_unit(unit) || !unit_is_known(static_cast<unsigned>(unit))) {
        return result::invalid_unit_or_port;
    }
    const std::int32_t model = model_number(unit);
    if (ports == nullptr || model_record(model).stack_ports > max) {
        return result::invalid_parameter;
    }
    if (first_stacking_port[model] == none) {
        return result::unknown;
    }
    ports[0] = stacking_port(model, 1);
    ports[1] = stacking_port(model, 2);
    return 0;
}

int cfg_equip_stack_port_to_id_tq5200(int unit, int port, int *id) noexcept
{
    if (!is_unit(unit)) {
        return result::invalid_unit_or_port;
    }
    const std::int32_t model = model_number(unit);
    const ModelRecord &record = model_record(model);
    if (record.stack_ports == 0) {
        return result::unavailable;
    }
    if (!unit_is_known(static_cast<unsigned>(unit)) || port < record.user_eth_ports ||
        port >= record.user_eth_ports + record.stack_ports) {
        return result::invalid_unit_or_port;
    }
    if (id == nullptr) {
        return result::invalid_parameter;
    }
    for (int candidate = 1; candidate <= record.stack_ports; ++candidate) {
        if (stacking_port(model, candidate) == port) {
            *id = candidate;
            return 0;
        }
    }
    // On 48-port models with a stacking module alone the list names other ports than those behind the user ports.
    return result::invalid_unit_or_port;
}

int cfg_equip_stack_id_to_port_tq5200(int unit, int id, int *port) noexcept
{
    if (!is_unit(unit)) {
        return result::invalid_unit_or_port;
    }
    const std::int32_t model = model_number(unit);
    const int stack_ports = model_record(model).stack_ports;
    if (stack_ports == 0) {
        return result::unavailable;
    }
    if (!unit_is_known(static_cast<unsigned>(unit))) {
        return result::invalid_unit_or_port;
    }
    if (id < 1 || id > stack_ports || port == nullptr) {
        return result::invalid_parameter;
    }
    *port = stacking_port(model, id);
    return 0;
}
