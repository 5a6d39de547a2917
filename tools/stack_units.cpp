// SPDX-License-Identifier: Apache-2.0
#include "tools/stack_units.h"

#include "core/status_layout.h"

#include <algorithm>
#include <cstring>
#include <switchcfg/equip_table.h>
#include <switchcfg/ports.h>

namespace switchcfg::tool {
namespace {

namespace layout = status_layout;

void set_bit(std::span<std::uint8_t, 32> bitmap, int bit)
{
    std::uint32_t word;
    std::uint8_t *const place = &bitmap[static_cast<std::size_t>(bit / 32) * sizeof word];
    std::memcpy(&word, place, sizeof word);
    word |= 1U << (bit % 32);
    std::memcpy(place, &word, sizeof word);
}

} // namespace

// Field by field: unit 0's record also holds the feature bitmap, which is no business of ours.
void withdraw_unit(std::uint8_t *region, int unit, Remember remember)
{
    store(region, layout::unit_present, 0, unit);
    store(region, layout::subunit_mark, 0, unit, 0);
    if (remember == Remember::model) {
        return;
    }
    store(region, layout::unit_subunits, 0, unit);
    store(region, layout::unit_logically_removed, 0, unit);
    store(region, layout::module_id, 0, unit, 0);
    store(region, layout::subunit_first_modid, 0, unit, 0);
    store(region, layout::subunit_modids, 0, unit, 0);
    store(region, layout::hardware_model, 0, unit);
    store(region, layout::hardware_version, 0, unit);
    for (const auto &bitmap : {layout::module_ports, layout::module_more_ports, layout::module_cpu_ports}) {
        std::ranges::fill(bytes(region, bitmap, unit, 0), std::uint8_t{0});
    }
    std::ranges::fill(bytes(region, layout::unit_mac, unit), std::uint8_t{0});
    std::memset(text(region, layout::hardware_model_name, unit), 0, layout::hardware_model_name.size);
    for (int port = 0; port < static_cast<int>(layout::max_ports); ++port) {
        store(region, layout::transceiver_present, 0, unit, port);
    }
}

void announce_unit(std::uint8_t *region, int unit, const UnitHardware &hardware)
{
    const cfg_equip_record &record = Equip_tq5200[hardware.model];
    store(region, layout::hardware_model, hardware.model, unit);
    store(region, layout::hardware_version, hardware.version, unit);
    std::memcpy(text(region, layout::hardware_model_name, unit), record.name, std::strlen(record.name));
    std::ranges::copy(hardware.mac, bytes(region, layout::unit_mac, unit).begin());

    store(region, layout::module_id, unit, unit, 0);
    store(region, layout::subunit_first_modid, 2 * unit, unit, 0);
    store(region, layout::subunit_modids, record.user_ports + record.stack_ports > 30 ? 2 : 1, unit, 0);
    store(region, layout::subunit_mark, 1, unit, 0);
    store(region, layout::unit_subunits, record.local_units, unit);
    set_bit(bytes(region, layout::module_cpu_ports, unit, 0), 0);
    for (int port = 0; port < record.user_eth_ports + record.stack_ports; ++port) {
        int module = 0;
        int chip_port = 0;
        const auto bitmap = port < record.user_eth_ports ? layout::module_ports : layout::module_more_ports;
        if (cfg_equip_user_to_phys_port_tq5200(unit, port, &module, &chip_port) == 0) {
            set_bit(bytes(region, bitmap, unit, 0), chip_port);
        }
    }
    std::uint32_t cages[CFG_PBMP_WORDS] = {};
    if (hardware.plugged && cfg_equip_get_slot_pbmp_tcv_tq5200(unit, cages) == 0) {
        for (int port = 0; port < static_cast<int>(layout::max_ports); ++port) {
            const std::uint32_t cage = (cages[port / 32] >> (port % 32)) & 1U;
            store(region, layout::transceiver_present, static_cast<std::uint8_t>(cage), unit, port);
        }
    }
    store(region, layout::unit_present, 1, unit);
}

} // namespace switchcfg::tool
