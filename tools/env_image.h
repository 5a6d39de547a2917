// SPDX-License-Identifier: Apache-2.0
// An environment image in memory: taken apart, and put together again.
#ifndef SWITCHCFG_TOOLS_ENV_IMAGE_H
#define SWITCHCFG_TOOLS_ENV_IMAGE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace switchcfg::tool {

struct Variable {
    std::string name;
    std::string value;
    bool operator==(const Variable &) const = default;
};
using Variables = std::vector<Variable>;

// The value of the first variable of that name.
std::optional<std::string> value_in(const Variables &variables, const std::string &name);

// Bytes of all variables with their terminators, and the most that they may have.
std::size_t bytes_of(const Variables &variables);
extern const std::size_t bytes_most;

struct ImageContent {
    std::size_t size;
    std::uint32_t crc_stored;
    std::uint32_t crc_computed;
    bool has_end; // without one nothing can be loaded
    Variables variables;
    std::size_t other_texts; // texts without "="

    bool crc_holds() const { return crc_stored == crc_computed; }
};
ImageContent take_apart(std::span<const std::uint8_t> image); // at least the CRC word

std::vector<std::uint8_t> put_together(const Variables &variables); // throws Failure when they do not fit

} // namespace switchcfg::tool

#endif
