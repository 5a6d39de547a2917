// SPDX-License-Identifier: Apache-2.0
// How long a call waits for its answer, by function number.
#include <switchcfg/funclist.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace {

constexpr std::uint16_t usual_s = 10;

struct Rule {
    std::uint16_t seconds;
    std::span<const std::uint16_t> functions;
};

constexpr std::uint16_t five_minutes[] = {
    4, 58, 63, 102, 124, 125, 126, 127, 148, 153, 193, 194, 195, 234, 238, 239, 240, 241, 249};
constexpr std::uint16_t half_minute[] = {8, 9, 10, 17, 21, 56, 187, 252};
constexpr std::uint16_t whole_stack[] = {19, 53};
constexpr std::uint16_t one_minute[] = {191, 217, 247, 248, 264};
constexpr std::uint16_t interactive[] = {198};
constexpr std::uint16_t burn_in[] = {225};

constexpr Rule rules[] = {
    {300, five_minutes},
    {30, half_minute},
    {256, whole_stack},
    {60, one_minute},
    {32000, interactive},
    {4000, burn_in},
};

constexpr std::size_t count = 265;

constexpr std::array<std::uint16_t, count> table = [] {
    std::array<std::uint16_t, count> made{};
    made.fill(usual_s);
    for (const Rule &rule : rules) {
        for (const std::uint16_t function : rule.functions) {
            made.at(function) = rule.seconds;
        }
    }
    return made;
}();

static_assert(std::ranges::all_of(rules, [](const Rule &rule) {
    return std::ranges::all_of(rule.functions,
        [&](std::uint16_t function) { return table[function] == rule.seconds; }); // none is in two rules
}));
} // namespace

std::uint32_t BcmdFunclistClient::bcmfTimeout(FunclistBcmdFuncGeneralType type) noexcept
{
    const auto number = static_cast<std::size_t>(type); // beyond the table when it is negative
    return number < table.size() ? table[number] : usual_s;
}

std::uint32_t BcmdFunclistClient::bcmfTimeout(FunclistBcmdFuncUnitType /*type*/) noexcept
{
    return usual_s;
}

std::uint32_t BcmdFunclistClient::bcmfTimeout(FunclistBcmdFuncUnitPortType /*type*/) noexcept
{
    return usual_s;
}

std::uint32_t BcmdFunclistClient::bcmfTimeout(FunclistBcmdFuncMplsType /*type*/) noexcept
{
    return usual_s;
}

std::uint32_t BcmdFunclistClient::bcmfTimeout(FunclistBcmdFuncVhwType /*type*/) noexcept
{
    return usual_s;
}
