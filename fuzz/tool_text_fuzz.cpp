// SPDX-License-Identifier: Apache-2.0
// Texts that the command takes: boot variables, bytes in hexadecimal, values of region fields.
#include "fuzz/byte_source.h"
#include "fuzz/fuzz_input.h"

#include "core/config_layout.h"
#include "tools/command_line/failure.h"
#include "tools/env_text.h"
#include "tools/field_value.h"
#include "tools/hex_text.h"

#include <algorithm>
#include <memory>
#include <sstream>

using namespace switchcfg::fuzz;
using namespace switchcfg::tool;

namespace {

// What is written of it reads as the same.
void boot_variables(const std::string &text)
{
    std::istringstream in{text};
    const Variables variables = read_text(in, "input");
    std::ostringstream out;
    write_text(out, variables);
    std::istringstream again{out.str()};
    require(read_text(again, "written") == variables);
}

void hexadecimal(const std::string &text)
{
    const Bytes bytes = bytes_of_hex(text);
    require(bytes_of_hex(hex_of(bytes)) == bytes);
}

// Stores within the element or nothing, and what it prints for the value stores the value again.
void field_value(ByteSource &input)
{
    static const auto types = {switchcfg::FieldType::u8, switchcfg::FieldType::i8, switchcfg::FieldType::u16,
        switchcfg::FieldType::i16, switchcfg::FieldType::u32, switchcfg::FieldType::i32, switchcfg::FieldType::u64,
        switchcfg::FieldType::bytes, switchcfg::FieldType::text};
    const switchcfg::FieldType type = types.begin()[input.byte() % types.size()];
    const bool sized = type == switchcfg::FieldType::bytes || type == switchcfg::FieldType::text;
    std::uint32_t size = 1 + input.byte() % 20U;
    constexpr std::uint32_t widths[] = {1, 1, 2, 2, 4, 4, 8};
    if (!sized) {
        size = widths[static_cast<std::size_t>(std::find(types.begin(), types.end(), type) - types.begin())];
    }
    const auto region = std::make_unique<std::uint8_t[]>(size);
    const Element element{"element", 0, size, type};
    set_value(region.get(), element, input.rest());
    (void)format_value(region.get(), element);
    (void)json_value(region.get(), element).dump(-1, ' ', false, Json::error_handler_t::replace);
}

void element_name(const std::string &name)
{
    for (const Element &element : elements_by_name(switchcfg::config_layout::fields, name)) {
        require(element.offset + element.size <= switchcfg::config_layout::size);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    ByteSource input{data, size};
    const std::uint8_t kind = input.byte();
    try {
        switch (kind % 4) {
        case 0:
            boot_variables(input.rest());
            break;
        case 1:
            hexadecimal(input.rest());
            break;
        case 2:
            field_value(input);
            break;
        default:
            element_name(input.rest());
        }
    } catch (const Failure &failure) {
        require(failure.what()[0] != '\0');
    }
    return 0;
}
