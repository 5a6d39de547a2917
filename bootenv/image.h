// SPDX-License-Identifier: Apache-2.0
// The boot loader's environment image: a checksum word and a fixed area of NUL-terminated name=value texts, ended by
// two NULs and padded with zeros. Partition and backup file hold the same bytes on every machine.
#ifndef SWITCHCFG_BOOTENV_IMAGE_H
#define SWITCHCFG_BOOTENV_IMAGE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace switchcfg::bootenv {

inline constexpr std::size_t checksum_size = 4;
inline constexpr std::size_t area_size = 65532;
inline constexpr std::size_t image_size = checksum_size + area_size;

// The checksum word as it stands in an image, big-endian.
struct ChecksumWord {
    std::uint8_t bytes[checksum_size];
};
ChecksumWord checksum_word(std::span<const std::uint8_t> area) noexcept;

// Whether the image begins with the checksum of everything that follows it. Too short for the word is a mismatch.
bool checksum_holds(std::span<const std::uint8_t> image) noexcept;

// Bytes of the area in use: all texts with their terminators and the first of the two ending NULs. Nothing when the
// area ends before both ending NULs are seen at the start of a text.
std::optional<std::size_t> used_length(std::span<const std::uint8_t> area) noexcept;

} // namespace switchcfg::bootenv

#endif
