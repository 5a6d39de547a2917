// SPDX-License-Identifier: Apache-2.0
// A unit's model and its equipment record for code inside the library: one load from the status region and one from the
// table, no call.
#ifndef SWITCHCFG_EQUIP_RECORD_H
#define SWITCHCFG_EQUIP_RECORD_H

#include "core/status_region.h"
#include "equip/model_texts.h"

#include <switchcfg/equip_table.h>

namespace switchcfg {

// A record as the library itself reads it. Its texts are null, so that the table has no relocations and is one memory
// for all processes; model_texts has them.
struct ModelRecord : cfg_equip_record {
  private:
    using cfg_equip_record::block_name;
    using cfg_equip_record::mgmt_eth;
    using cfg_equip_record::name;
    using cfg_equip_record::power_input_names;
};

[[gnu::visibility("hidden")]] extern const std::array<ModelRecord, CFG_EQUIP_RECORDS> model_records;
[[gnu::visibility("hidden")]] extern const std::array<ModelTexts, CFG_EQUIP_RECORDS> model_texts;

inline constexpr bool unit_is_valid(std::uint32_t unit) noexcept
{
    return unit < status_layout::max_units;
}

// Of a valid unit. 0, no model, while the region is not mapped.
inline std::int32_t unit_model(std::uint32_t unit) noexcept
{
    const std::uint8_t *const region = status_base();
    if (region != nullptr) [[likely]] {
        return load(region, status_layout::hardware_model, unit);
    }
    return 0;
}

// Record 0 stands for every number that is no model's, a negative one included.
inline std::uint32_t record_number(std::int32_t model) noexcept
{
    const auto number = static_cast<std::uint32_t>(model);
    return number < CFG_EQUIP_RECORDS ? number : 0;
}

inline const ModelRecord &model_record(std::int32_t model) noexcept
{
    return model_records[record_number(model)];
}

// Of a valid unit.
inline const ModelRecord &unit_record(std::uint32_t unit) noexcept
{
    return model_record(unit_model(unit));
}

inline const ModelTexts &unit_texts(std::uint32_t unit) noexcept
{
    return model_texts[record_number(unit_model(unit))];
}

// Whether a valid unit is in the stack.
inline bool unit_is_present(std::uint32_t unit) noexcept
{
    const std::uint8_t *const region = status_base();
    return region != nullptr && load(region, status_layout::unit_present, unit) != 0;
}

// The looser test: the unit is in the stack, or its chip's record is in use (it is joining or leaving).
inline bool unit_is_known(std::uint32_t unit) noexcept
{
    const std::uint8_t *const region = status_base();
    return region != nullptr && (load(region, status_layout::unit_present, unit) != 0 ||
                                    load(region, status_layout::subunit_mark, unit) != 0);
}

// What the switch as a whole supports: 2 when unit 0 has stacking ports, else 0.
inline int stacking_support() noexcept
{
    return unit_record(0).stack_ports != 0 ? 2 : 0;
}

} // namespace switchcfg

#endif
