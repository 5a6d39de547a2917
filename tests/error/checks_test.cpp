// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/ports.h>

#include "equip/ports_fixture.h"

namespace {

class NumberCheck : public testing::Test {
  protected:
    void SetUp() override { cfg_set_error_msg_enable(1); }
};

struct Check {
    int value, step, min, max;
    int result;
    const char *message; // what is left in the channel, "" for nothing
};

TEST_F(NumberCheck, PowerOfTwoRecommendsItsNeighbours)
{
    const Check checks[] = {
        {48, 0, 16, 256, -7, "The buffer size must be power of 2. Use 32 or 64"},
        {64, 0, 16, 256, 0, ""},
        {16, 0, 16, 256, 0, ""},
        {256, 0, 16, 256, 0, ""},
        {15, 0, 16, 256, -6, ""},
        {257, 0, 16, 256, -6, ""},
        {1, 0, 0, 8, 0, ""},
        {0, 0, 0, 8, -7, ""},   // no power of two below, nothing to recommend
        {-8, 0, -9, 7, -7, ""}, // and no end to the search either
        {9, 0, 0, 20, -7, "The buffer size must be power of 2. Use 10 or 20"}, // an odd maximum recommends its like
        {1 << 30, 0, 0, INT_MAX, 0, ""},
        {INT_MAX, 0, 0, INT_MAX, -7, "The buffer size must be power of 2. Use 2147483647 or -2"},
    };
    for (const Check &check : checks) {
        cfg_error_set_msg("%s", "");
        EXPECT_EQ(cfg_error_power_of_2("buffer", check.value, check.min, check.max), check.result) << check.value;
        EXPECT_STREQ(cfg_error_get_msg(), check.message);
    }
}

TEST_F(NumberCheck, GranularityRecommendsItsNeighbours)
{
    const Check checks[] = {
        {25, 10, 10, 1000, -7, "The aging-time must be multiple of 10. Use 20 or 30"},
        {20, 10, 10, 1000, 0, ""},
        {9, 10, 10, 1000, -6, ""},
        {1001, 10, 10, 1000, -6, ""},
        {25, 0, 10, 1000, -7, ""},
        {5, 0, 10, 1000, -6, ""}, // the range comes first
        {-25, 10, -100, 100, -7, "The aging-time must be multiple of 10. Use -20 or -10"},
        {25, -10, 0, 100, -7, "The aging-time must be multiple of -10. Use 20 or 10"},
        {INT_MIN, -1, INT_MIN, 0, 0, ""},
        {INT_MAX, 10, 0, INT_MAX, -7, "The aging-time must be multiple of 10. Use 2147483640 or -2147483646"},
    };
    for (const Check &check : checks) {
        cfg_error_set_msg("%s", "");
        EXPECT_EQ(cfg_error_granularity("aging-time", check.value, check.step, check.min, check.max), check.result);
        EXPECT_STREQ(cfg_error_get_msg(), check.message);
    }
}

using PortSetCheck = switchcfg::testing::PortsTest;
using Ports = std::array<std::uint32_t, CFG_PBMP_WORDS>;

TEST_F(PortSetCheck, UnitPortsAndSetMustBeThere)
{
    constexpr int ports_24 = 3;
    constexpr int ports_48 = 11;
    const Ports first{1U};
    const Ports all_24{0xFFFFFFU};
    const Ports all_48{0xFFFFFFFFU, 0xFFFFU};
    put(0, ports_24);
    put(7, ports_48);
    const struct {
        int unit;
        Ports ports;
        int result;
    } cases[] = {{0, first, 0}, {0, all_24, 0}, {7, all_48, 0}, {0, {0x1000000U}, -3},
        {0, {0xFFFFFFU, 0, 0, 0, 0, 0, 0, 1U << 31U}, -3}, {7, {1, 0x10000U}, -3}, {0, {}, -3}, {1, first, -3},
        {8, first, -3}, {-1, first, -3}, {INT_MAX, first, -3}, {INT_MIN, first, -3}};
    for (const auto &check : cases) {
        EXPECT_EQ(cfg_error_valid_unit_pbmp(check.unit, check.ports.data()), check.result) << check.unit;
        EXPECT_EQ(cfg_error_complete_group_pbmp(check.unit, check.ports.data()), 0);
    }
    put(1, 86);
    EXPECT_EQ(cfg_error_valid_unit_pbmp(1, first.data()), -1) << "there, of a model nobody knows";
    EXPECT_EQ(cfg_error_valid_unit_pbmp(1, Ports{}.data()), -3) << "an empty set comes first";
}

TEST_F(PortSetCheck, UnitWhoseChipHasReportedCountsAsThere)
{
    namespace layout = switchcfg::status_layout;
    const Ports first{1U};
    put(2, 3);
    store(status, layout::unit_present, 0, 2);
    EXPECT_EQ(cfg_error_valid_unit_pbmp(2, first.data()), -3);
    store(status, layout::subunit_mark, 1, 2, 0);
    EXPECT_EQ(cfg_error_valid_unit_pbmp(2, first.data()), 0);
    status_finish();
    EXPECT_EQ(cfg_error_valid_unit_pbmp(2, first.data()), -3) << "nothing is there without the region";
}

} // namespace
