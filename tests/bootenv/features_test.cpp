// SPDX-License-Identifier: Apache-2.0
#include "bootenv/boot.h"
#include "support/output.h"

#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <switchcfg/bootenv.h>
#include <switchcfg/equip.h>
#include <switchcfg/ports.h>
#include <switchcfg/status.h>
#include <utility>

namespace switchcfg::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;

std::uint8_t *status()
{
    return static_cast<std::uint8_t *>(get_status());
}

// The three flags and the two words: applied at start, last written.
std::vector<std::uint32_t> published()
{
    std::uint32_t words[2];
    std::memcpy(words, status() + 1384, sizeof words);
    return {status()[68], status()[69], status()[73], words[0], words[1]};
}

TEST(Features, WhatIsEnabledChangesAtStartOnly)
{
    start_switch();
    status_fbmp_init(9, 0x1F804, 1);
    EXPECT_THAT(published(), ElementsAre(0, 0, 0, 0x1F804, 0x1F804)) << "MPLS counts only together with L3";
    status_fbmp_init(0, 7, 1);
    EXPECT_THAT(published(), ElementsAre(1, 1, 1, 7, 7));
    status_fbmp_init(0, 1, 0);
    EXPECT_THAT(published(), ElementsAre(1, 1, 0, 7, 1)) << "stored for the next start, but bit 1 counts at once";
    status_finish();
    status_fbmp_init(0, 7, 1);
}

TEST(Features, StoringTheBitmapSavesItAsADecimalText)
{
    fill_flash(image_of({"HV=0", "FBMP=1", "a=1"}));
    make_backup({});
    start_switch();
    EXPECT_EQ(bootenv_write_fbmp(0, 5), 0);
    EXPECT_EQ(flash().copy(), image_of({"HV=0", "a=1", "FBMP=5"}));
    EXPECT_THAT(published(), ElementsAre(0, 0, 0, 0, 5));
    EXPECT_EQ(bootenv_write_fbmp(0xFFFFFFFF, 0xFFFFFFFE), 0);
    EXPECT_EQ(flash().copy(), image_of({"HV=0", "a=1", "FBMP=18446744073709551614"}));

    // A bitmap that does not fit is an error, and the save of everything else does not hide it.
    ASSERT_EQ(bootenv_set("FBMP", nullptr), 0);
    ASSERT_EQ(bootenv_set("full", std::string(BOOTENV_VARIABLES_SIZE - 9 - 6, 'x').c_str()), 0);
    const Image before = flash().copy();
    EXPECT_EQ(bootenv_write_fbmp(0, 5), -1);
    EXPECT_EQ(flash().copy(), before);
}

// The bitmap that is left, and what is said.
std::pair<std::uint64_t, std::string> reduce(int unit, std::uint64_t bitmap)
{
    std::string said = output_of([&] { cfg_bootenv_check_chip_capability(unit, &bitmap); });
    return {bitmap, std::move(said)};
}

void set_model(int unit, int model)
{
    std::memcpy(status() + std::size_t{8000} * static_cast<unsigned>(unit) + 1348, &model, sizeof model);
}

// A model of the table with exactly these features, so that the test does not know the table by heart.
int model_with(bool poe, bool mpls, bool l3)
{
    for (int model = 1; model < CFG_EQUIP_RECORDS; ++model) {
        set_model(3, model);
        if ((cfg_equip_has_poe_tq5200(3) != 0) == poe && (cfg_equip_get_bcm_has_mpls(3) != 0) == mpls &&
            (cfg_equip_get_bcm_has_l3(3) != 0) == l3) {
            return model;
        }
    }
    return 0;
}

TEST(Features, HardwareKeepsWhatItHasAndSaysWhatItDrops)
{
    const std::string refused = " will not be enabled. This equipment doesn't support this feature.\n";
    start_switch();
    constexpr std::uint64_t all = ~std::uint64_t{0};
    std::vector<std::pair<bool, bool>> combinations;
    for (const bool poe : {false, true}) {
        for (const auto &[mpls, l3] : {std::pair{false, false}, {false, true}, {true, true}}) {
            if (model_with(poe, mpls, l3) == 0) {
                continue;
            }
            combinations.emplace_back(poe, mpls);
            const auto [bitmap, said] = reduce(3, all);
            EXPECT_EQ(bitmap, (poe ? 0x1F800U : 0U) | (mpls ? 4U : 0U) | 2U | (l3 ? 1U : 0U));
            EXPECT_EQ(said, (poe ? "" : "POE" + refused) + (mpls ? "" : "MPLS" + refused) + (l3 ? "" : "L3" + refused));
        }
    }
    EXPECT_THAT(combinations, Contains(std::pair(true, false)));
    EXPECT_THAT(combinations, Contains(std::pair(false, true)));

    set_model(3, 0);
    EXPECT_EQ(reduce(3, 0xFFFFFFFF00000000U).first, 0U);
    EXPECT_EQ(reduce(3, 2).second, "") << "what is not asked for is not refused";
    EXPECT_EQ(reduce(3, 0x800).second, "POE" + refused) << "one of the six bits is enough";
    for (const int unit : {8, -1}) {
        EXPECT_EQ(reduce(unit, all).first, 2U) << "no such unit";
    }
}

} // namespace
} // namespace switchcfg::testing
