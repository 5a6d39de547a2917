// SPDX-License-Identifier: Apache-2.0
// A switch on which every notification is enabled, for every port.
#ifndef SWITCHCFG_TESTS_LOG_TRAP_FIXTURE_H
#define SWITCHCFG_TESTS_LOG_TRAP_FIXTURE_H

#include <switchcfg/config_region.h>
#include <switchcfg/startup.h>
#include <switchcfg/status.h>
#include <switchcfg/trap.h>

#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace switchcfg::testing {

using Traps = std::vector<std::pair<std::uint32_t, std::string>>;

class TrapTest : public ::testing::Test {
  protected:
    static constexpr std::size_t entries_at = 8051696;
    static constexpr std::size_t count_at = 8103296;

    void SetUp() override
    {
        ASSERT_EQ(cfg_init(), 0);
        config = static_cast<std::uint8_t *>(cfg_get_cfg());
        status = static_cast<std::uint8_t *>(get_status());
        std::memset(config + 13865, 1, 416 + 136 + 8 * 2132);
    }

    std::int32_t count_word() const
    {
        std::int32_t count = 0;
        std::memcpy(&count, status + count_at, 4);
        return count;
    }
    void set_word(std::size_t offset, std::int32_t value) const { std::memcpy(status + offset, &value, 4); }

    static Traps drained()
    {
        static trap_entry entries[TRAP_QUEUE_LENGTH];
        Traps traps;
        const int count = trap_queue_drain(entries, TRAP_QUEUE_LENGTH);
        EXPECT_GE(count, 0);
        for (int i = 0; i < count; ++i) {
            traps.emplace_back(entries[i].id, entries[i].text);
        }
        return traps;
    }

    std::uint8_t *config = nullptr;
    std::uint8_t *status = nullptr;
};

} // namespace switchcfg::testing

#endif
