// SPDX-License-Identifier: Apache-2.0
// A list of boot variables: NUL-terminated name=value texts, one behind the other.
#ifndef SWITCHCFG_BOOTENV_VARIABLES_H
#define SWITCHCFG_BOOTENV_VARIABLES_H

#include "bootenv/image.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace switchcfg::bootenv {

class Variables {
  public:
    // The most that all texts with their terminators may take: what is longer leaves no room for the two ending NULs,
    // and an image without its end cannot be loaded again.
    static constexpr std::size_t most = area_size - 2;

    // Lists what the first `used` bytes of `room` hold. Texts without "=" are dropped, in place, and a text that lacks
    // its terminator gets one; so `room` has at least one byte more than `used`.
    Variables(std::span<char> room, std::size_t used) noexcept;

    std::size_t size() const noexcept { return used_; }
    std::size_t count() const noexcept;
    std::span<const char> bytes() const noexcept { return room_.first(used_); }

    // The text that starts at `place`; the next one starts one behind its end, until size() is reached.
    std::string_view text_at(std::size_t place) const noexcept;

    // A name counts up to its first "=". The value is NUL-terminated where it stands.
    std::optional<std::string_view> value_of(std::string_view name) const noexcept;

    // Puts the pair at the end of the list in place of every text of that name. False, and nothing changed, when the
    // list would take more than `most` or more than its room.
    bool set(std::string_view name, std::string_view value) noexcept;
    void remove(std::string_view name) noexcept;

  private:
    template<typename Wanted>
    void keep(Wanted wanted) noexcept;

    std::span<char> room_;
    std::size_t used_;
};

} // namespace switchcfg::bootenv

#endif
