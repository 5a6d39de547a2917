// SPDX-License-Identifier: Apache-2.0
// Proves at compile time that every field of the shared records lies inside its region and that no two fields name the
// same bytes unless one of them says so.
#include "core/config_layout.h"
#include "core/status_layout.h"

#include <algorithm>
#include <array>

namespace switchcfg {
namespace {

struct Extent {
    std::uint32_t first;
    std::uint32_t end;
};

template<std::size_t Count>
constexpr std::size_t elements_of(const FieldInfo (&fields)[Count])
{
    std::size_t total = 0;
    for (const FieldInfo &field : fields) {
        total += field.shares_storage ? 0 : field.count();
    }
    return total;
}

template<const auto &Fields>
constexpr bool no_overlap()
{
    std::array<Extent, elements_of(Fields)> extents{};
    std::size_t used = 0;
    for (const FieldInfo &field : Fields) {
        for (std::uint32_t i = 0; !field.shares_storage && i < field.dimensions[0].count; ++i) {
            for (std::uint32_t j = 0; j < field.dimensions[1].count; ++j) {
                extents[used++] = {field.place_of(i, j), field.place_of(i, j) + field.size};
            }
        }
    }
    std::ranges::sort(extents, {}, &Extent::first);
    return std::ranges::adjacent_find(extents, [](const Extent &a, const Extent &b) { return a.end > b.first; }) ==
           extents.end();
}

template<const auto &Fields>
constexpr bool all_inside(std::uint32_t size)
{
    return std::ranges::all_of(Fields, [size](const FieldInfo &field) { return field.end() <= size; });
}

static_assert(all_inside<config_layout::fields>(config_layout::size));
static_assert(no_overlap<config_layout::fields>());
static_assert(all_inside<status_layout::fields>(status_layout::size));
static_assert(no_overlap<status_layout::fields>());

} // namespace
} // namespace switchcfg
