// SPDX-License-Identifier: Apache-2.0
// A stack in the mapped status region, with memory around it that must not be touched.
#ifndef SWITCHCFG_TESTS_EQUIP_PORTS_FIXTURE_H
#define SWITCHCFG_TESTS_EQUIP_PORTS_FIXTURE_H

#include <switchcfg/equip_table.h>
#include <switchcfg/ports.h>

#include "core/config_layout.h"
#include "core/status_layout.h"
#include "support/test.h"

namespace switchcfg::testing {

inline constexpr int last_model = 85;
inline constexpr int units = 8;

// What a call writes, or its error.
template<typename Call>
int value_of(Call call)
{
    int value = INT_MIN;
    const int result = call(&value);
    return result == 0 ? value : result;
}

class PortsTest : public ::testing::Test {
  protected:
    PortsTest()
    {
        // The region lands in the hole between two guards: the reservation lay in the highest hole that takes it.
        constexpr std::size_t guard = 65536;
        constexpr std::size_t region = (status_layout::size + 4095U) & ~std::size_t{4095};
        auto *const reserved = static_cast<std::uint8_t *>(
            ::mmap(nullptr, region + 2 * guard, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        ::unlink(STATUS_PATH);
        ::munmap(reserved + guard, region);
        EXPECT_EQ(status_init(), 0);
        guarded = get_status() == reserved + guard;
        status = static_cast<std::uint8_t *>(get_status());
        config.resize(config_layout::size);
        cfg_set_cfg(config.data());
    }
    ~PortsTest() override
    {
        cfg_set_cfg(nullptr);
        status_finish();
    }

    // A present unit with one chip, whose module identifier is module(unit).
    void put(int unit, int model, int version = 0)
    {
        store(status, status_layout::unit_present, 1, unit);
        store(status, status_layout::unit_subunits, 1, unit);
        store(status, status_layout::module_id, module(unit), unit, 0);
        store(status, status_layout::hardware_model, model, unit);
        store(status, status_layout::hardware_version, version, unit);
        set_bits(bytes(status, status_layout::module_ports, unit, 0), 2, 53);
    }
    static constexpr int module(int unit) { return 100 + 3 * unit; }

    void plug(int unit, int port, bool in)
    {
        store(status, status_layout::transceiver_present, in ? 1 : 0, unit, port);
    }

    static void set_bits(std::span<std::uint8_t> bitmap, int first, int last)
    {
        for (int bit = first; bit <= last; ++bit) {
            std::uint32_t word;
            std::uint8_t *const place = &bitmap[static_cast<std::size_t>(bit / 32) * sizeof word];
            std::memcpy(&word, place, sizeof word);
            word |= 1U << (bit % 32);
            std::memcpy(place, &word, sizeof word);
        }
    }

    static bool has(const std::uint32_t *bitmap, int port) { return ((bitmap[port / 32] >> (port % 32)) & 1U) != 0; }

    bool guarded = false; // nothing readable beside the region
    std::uint8_t *status = nullptr;
    std::vector<std::uint8_t> config;
};

} // namespace switchcfg::testing

#endif
