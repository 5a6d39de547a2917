// SPDX-License-Identifier: Apache-2.0
// The fields of an equipment record by name, in the record's order.
#ifndef SWITCHCFG_TOOLS_EQUIP_FIELDS_H
#define SWITCHCFG_TOOLS_EQUIP_FIELDS_H

#include "tools/command_line/output.h"

#include <span>
#include <switchcfg/equip_table.h>

namespace switchcfg::tool {

struct EquipField {
    const char *name;
    Json (*value)(const cfg_equip_record &record); // a number, a text or null, or an array of these
};

std::span<const EquipField> equip_fields();

} // namespace switchcfg::tool

#endif
