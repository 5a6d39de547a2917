// SPDX-License-Identifier: Apache-2.0
// User ports to chip modules and ports, and back.
#include <switchcfg/ports.h>

#include "equip/port_conversion.h"
#include "equip/port_layouts.h"
#include "equip/unit_words.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <span>

namespace switchcfg {
namespace {

constexpr int bitmap_bits = 32 * CFG_PBMP_WORDS;
constexpr int no_port = bitmap_bits; // what an empty bitmap gives

std::uint32_t word_of(std::span<const std::uint8_t, bitmap_bits / 8> bitmap, int word) noexcept
{
    std::uint32_t value;
    std::memcpy(&value, bitmap.data() + sizeof value * static_cast<std::size_t>(word), sizeof value);
    return value;
}

bool has_port(const Field<Bytes<32>> &field, int unit, int module_index, int port) noexcept
{
    if (static_cast<unsigned>(port) >= static_cast<unsigned>(bitmap_bits)) {
        return false;
    }
    const std::uint32_t word = word_of(bytes(status_base(), field, unit, module_index), port / 32);
    return ((word >> (port % 32)) & 1U) != 0;
}

// The last one of the bitmap on purpose, where the status look-up takes the first: callers of the port numbering count
// on the highest.
int last_processor_port(int unit) noexcept
{
    if (status_base() == nullptr) {
        return no_port;
    }
    const auto bitmap = bytes(status_base(), status_layout::module_cpu_ports, unit, 0);
    for (int word = CFG_PBMP_WORDS - 1; word >= 0; --word) {
        const std::uint32_t bits = word_of(bitmap, word);
        if (bits != 0) {
            return 32 * word + std::bit_width(bits) - 1;
        }
    }
    return no_port;
}

[[gnu::always_inline]] inline std::int32_t module_of(int unit, int module_index) noexcept
{
    return status_word(status_layout::module_id, unit, module_index);
}

struct ModulePlace {
    int unit = 0;
    int index = result::invalid_unit_or_port;
};

ModulePlace find_module(int module) noexcept
{
    for (int unit = 0; unit < unit_count; ++unit) {
        if (!is_present(unit)) {
            continue;
        }
        const int modules = std::min<int>(
            status_word(status_layout::unit_subunits, unit), static_cast<int>(status_layout::max_subunits));
        for (int index = 0; index < modules; ++index) {
            if (module_of(unit, index) == module) {
                return {unit, index};
            }
        }
    }
    return {};
}

[[gnu::always_inline]] inline int to_local_user_port(int phys_port, int unit, int &user_port) noexcept
{
    const Layout layout = layout_of[model_number(unit)];
    if (!is_front_chip_port(phys_port) && layout == Layout::c48) [[unlikely]] {
        return result::invalid_unit_or_port;
    }
    user_port = user_port_of(layout, phys_port);
    return 0;
}

// What is no front port of a unit.
[[gnu::cold]] int other_port_to_chip(int unit, int user_port, int &module, int &chip_port) noexcept
{
    if (user_port >= CFG_PORT_CHANNEL_FIRST && user_port <= CFG_PORT_CHANNEL_LAST) {
        module = unit; // callers pass port-channels through unlooked at, with whatever stands for their unit
        chip_port = user_port;
        return 0;
    }
    if (!is_unit(unit)) {
        return result::invalid_parameter;
    }
    if (user_port == CFG_PORT_CPU) {
        module = module_of(unit, 0);
        chip_port = last_processor_port(unit);
        return 0;
    }
    const Layout layout = layout_of[model_number(unit)];
    // Only this group refuses ports: on the others callers reach chip ports that are not on the front panel.
    if (layout == Layout::none || layout == Layout::c48) {
        return result::invalid_unit_or_port;
    }
    module = module_of(unit, 0);
    chip_port = chip_port_of(layout, user_port);
    return 0;
}

// Every port operation of the daemons comes through here: the front ports first, without a call.
[[gnu::always_inline]] inline int to_chip_port(int unit, int user_port, int &module, int &chip_port) noexcept
{
    if (!is_unit(unit) || !is_user_port(user_port)) [[unlikely]] {
        return other_port_to_chip(unit, user_port, module, chip_port);
    }
    const Layout layout = layout_of[model_number(unit)];
    if (layout == Layout::none) [[unlikely]] {
        return result::invalid_unit_or_port;
    }
    module = module_of(unit, 0);
    chip_port = chip_port_of(layout, user_port);
    return 0;
}

} // namespace

int user_to_chip_port(int unit, int user_port, int &module, int &chip_port) noexcept
{
    return to_chip_port(unit, user_port, module, chip_port);
}

int chip_to_user_port(int module, int chip_port, int &unit, int &user_port) noexcept
{
    const ModulePlace place = find_module(module);
    if (place.index < 0) {
        return result::invalid_unit_or_port;
    }
    const auto is_in = [&](const Field<Bytes<32>> &bitmap) {
        return has_port(bitmap, place.unit, place.index, chip_port);
    };
    if (chip_port == CFG_CHIP_PORT_CPU || is_in(status_layout::module_cpu_ports)) {
        unit = place.unit;
        user_port = CFG_PORT_CPU;
        return 0;
    }
    if (!is_in(status_layout::module_ports) && !is_in(status_layout::module_more_ports)) {
        return result::invalid_unit_or_port;
    }
    const int converted = to_local_user_port(chip_port, place.unit, user_port);
    if (converted == 0) {
        unit = place.unit;
    }
    return converted;
}

} // namespace switchcfg

using namespace switchcfg;

int cfg_equip_user_to_phys_port_tq5200(int unit, int user_port, int *module, int *phys_port) noexcept
{
    if (module == nullptr || phys_port == nullptr) {
        return result::invalid_parameter;
    }
    return to_chip_port(unit, user_port, *module, *phys_port);
}

int cfg_equip_phys_to_user_unit_tq5200(int module, int *unit) noexcept
{
    if (unit == nullptr) {
        return result::invalid_parameter;
    }
    const ModulePlace place = find_module(module);
    if (place.index >= 0) {
        *unit = place.unit;
    }
    return place.index;
}

int cfg_equip_phys_to_local_user_port_tq5200(int phys_port, int unit, int *user_port) noexcept
{
    if (user_port == nullptr) {
        return result::invalid_parameter;
    }
    if (!is_unit(unit)) {
        return result::invalid_unit_or_port;
    }
    return to_local_user_port(phys_port, unit, *user_port);
}

int cfg_equip_phys_to_user_port_tq5200(int module, int phys_port, int *unit, int *user_port) noexcept
{
    if (unit == nullptr || user_port == nullptr) {
        return result::invalid_parameter;
    }
    return chip_to_user_port(module, phys_port, *unit, *user_port);
}

int cfg_equip_user_to_phys_pbmp_tq5200(int unit, const uint32_t *user_pbmp, cfg_equip_phys_pbmp *out) noexcept
{
    if (out == nullptr || user_pbmp == nullptr || !is_unit(unit)) {
        return result::invalid_parameter;
    }
    *out = {};
    const std::int32_t model = model_number(unit);
    const Layout layout = layout_of[model];
    const ModelRecord &record = model_record(model);
    out->chips = std::min<std::int32_t>(record.local_units, CFG_EQUIP_PHYS_PBMP_CHIPS);
    for (int index = 0; index < out->chips; ++index) {
        out->chip[index].module = module_of(unit, index);
    }
    // Front ports are all on the first chip, as the conversion of a single port says.
    for (int port = 0; port < record.user_eth_ports; ++port) {
        if (((user_pbmp[port / 32] >> (port % 32)) & 1U) != 0) {
            const int chip_port = chip_port_of(layout, port);
            out->chip[0].ports[chip_port / 32] |= 1U << (chip_port % 32);
        }
    }
    return 0;
}

int cfg_equip_user_to_unit_slot_tq5200(int /*unit*/, int port) noexcept
{
    return port;
}

int cfg_equip_convert_index_port_to_generic_user_port_tq5200(int /*unit*/, int port) noexcept
{
    return port;
}

int cfg_equip_convert_generic_user_port_to_port_index_tq5200(int /*unit*/, int port) noexcept
{
    return port;
}
