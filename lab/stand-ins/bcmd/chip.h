// SPDX-License-Identifier: Apache-2.0
// The chip that the stand-in owns: ports with counters that move, a table of MAC addresses, a table of labels.
// Its functions run on the thread that serves requests and, called from inside, on the daemon's own: each holds `use`.
#ifndef SWITCHLAB_STAND_INS_BCMD_CHIP_H
#define SWITCHLAB_STAND_INS_BCMD_CHIP_H

#include <array>
#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

namespace switchlab::bcmd {

using Clock = std::chrono::steady_clock;
using Mac = std::array<std::uint8_t, 6>;

// As BCMD_PORT_COUNTERS_GET hands them out: the processor's byte order.
struct Counters {
    std::uint64_t rx_frames;
    std::uint64_t tx_frames;
    std::uint64_t rx_bytes;
    std::uint64_t tx_bytes;
};
static_assert(sizeof(Counters) == 32);

struct Port {
    bool enabled = true;
    std::uint32_t speed_mbps = 1000;
    std::uint32_t frame_max = 1518;
    Counters counted{};             // until `since`
    Clock::time_point since{};      // when counting last began
    std::uint32_t frames_per_s = 0; // while it is enabled

    Counters counters(Clock::time_point now) const;
    void enable(bool on, Clock::time_point now);
    void clear(Clock::time_point now);
};

// As BCMD_GENERAL_MAC_TABLE_PAGE hands them out: the processor's byte order.
struct MacEntry {
    Mac mac;
    std::uint16_t vlan;
    std::uint32_t unit;
    std::uint32_t port;
};
static_assert(sizeof(MacEntry) == 16);

struct Label {
    std::uint32_t out; // 0: taken off
    std::uint32_t unit;
    std::uint32_t port;
};

class Chip {
  public:
    static constexpr std::uint32_t ports_per_unit = 52;
    static constexpr std::uint32_t most_units = 8;
    static constexpr std::size_t most_macs = 16384;

    void make_units(std::uint32_t count);
    void learn(std::uint32_t count); // that many addresses, spread over the ports

    std::uint32_t units() const { return static_cast<std::uint32_t>(units_.size()); }
    Port *port(std::uint32_t unit, std::uint32_t number); // null when there is none
    void reset_unit(std::uint32_t unit);
    void clear_counters();

    std::mutex use;
    std::map<std::pair<std::uint16_t, Mac>, std::pair<std::uint32_t, std::uint32_t>> macs; // (vlan, address): port
    std::uint32_t mac_aging_s = 300;
    std::map<std::uint32_t, Label> labels;
    std::vector<std::uint32_t> rules; // of the virtual hardware

  private:
    using Unit = std::array<Port, ports_per_unit>;
    std::vector<Unit> units_;
};

Chip &chip();

} // namespace switchlab::bcmd

#endif
