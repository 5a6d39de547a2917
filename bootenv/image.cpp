// SPDX-License-Identifier: Apache-2.0
#include "bootenv/image.h"

#include "util/byte_order.h"

#include <algorithm>
#include <bit>
#include <zlib.h>

namespace switchcfg::bootenv {
namespace {

std::uint32_t checksum(std::span<const std::uint8_t> area) noexcept
{
    return static_cast<std::uint32_t>(::crc32(0, area.data(), static_cast<uInt>(area.size())));
}

} // namespace

ChecksumWord checksum_word(std::span<const std::uint8_t> area) noexcept
{
    ChecksumWord word{};
    store_ordered<std::endian::big>(word.bytes, checksum(area));
    return word;
}

bool checksum_holds(std::span<const std::uint8_t> image) noexcept
{
    return image.size() >= checksum_size &&
           load_ordered<std::endian::big, std::uint32_t>(image.data()) == checksum(image.subspan(checksum_size));
}

std::optional<std::size_t> used_length(std::span<const std::uint8_t> area) noexcept
{
    for (std::size_t at = 0; at + 1 < area.size();) {
        if (area[at] == 0 && area[at + 1] == 0) {
            return at + 1;
        }
        // A lone NUL at the start of a text is an empty text, which is skipped like any other.
        const auto rest = area.subspan(at);
        at += static_cast<std::size_t>(std::ranges::find(rest, 0) - rest.begin()) + 1;
    }
    return std::nullopt;
}

} // namespace switchcfg::bootenv
