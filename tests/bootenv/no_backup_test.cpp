// SPDX-License-Identifier: Apache-2.0
// Equipment that keeps no backup: no board of today, so this program answers the question itself.
#include "bootenv/boot.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <switchcfg/bootenv.h>
#include <switchcfg/ports.h>

int cfg_equip_has_env_backup_tq5200() noexcept
{
    return 0;
}

namespace switchcfg::testing {
namespace {

TEST(NoBackup, SaveLeavesTheFlashFileSystemAlone)
{
    fill_flash(image_of({"HV=0", "a=1"}));
    remove_backup();
    start_switch();
    ASSERT_EQ(bootenv_set("a", "2"), 0);
    EXPECT_EQ(bootenv_grava(), 0);
    EXPECT_EQ(flash().copy(), image_of({"HV=0", "a=2"}));
    EXPECT_FALSE(std::filesystem::exists("/mnt/flash/bkp"));

    make_backup(image_of({"kept=1"}));
    EXPECT_EQ(bootenv_grava(), 0);
    EXPECT_EQ(backup_content(), image_of({"kept=1"}));
}

} // namespace
} // namespace switchcfg::testing
