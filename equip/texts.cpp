// SPDX-License-Identifier: Apache-2.0
// Names and identifiers of a unit's model as text.
#include "equip/record.h"

#include <cstdio>
#include <switchcfg/text.h>

namespace {

constexpr int invalid_unit = -3;
constexpr int invalid_parameter = -7;

// A place that the record does not have is an absent text.
template<std::size_t Count>
const char *element(const std::array<switchcfg::ShortText, Count> &texts, std::uint32_t index) noexcept
{
    return index < Count ? texts[index].data() : "";
}

} // namespace

using namespace switchcfg;

int cfg_equip_get_block_name(std::uint32_t unit, std::uint32_t block, char *dst, std::size_t len) noexcept
{
    if (!unit_is_valid(unit)) {
        return invalid_unit;
    }
    strncpy_safe(dst, element(unit_texts(unit).block_name, block), len);
    return 0;
}

int cfg_equip_get_power_input_names(std::uint32_t unit, std::uint32_t index, char *dst, std::size_t len) noexcept
{
    if (!unit_is_valid(unit)) {
        return invalid_unit;
    }
    strncpy_safe(dst, element(unit_texts(unit).power_input_names, index), len);
    return 0;
}

int cfg_equip_get_name_tq5200(int model, std::uint32_t unit, char *dst, std::size_t n) noexcept
{
    if (model >= 0 && model < CFG_EQUIP_RECORDS) {
        return std::snprintf(dst, n, "%s", model_texts[record_number(model)].name.data());
    }
    std::uint8_t *const region = status_base();
    if (region != nullptr && unit_is_valid(unit) && unit_model(unit) == model) {
        // What a board reports of itself may fill the field to its last byte.
        constexpr int most = static_cast<int>(status_layout::hardware_model_name.size);
        return std::snprintf(dst, n, "%.*s", most, text(region, status_layout::hardware_model_name, unit));
    }
    return std::snprintf(dst, n, "Unsupported model");
}

int cfg_equip_get_str_oid_tq5200(std::uint32_t unit, char *dst, std::size_t n) noexcept
{
    if (!unit_is_valid(unit)) {
        return invalid_parameter;
    }
    // Record 0 does not stand in here: a board newer than this software keeps an identifier of the product line.
    const std::int32_t model = unit_model(unit);
    const ModelRecord &record = model >= CFG_EQUIP_RECORDS ? model_records.back() : model_record(model);
    (void)std::snprintf(dst, n, "%s%u", "1.3.6.1.4.1.64711.1.2.", static_cast<unsigned>(record.int_oid));
    return 0;
}
