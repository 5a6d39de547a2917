// SPDX-License-Identifier: Apache-2.0
// A region of which every unit has its copy: finds out what this unit's processes have changed, and takes over what
// others have.
//
// Nobody says when he writes, so the pages that the file holds are compared with what they were. Only words that
// differ travel, and only they are stored, so that two units may change different fields at the same time.
#ifndef SWITCHCFG_LAB_STACKD_REPLICA_H
#define SWITCHCFG_LAB_STACKD_REPLICA_H

#include "util/owned.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace switchlab::stackd {

using Bytes = std::span<const std::uint8_t>;
using Visit = std::function<void(std::uint32_t offset, Bytes bytes)>;

class Replica {
  public:
    // `region` is the mapping of the file. Throws std::runtime_error.
    Replica(std::uint8_t *region, std::uint32_t size, const char *path);

    bool changed() const; // by somebody else than apply()
    // Hands over each run of changed words and regards it as known from now on.
    void take_changes(const Visit &visit);
    // The parts of the region, as known, that are not all zero.
    void visit_content(const Visit &visit) const;

    // False when it does not fit into the region.
    bool apply(std::uint32_t offset, Bytes bytes);

    // Between these two the whole content arrives through apply(); what does not is zero then.
    void begin_snapshot();
    void end_snapshot();

  private:
    static constexpr std::uint32_t page_size = 4096;
    using Page = std::array<std::uint8_t, page_size>;

    template<typename Visitor>
    bool visit_pages(Visitor visitor) const; // those that the file holds; until one says false
    std::uint32_t size_of(std::uint32_t page) const;
    Bytes known(std::uint32_t page) const;
    Page &known_for_change(std::uint32_t page);
    void put(std::uint32_t offset, Bytes bytes);

    std::uint8_t *region_;
    std::uint32_t size_;
    switchcfg::Descriptor file_;
    std::vector<std::unique_ptr<Page>> pages_; // none is all zero
    std::vector<bool> arrived_;                // pages of a snapshot
};

} // namespace switchlab::stackd

#endif
