// SPDX-License-Identifier: Apache-2.0
// Look-ups in the status region: units, the switch chips in them, and what belongs to a port.
#include "core/status_layout.h"
#include "core/status_region.h"
#include "equip/record.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <switchcfg/status.h>

namespace switchcfg {
namespace {

namespace layout = status_layout;

constexpr int invalid_unit_or_port = -3;

constexpr bool is_unit(int unit) noexcept
{
    return unit_is_valid(static_cast<std::uint32_t>(unit));
}

constexpr bool is_port(int unit, int port) noexcept
{
    return is_unit(unit) && static_cast<std::uint32_t>(port) < layout::max_ports;
}

// A count of the region that its writer spoilt must not lead out of the records.
int max_unit_count(const std::uint8_t *region) noexcept
{
    return static_cast<int>(std::min(load(region, layout::max_unit_count), layout::max_units));
}

struct Chip {
    const std::uint8_t *region;
    int unit;
    int index;

    std::int32_t physical_unit() const noexcept { return load(region, layout::subunit_physical_unit, unit, index); }
    std::int32_t first_modid() const noexcept { return load(region, layout::subunit_first_modid, unit, index); }
    std::int32_t modids() const noexcept { return load(region, layout::subunit_modids, unit, index); }
    bool owns(int modid) const noexcept
    {
        const std::int32_t first = first_modid();
        const std::int32_t count = modids();
        return modid >= first && count > 0 &&
               static_cast<std::uint32_t>(modid) - static_cast<std::uint32_t>(first) <
                   static_cast<std::uint32_t>(count);
    }
    explicit operator bool() const noexcept { return region != nullptr; }
};

// How many chips of a unit a walk visits.
struct ChipsOfModel {
    int operator()(const std::uint8_t *region, int unit) const noexcept
    {
        return model_record(load(region, layout::hardware_model, unit)).local_units;
    }
};

struct ChipsReported {
    int operator()(const std::uint8_t *region, int unit) const noexcept
    {
        return std::min(load(region, layout::unit_subunits, unit), static_cast<std::int32_t>(layout::max_subunits));
    }
};

// The first chip of the present units that fits, by unit and then by index.
template<typename Chips, typename Fits>
Chip find_chip(Chips chips_of, Fits fits) noexcept
{
    const std::uint8_t *const region = status_base();
    if (region == nullptr) {
        return {};
    }
    for (int unit = 0; unit < static_cast<int>(layout::max_units); ++unit) {
        if (load(region, layout::unit_present, unit) == 0) {
            continue;
        }
        const int chips = chips_of(region, unit);
        for (int index = 0; index < chips; ++index) {
            const Chip chip{region, unit, index};
            if (fits(chip)) {
                return chip;
            }
        }
    }
    return {};
}

Chip owner_of(int modid) noexcept
{
    return find_chip(ChipsOfModel{}, [modid](const Chip &chip) { return chip.owns(modid); });
}

Chip chip_of(int punit) noexcept
{
    return find_chip(ChipsOfModel{}, [punit](const Chip &chip) { return chip.physical_unit() == punit; });
}

constexpr int ports_of_first_modid = 32;

} // namespace
} // namespace switchcfg

using namespace switchcfg;

int status_get_num_units() noexcept
{
    int count = 0;
    for (std::uint32_t unit = 0; unit < layout::max_units; ++unit) {
        count += unit_is_present(unit) ? 1 : 0;
    }
    return count;
}

int status_get_last_connected_unit() noexcept
{
    const std::uint8_t *const region = status_base();
    if (region == nullptr) {
        return 0;
    }
    int unit = max_unit_count(region) - 1;
    while (unit > 0 && load(region, layout::unit_present, unit) == 0) {
        --unit;
    }
    return std::max(unit, 0);
}

int status_mac_to_unit(const std::uint8_t *mac) noexcept
{
    std::uint8_t *const region = status_base();
    if (region == nullptr || mac == nullptr) {
        return -1;
    }
    const int count = max_unit_count(region);
    for (int unit = 0; unit < count; ++unit) {
        if (std::memcmp(bytes(region, layout::unit_mac, unit).data(), mac, layout::unit_mac.size) == 0) {
            return unit;
        }
    }
    return -1;
}

int status_modid_to_unit(int modid) noexcept
{
    const Chip chip = owner_of(modid);
    return chip ? chip.unit : -1;
}

int status_modid_to_unit_phys(int modid) noexcept
{
    const Chip chip = owner_of(modid);
    return chip ? chip.physical_unit() : -1;
}

int status_punit_to_modid(int punit) noexcept
{
    const Chip chip = chip_of(punit);
    return chip ? chip.first_modid() : -1;
}

int status_modid_port_to_phys_unit_port(int modid, int port, int *punit, int *pport) noexcept
{
    const Chip chip = owner_of(modid);
    if (!chip || punit == nullptr || pport == nullptr) {
        return -1;
    }
    const bool second = chip.modids() >= 2 && modid % 2 != 0;
    *punit = chip.physical_unit();
    // No port is refused, so the sum may wrap.
    *pport = second ? static_cast<int>(static_cast<unsigned>(port) + unsigned{ports_of_first_modid}) : port;
    return 0;
}

int status_phys_unit_port_to_modid_port(int punit, int pport, int *modid, int *port) noexcept
{
    const Chip chip = find_chip(ChipsReported{}, [punit](const Chip &each) { return each.physical_unit() == punit; });
    if (!chip || modid == nullptr || port == nullptr) {
        return -1;
    }
    const bool second = chip.modids() != 1 && pport >= ports_of_first_modid;
    *modid = chip.first_modid() + (second ? 1 : 0);
    *port = second ? pport - ports_of_first_modid : pport;
    return 0;
}

int status_unit_phys_to_slot_index(int punit, int *unit, int *index) noexcept
{
    const Chip chip = chip_of(punit);
    if (!chip || unit == nullptr || index == nullptr) {
        return -1;
    }
    *unit = chip.unit;
    *index = chip.index;
    return 0;
}

int status_get_cpu_port(int unit, int k) noexcept
{
    std::uint8_t *const region = status_base();
    if (region == nullptr || !is_unit(unit) || static_cast<std::uint32_t>(k) >= layout::max_subunits) {
        return STATUS_NO_CPU_PORT;
    }
    const auto bitmap = bytes(region, layout::subunit_cpu_ports, unit, k);
    for (std::size_t at = 0; at < bitmap.size(); at += sizeof(std::uint32_t)) {
        std::uint32_t word;
        std::memcpy(&word, &bitmap[at], sizeof word);
        if (word != 0) {
            return static_cast<int>(8 * at) + std::countr_zero(word);
        }
    }
    return STATUS_NO_CPU_PORT;
}

int status_init_port_info_by_unit(int unit) noexcept
{
    std::uint8_t *const region = status_base();
    if (region == nullptr || !is_unit(unit)) {
        return 0;
    }
    const int ports = unit_record(static_cast<std::uint32_t>(unit)).user_eth_ports;
    for (int port = 0; port < ports; ++port) {
        std::ranges::fill(bytes(region, layout::port_info, unit, port), std::uint8_t{0});
    }
    return 0;
}

std::uint8_t *tcv_status_get_pointer(int unit, int port) noexcept
{
    std::uint8_t *const region = status_base();
    return region != nullptr && is_port(unit, port) ? bytes(region, layout::transceiver_status, unit, port).data()
                                                    : nullptr;
}

int status_get_tcv_handle(int unit, int port) noexcept
{
    if (!is_port(unit, port)) {
        return invalid_unit_or_port;
    }
    const std::uint8_t *const region = status_base();
    return region != nullptr ? load(region, layout::transceiver_handle, unit, port) : 0;
}

int status_set_tcv_handle(int unit, int port, int handle) noexcept
{
    std::uint8_t *const region = status_base();
    if (region == nullptr || !is_port(unit, port)) {
        return invalid_unit_or_port;
    }
    store(region, layout::transceiver_handle, handle, unit, port);
    return 0;
}

int status_get_hw_version(int unit) noexcept
{
    if (!is_unit(unit)) {
        return invalid_unit_or_port;
    }
    const std::uint8_t *const region = status_base();
    return region != nullptr ? load(region, layout::hardware_version, unit) : 0;
}

int status_get_hw_model_num(int unit) noexcept
{
    return is_unit(unit) ? unit_model(static_cast<std::uint32_t>(unit)) : invalid_unit_or_port;
}

const char *status_get_hw_model(int unit) noexcept
{
    std::uint8_t *const region = status_base();
    return region != nullptr && is_unit(unit) ? text(region, layout::hardware_model_name, unit) : nullptr;
}

int status_get_logical_removal(int unit) noexcept
{
    const std::uint8_t *const region = status_base();
    return region != nullptr && is_unit(unit) ? load(region, layout::unit_logically_removed, unit) : 0;
}

int status_set_logical_removal(int unit, int removed) noexcept
{
    std::uint8_t *const region = status_base();
    if (region == nullptr || !is_unit(unit)) {
        return invalid_unit_or_port;
    }
    store(region, layout::unit_logically_removed, removed != 0 ? 1 : 0, unit);
    return 0;
}

int status_wait_for_bcmd_init() noexcept
{
    return 0;
}
