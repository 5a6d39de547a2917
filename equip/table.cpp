// SPDX-License-Identifier: Apache-2.0
// The equipment table, built from the facts of each model, and the rules that hold between its rows.
#include "equip/model_record.h"
#include "equip/record.h"

#include <string_view>

namespace switchcfg {
namespace {

constexpr auto records = [] {
    std::array<ModelRecord, CFG_EQUIP_RECORDS> all{};
    for (int model = 1; model < model_limit; ++model) {
        all[static_cast<std::size_t>(model)] = {record_without_texts(model)};
    }
    return all;
}();
constexpr auto texts = texts_of_all();

template<typename Rule>
constexpr bool holds_for_all(Rule rule)
{
    return std::all_of(std::begin(model_facts) + 1, std::end(model_facts), rule);
}

template<typename Value>
constexpr auto extremes(Value value)
{
    std::pair range{value(records[1]), value(records[1])};
    for (std::size_t model = 2; model < records.size(); ++model) {
        range.first = std::min(range.first, value(records[model]));
        range.second = std::max(range.second, value(records[model]));
    }
    return range;
}

constexpr bool names_are_unique()
{
    for (std::size_t a = 1; a < texts.size(); ++a) {
        for (std::size_t b = a + 1; b < texts.size(); ++b) {
            if (texts[a].name == texts[b].name) {
                return false;
            }
        }
    }
    return true;
}

static_assert(model_limit == CFG_EQUIP_RECORDS);
static_assert(holds_for_all([](const ModelFacts &facts) { return &facts == &model_facts[facts.model]; }),
    "each row stands at its own number");
static_assert(names_are_unique());
static_assert(holds_for_all([](const ModelFacts &facts) {
    return texts[facts.model].block_name[0][0] != '\0' && // user_ports is one of the six front panels
           (facts.family_24() || facts.family_20() || facts.family_48()) && facts.fibre() == facts.family_24() &&
           (facts.fibre() || facts.combo_ports == 4) && (facts.cages != 0) == (facts.cage != Cage::none) &&
           (facts.combo_ports != 0 || facts.cages != 0 || facts.stacks()) && (!facts.newest_20() || facts.family_20());
}));
static_assert(extremes([](const auto &record) { return record.int_oid; }) == std::pair{86, 136});
static_assert(extremes([](const auto &record) { return record.snmp_model_id; }) == std::pair{32, 71});
static_assert(extremes([](const auto &record) { return record.fpga_num_ports; }) == std::pair{4, 28});

} // namespace

constinit const std::array<ModelRecord, CFG_EQUIP_RECORDS> model_records = records;
constinit const std::array<ModelTexts, CFG_EQUIP_RECORDS> model_texts = texts;

} // namespace switchcfg
