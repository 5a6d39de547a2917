// SPDX-License-Identifier: Apache-2.0
// The equipment table for programs that read it in place: the library's own records with pointers to their texts. It is
// all that libswitchcfg-equipment.so has.
#include "equip/model_record.h"
#include "equip/model_texts.h"

#include <cstddef>

namespace switchcfg {
namespace {

using Table = std::array<cfg_equip_record, CFG_EQUIP_RECORDS>;

constexpr auto texts = texts_of_all();

template<std::size_t Size>
constexpr const char *text_or_null(const std::array<char, Size> &text)
{
    return text[0] != '\0' ? text.data() : nullptr;
}

constexpr Table build()
{
    Table table{};
    for (std::size_t model = 1; model < table.size(); ++model) {
        cfg_equip_record record = record_without_texts(static_cast<int>(model));
        record.name = text_or_null(texts[model].name);
        record.block_name[0] = text_or_null(texts[model].block_name[0]);
        record.mgmt_eth = text_or_null(texts[model].mgmt_eth);
        record.power_input_names[0] = text_or_null(texts[model].power_input_names[0]);
        record.power_input_names[1] = text_or_null(texts[model].power_input_names[1]);
        table[model] = record;
    }
    return table;
}

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

// An alias must be spelt as the object file does.
extern "C" {
[[gnu::visibility("hidden")]] extern constinit const switchcfg::Table switchcfg_equipment = switchcfg::build();
extern const cfg_equip_record Equip_tq5200[CFG_EQUIP_RECORDS] __attribute__((alias("switchcfg_equipment")));
}
