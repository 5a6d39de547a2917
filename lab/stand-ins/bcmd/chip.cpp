// SPDX-License-Identifier: Apache-2.0
#include "lab/stand-ins/bcmd/chip.h"

namespace switchlab::bcmd {

Counters Port::counters(Clock::time_point now) const
{
    Counters sum = counted;
    if (enabled) {
        const auto elapsed_us =
            static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(now - since).count());
        const std::uint64_t frames = elapsed_us * frames_per_s / 1000000;
        sum.rx_frames += frames;
        sum.tx_frames += frames / 2;
        sum.rx_bytes += frames * 512;
        sum.tx_bytes += frames / 2 * 128;
    }
    return sum;
}

void Port::enable(bool on, Clock::time_point now)
{
    counted = counters(now);
    since = now;
    enabled = on;
}

void Port::clear(Clock::time_point now)
{
    counted = {};
    since = now;
}

void Chip::make_units(std::uint32_t count)
{
    units_.resize(count);
    for (std::uint32_t unit = 0; unit < count; ++unit) {
        reset_unit(unit);
    }
}

void Chip::learn(std::uint32_t count)
{
    for (std::uint32_t i = 0; i < count && units() > 0; ++i) {
        const Mac mac{0x02, 0x00, 0x54, static_cast<std::uint8_t>(i >> 16), static_cast<std::uint8_t>(i >> 8),
            static_cast<std::uint8_t>(i)};
        macs[{1, mac}] = {i % units(), 1 + i / units() % ports_per_unit};
    }
}

Port *Chip::port(std::uint32_t unit, std::uint32_t number)
{
    if (unit >= units_.size() || number < 1 || number > ports_per_unit) {
        return nullptr;
    }
    return &units_[unit][number - 1];
}

void Chip::reset_unit(std::uint32_t unit)
{
    const Clock::time_point now = Clock::now();
    for (std::uint32_t i = 0; i < ports_per_unit; ++i) {
        Port &made = units_[unit][i];
        made = {};
        made.since = now;
        made.frames_per_s = 1000 * (i + 1);
    }
}

void Chip::clear_counters()
{
    const Clock::time_point now = Clock::now();
    for (Unit &unit : units_) {
        for (Port &each : unit) {
            each.clear(now);
        }
    }
}

Chip &chip()
{
    static Chip the_chip;
    return the_chip;
}

} // namespace switchlab::bcmd
