// SPDX-License-Identifier: Apache-2.0
// The families of functions and their names, as the enumerations have them.
#ifndef SWITCHCFG_TOOLS_CALL_FUNCTIONS_H
#define SWITCHCFG_TOOLS_CALL_FUNCTIONS_H

#include <array>
#include <cstdint>
#include <google/protobuf/descriptor.h>
#include <span>
#include <string>
#include <vector>

namespace switchcfg::tool {

struct Outcome {
    int result = 0;
    int why = 0; // errno
    bool has_output = false;
    std::string output;
};

using Arguments = std::array<std::uint32_t, 4>;

struct Family {
    const char *name;
    const char *prefix; // of the names of its functions
    const char *about;
    const google::protobuf::EnumDescriptor *(*numbers)();
    std::uint32_t (*timeout_s)(int number);
    Outcome (*call)(int number, const Arguments &arguments, const std::string &input);
};

std::span<const Family> families();

// "echo" of BCMD_GENERAL_ECHO
std::string function_name(const Family &family, const google::protobuf::EnumValueDescriptor &function);

// By its short name, its full one, or its number; throws Failure.
const google::protobuf::EnumValueDescriptor &find_function(const Family &family, const std::string &name);

} // namespace switchcfg::tool

#endif
