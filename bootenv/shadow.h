// SPDX-License-Identifier: Apache-2.0
// The environment in the status region, shared by all processes.
#ifndef SWITCHCFG_BOOTENV_SHADOW_H
#define SWITCHCFG_BOOTENV_SHADOW_H

#include "bootenv/image.h"
#include "bootenv/variables.h"
#include "util/owned.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace switchcfg::bootenv {

// The 65532 bytes in the region, which is mapped.
std::span<std::uint8_t, area_size> shadow_area() noexcept;

// A private copy of the shadow's variables, so that what another process stores meanwhile cannot be half seen.
class Snapshot {
  public:
    enum class Room { for_reading, for_changes };
    static std::optional<Snapshot> take(Room room) noexcept; // nothing without a region or memory

    const Variables &variables() const noexcept { return variables_; }
    Variables &variables() noexcept { return variables_; }
    void publish() const noexcept; // makes it the shadow

  private:
    Snapshot(Malloced<char> memory, std::size_t room, std::size_t used) noexcept;

    Malloced<char> memory_;
    Variables variables_;
};

} // namespace switchcfg::bootenv

#endif
