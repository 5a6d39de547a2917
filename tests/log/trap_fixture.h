// SPDX-License-Identifier: Apache-2.0
// A switch on which every notification is enabled, for every port.
#ifndef SWITCHCFG_TESTS_LOG_TRAP_FIXTURE_H
#define SWITCHCFG_TESTS_LOG_TRAP_FIXTURE_H

#include <switchcfg/trap.h>

#include "support/test.h"
#include "tools/trap_senders.h"

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

    void join_unit(int unit, int model) const
    {
        set_word(static_cast<std::size_t>(unit) * 8000 + 48, 1);
        set_word(static_cast<std::size_t>(unit) * 8000 + 1348, model);
    }

    // Arguments for any sender.
    static std::vector<std::string> words(const tool::TrapSender &sender, const std::string &number,
        const std::string &text, const std::string &unsigned_number)
    {
        using tool::TrapArgument;
        std::vector<std::string> all;
        for (const TrapArgument type : sender.types) {
            all.push_back(type == TrapArgument::text               ? text
                          : type == TrapArgument::mac              ? "00:1a:2b:3c:4d:5e"
                          : type == TrapArgument::link             ? "up"
                          : type == TrapArgument::unsigned_integer ? unsigned_number
                                                                   : number);
        }
        return all;
    }

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
