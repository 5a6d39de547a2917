// SPDX-License-Identifier: Apache-2.0
// Elements of region fields by name, and their values as text and JSON. Everything is driven by the layout tables.
#ifndef SWITCHCFG_TOOLS_FIELD_VALUE_H
#define SWITCHCFG_TOOLS_FIELD_VALUE_H

#include "core/field.h"
#include "tools/command_line/output.h"

#include <span>
#include <string>

namespace switchcfg::tool {

// One element of a field: where it is, and what is there.
struct Element {
    std::string name;
    std::uint32_t offset;
    std::uint32_t size;
    FieldType type;
};

// "i32", "bytes[17]", ...
std::string type_name(FieldType type, std::uint32_t size);
// The type behind such a name (a size in brackets gives `size`); throws Failure.
FieldType type_by_name(const std::string &name, std::uint32_t &size);

// All elements of a field, in order, named "field", "field[3]" or "field[1][2]".
std::vector<Element> elements_of(const FieldInfo &field);
// The elements that a name means: "field[1][2]" one, "field" all of them. Throws Failure naming what is wrong.
std::vector<Element> elements_by_name(std::span<const FieldInfo> fields, const std::string &name);

bool is_zero(const std::uint8_t *region, const Element &element);
std::string format_value(const std::uint8_t *region, const Element &element);
Json json_value(const std::uint8_t *region, const Element &element);
// Throws Failure when the text is no value of the element's type; changes nothing then.
void set_value(std::uint8_t *region, const Element &element, const std::string &value);

} // namespace switchcfg::tool

#endif
