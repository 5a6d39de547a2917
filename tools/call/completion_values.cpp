// SPDX-License-Identifier: Apache-2.0
// What can stand on a command line of switchcfg call.
#include "tools/command_line/completion_values.h"

#include "tools/call/functions.h"

namespace switchcfg::tool {

std::vector<std::string> completion_values(
    const std::string &path, const std::string &positional, const std::string & /*option*/)
{
    std::vector<std::string> values;
    for (const Family &family : families()) {
        if (path == "list" && positional == "family") {
            values.emplace_back(family.name);
        } else if (path == family.name && positional == "function") {
            const google::protobuf::EnumDescriptor &numbers = *family.numbers();
            for (int i = 0; i < numbers.value_count(); ++i) {
                values.push_back(function_name(family, *numbers.value(i)));
            }
        }
    }
    return values;
}

} // namespace switchcfg::tool
