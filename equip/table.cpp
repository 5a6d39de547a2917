// SPDX-License-Identifier: Apache-2.0
// The equipment table, built from the facts of each model, and the rules that hold between its rows.
#include "equip/model_record.h"
#include "equip/record.h"

#include <string_view>

namespace switchcfg {
namespace {

using Table = std::array<cfg_equip_record, CFG_EQUIP_RECORDS>;

constexpr auto names = [] {
    std::array<ModelName, CFG_EQUIP_RECORDS> all{};
    for (int model = 1; model < model_limit; ++model) {
        all[static_cast<std::size_t>(model)] = model_name(model_facts[model]);
    }
    return all;
}();

constexpr Table build()
{
    Table table{};
    for (std::size_t model = 1; model < table.size(); ++model) {
        table[model] = record_of(static_cast<int>(model), names[model]);
    }
    return table;
}

constexpr Table checked = build();

template<typename Rule>
constexpr bool holds_for_all(Rule rule)
{
    for (std::size_t model = 1; model < checked.size(); ++model) {
        if (!rule(model_facts[model], checked[model])) {
            return false;
        }
    }
    return true;
}

template<typename Value>
constexpr auto extremes(Value value)
{
    std::pair range{value(checked[1]), value(checked[1])};
    for (std::size_t model = 2; model < checked.size(); ++model) {
        range.first = std::min(range.first, value(checked[model]));
        range.second = std::max(range.second, value(checked[model]));
    }
    return range;
}

constexpr bool names_are_unique()
{
    for (std::size_t a = 1; a < names.size(); ++a) {
        for (std::size_t b = a + 1; b < names.size(); ++b) {
            if (names[a] == names[b]) {
                return false;
            }
        }
    }
    return true;
}

static_assert(model_limit == CFG_EQUIP_RECORDS);
static_assert(std::ranges::equal(model_facts, checked,
                  [model = 0](const ModelFacts &facts, const auto &) mutable { return facts.model == model++; }),
    "each row stands at its own number");
static_assert(names_are_unique());
static_assert(holds_for_all([](const ModelFacts &facts, const cfg_equip_record &record) {
    return record.block_name[0] != nullptr && // user_ports is one of the six front panels
           (facts.family_24() || facts.family_20() || facts.family_48()) && facts.fibre() == facts.family_24() &&
           (facts.fibre() || facts.combo_ports == 4) && (facts.cages != 0) == (facts.cage != Cage::none) &&
           (facts.combo_ports != 0 || facts.cages != 0 || facts.stacks()) && (!facts.newest_20() || facts.family_20());
}));
static_assert(extremes([](const auto &record) { return record.int_oid; }) == std::pair{86, 136});
static_assert(extremes([](const auto &record) { return record.snmp_model_id; }) == std::pair{32, 71});
static_assert(extremes([](const auto &record) { return record.fpga_num_ports; }) == std::pair{4, 28});

// The table is read in place by daemons and copied into programs that are not position independent: its layout is part
// of the interface.
constexpr std::size_t place_behind(std::size_t pointers, std::size_t words)
{
    return pointers * sizeof(char *) + words * sizeof(std::int32_t);
}
static_assert(offsetof(cfg_equip_record, eth_outband_ifaces_num) == place_behind(3, 0));
static_assert(offsetof(cfg_equip_record, has_rpu_support) == place_behind(3, 70));
static_assert(offsetof(cfg_equip_record, has_media_manual_control) == place_behind(3, 71));
static_assert(offsetof(cfg_equip_record, power_input_names) == place_behind(3, 134));
static_assert(sizeof(cfg_equip_record) == place_behind(5, 138));

} // namespace
} // namespace switchcfg

// One object under three names: its own, which an alias must spell as the object file does; the exported one; and the
// one that the library's own code reaches without the GOT.
extern "C" {
[[gnu::visibility("hidden")]] extern constinit const switchcfg::Table switchcfg_equipment = switchcfg::checked;
extern const cfg_equip_record Equip_tq5200[CFG_EQUIP_RECORDS] __attribute__((alias("switchcfg_equipment")));
}

namespace switchcfg {
extern const cfg_equip_record equip_table[CFG_EQUIP_RECORDS] __attribute__((alias("switchcfg_equipment")));
}
