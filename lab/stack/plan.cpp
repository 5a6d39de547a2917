// SPDX-License-Identifier: Apache-2.0
#include "lab/stack/plan.h"

#include "lab/refusal.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <strings.h>
#include <switchcfg/equip_table.h>

namespace switchlab {
namespace {

// Boards of all kinds that stack: copper, fibre, PoE, 24 to 50 ports.
constexpr std::array<int, most_units> usual_models{17, 25, 58, 14, 81, 35, 74, 66};

int model_of(const std::string &text)
{
    int number = 0;
    const char *const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error == std::errc{} && stop == end && number >= 1 && number < CFG_EQUIP_RECORDS) {
        return number;
    }
    for (int model = 1; model < CFG_EQUIP_RECORDS; ++model) {
        if (::strcasecmp(Equip_tq5200[model].name, text.c_str()) == 0) {
            return model;
        }
    }
    throw Refusal("no model is '" + text + "': name one or give its number (switchcfg equip models lists them)");
}

UnitPlan plan_unit(int number, int model)
{
    UnitPlan unit;
    unit.number = number;
    unit.model = model;
    unit.model_name = Equip_tq5200[model].name;
    unit.mac = {0x02, 0x00, 0x54, 0x51, 0x52, static_cast<std::uint8_t>(number)};
    unit.management_interface = Equip_tq5200[model].mgmt_eth;
    unit.management = "10.0.0." + std::to_string(10 + number);
    unit.control_interface = unit.management_interface + ".3";
    // As cfg_equip_get_mgmt_ipv6_address() has them, which counts from 1.
    unit.control = {"febf::" + std::to_string(number + 1), "febf::10" + std::to_string(number + 1)};
    char stacking[40];
    (void)std::snprintf(
        stacking, sizeof stacking, "fe80::%xff:fe%02x:%x%02x", unit.mac[2], unit.mac[3], unit.mac[4], unit.mac[5]);
    unit.stacking = stacking;
    return unit;
}

} // namespace

std::vector<UnitPlan> plan_units(int count, const std::vector<std::string> &models)
{
    const int given = static_cast<int>(models.size());
    if (count == 0) {
        count = given == 0 ? 1 : given;
    }
    if (count < 1 || count > most_units || given > count) {
        throw Refusal(given > count && count <= most_units
                          ? std::to_string(given) + " models for " + std::to_string(count) + " units"
                          : std::to_string(count) + " units: a stack has 1 to 8");
    }
    std::vector<UnitPlan> units;
    for (int number = 0; number < count; ++number) {
        const auto place = static_cast<std::size_t>(number);
        units.push_back(plan_unit(number, number < given ? model_of(models[place]) : usual_models[place]));
    }
    return units;
}

} // namespace switchlab
