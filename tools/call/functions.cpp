// SPDX-License-Identifier: Apache-2.0
#include "tools/call/functions.h"

#include "tools/command_line/failure.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdlib>
#include <memory>
#include <switchcfg/funclist.h>

namespace switchcfg::tool {
namespace {

template<typename Type>
Outcome call(int number, const Arguments &arguments, const std::string &input)
{
    void *output = nullptr;
    std::uint32_t length = 0;
    Outcome outcome;
    outcome.result = bcm_cmd(static_cast<Type>(number), arguments[0], arguments[1], arguments[2], arguments[3],
        input.data(), static_cast<std::uint32_t>(input.size()), &output, &length);
    outcome.why = errno;
    const std::unique_ptr<void, decltype(&std::free)> owner{output, &std::free};
    if (output != nullptr) {
        outcome.has_output = true;
        outcome.output.assign(static_cast<const char *>(output), length);
    }
    return outcome;
}

template<typename Type>
std::uint32_t timeout_s(int number)
{
    return BcmdFunclistClient::bcmfTimeout(static_cast<Type>(number));
}

template<typename Type>
constexpr Family family(const char *name, const char *prefix, const char *about)
{
    return {name, prefix, about, google::protobuf::GetEnumDescriptor<Type>, timeout_s<Type>, call<Type>};
}

constexpr Family all[] = {
    family<FunclistBcmdFuncGeneralType>("general", "BCMD_GENERAL_", "The chip, and what concerns all units"),
    family<FunclistBcmdFuncUnitType>("unit", "BCMD_UNIT_", "One unit"),
    family<FunclistBcmdFuncUnitPortType>("unit-port", "BCMD_PORT_", "One port"),
    family<FunclistBcmdFuncMplsType>("mpls", "BCMD_MPLS_", "MPLS"),
    family<FunclistBcmdFuncVhwType>("vhw", "BCMD_VHW_", "Virtual hardware; served inside the daemon only"),
};

} // namespace

std::span<const Family> families()
{
    return all;
}

std::string function_name(const Family &family, const google::protobuf::EnumValueDescriptor &function)
{
    std::string name = function.name();
    if (name.starts_with(family.prefix)) {
        name.erase(0, std::string_view{family.prefix}.size());
    }
    std::ranges::transform(
        name, name.begin(), [](unsigned char c) { return c == '_' ? '-' : static_cast<char>(std::tolower(c)); });
    return name;
}

const google::protobuf::EnumValueDescriptor &find_function(const Family &family, const std::string &name)
{
    const google::protobuf::EnumDescriptor &numbers = *family.numbers();
    int number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    const bool is_number = error == std::errc{} && end == name.data() + name.size();
    for (int i = 0; i < numbers.value_count(); ++i) {
        const google::protobuf::EnumValueDescriptor &function = *numbers.value(i);
        if (is_number ? function.number() == number
                      : name == function.name() || name == function_name(family, function)) {
            return function;
        }
    }
    throw Failure{
        "'" + name + "' is no function of the family " + family.name + ": see switchcfg call list " + family.name};
}

} // namespace switchcfg::tool
