// SPDX-License-Identifier: Apache-2.0
// The sub-commands that every mapped region has: fields, list, get, set.
#ifndef SWITCHCFG_TOOLS_REGION_COMMANDS_H
#define SWITCHCFG_TOOLS_REGION_COMMANDS_H

#include "core/field.h"

#include <CLI/CLI.hpp>
#include <functional>
#include <span>
#include <string>

namespace switchcfg::tool {

struct RegionAccess {
    std::string what; // "configuration", for messages
    std::span<const FieldInfo> fields;
    std::uint32_t size;
    // The mapped region, after attaching; throws Failure.
    std::function<std::uint8_t *()> region;
    // Called around a change: under the lock of the region's writers, and flushed to its file.
    std::function<void(const std::function<void()> &change)> change;
};

void add_region_commands(CLI::App &parent, const RegionAccess &access);

} // namespace switchcfg::tool

#endif
