// SPDX-License-Identifier: Apache-2.0
#include "bootenv/boot.h"
#include "bootenv/operations.h"
#include "bootenv/restart.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <switchcfg/bootenv.h>
#include <switchcfg/status.h>

namespace switchcfg::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;

std::optional<std::string> value_of(const char *name)
{
    const std::unique_ptr<char, decltype(&std::free)> value{bootenv_get(name), &std::free};
    return value ? std::optional<std::string>{value.get()} : std::nullopt;
}

std::uint8_t *shadow()
{
    return static_cast<std::uint8_t *>(get_status()) + 8114804;
}

std::uint32_t shadow_length()
{
    std::uint32_t length = 0;
    std::memcpy(&length, static_cast<std::uint8_t *>(get_status()) + 8180336, sizeof length);
    return length;
}

std::vector<std::string> names(const std::vector<Operation> &operations)
{
    std::vector<std::string> all;
    for (const Operation &operation : operations) {
        all.push_back(operation.name + (operation.bytes > 0 ? " " + std::to_string(operation.bytes) : ""));
    }
    return all;
}

TEST(Bootenv, WithoutAStatusRegionThereIsNoEnvironmentAndFlashIsLeftAlone)
{
    fill_flash(image_of({"HV=0"}));
    char **list = nullptr;
    int count = 0;
    EXPECT_EQ(bootenv_init(), -1);
    EXPECT_EQ(bootenv_get("HV"), nullptr);
    EXPECT_EQ(bootenv_get_all(&list, &count), -1);
    EXPECT_EQ(bootenv_set("a", "1"), -1);
    EXPECT_EQ(bootenv_grava(), -1);
    EXPECT_EQ(flash().copy(), image_of({"HV=0"}));
}

TEST(Bootenv, LoadsOncePerStartAndDoesNotAskForTheCrc)
{
    Image image = image_of({"HV=0", "junk", "FBMP=5"});
    image[0] ^= 1;
    fill_flash(image);
    ASSERT_EQ(start_switch(), 0);
    EXPECT_EQ(std::memcmp(shadow(), image.data() + 4, area_size), 0) << "as in flash, what is no pair included";
    EXPECT_EQ(shadow_length(), 18U) << "up to the first of the two ending NULs";
    EXPECT_THAT(environment(), ElementsAre("HV=0", "FBMP=5"));
    EXPECT_EQ(value_of("FBMP"), "5");
    EXPECT_EQ(value_of("junk"), std::nullopt);
    EXPECT_EQ(value_of("nothing"), std::nullopt);

    flash().erase_chip();
    watch_operations();
    EXPECT_EQ(bootenv_init(), 0);
    EXPECT_THAT(stop_watching(), ElementsAre()) << "the second process finds the shadow loaded";
    EXPECT_EQ(value_of("FBMP"), "5");
}

TEST(Bootenv, PartitionWithoutAnEndLeavesTheShadowAlone)
{
    Image one_nul(4 + area_size, 'x');
    one_nul.back() = 0;
    for (const Image &no_end : {Image{}, Image(4 + area_size, 'x'), one_nul}) {
        fill_flash(no_end);
        EXPECT_EQ(start_switch(), -1);
    }
    flash().power_off();
    EXPECT_EQ(start_switch(), -1);
    EXPECT_EQ(shadow_length(), 0U);
    EXPECT_THAT(environment(), ElementsAre());

    flash().power_on();
    fill_flash(image_of({}));
    EXPECT_EQ(start_switch(), 0);
    EXPECT_EQ(shadow_length(), 1U);
    EXPECT_THAT(environment(), ElementsAre());
}

TEST(Bootenv, SetChangesTheShadowOnly)
{
    fill_flash(image_of({"HV=0", "a=1", "junk", "", "a=doubled", "ab=1", "=v", "b=="}));
    start_switch();
    EXPECT_EQ(value_of("a"), "1");
    EXPECT_EQ(value_of("ab"), "1");
    EXPECT_EQ(value_of("a=whatever"), "1") << "a name counts up to its sign";
    EXPECT_EQ(value_of("b"), "=");
    for (const char *const absent : {"c", "abc", "A", "jun"}) {
        EXPECT_EQ(value_of(absent), std::nullopt) << absent;
    }
    EXPECT_THAT(environment(), ElementsAre("HV=0", "a=1", "a=doubled", "ab=1", "=v", "b=="));

    fill_flash(image_of({"HV=0", "a=1", "junk", "a=doubled"}));
    start_switch();
    watch_operations();
    EXPECT_EQ(bootenv_set("b", "2"), 0);
    EXPECT_EQ(bootenv_set("a", "x=y"), 0);
    EXPECT_EQ(bootenv_set("HV", nullptr), 0);
    EXPECT_EQ(bootenv_set("nothing", nullptr), 0);
    EXPECT_EQ(bootenv_set(nullptr, "1"), -1);
    EXPECT_THAT(stop_watching(), ElementsAre());
    EXPECT_THAT(environment(), ElementsAre("b=2", "a=x=y"));
    EXPECT_EQ(std::memcmp(shadow(), image_of({"b=2", "a=x=y"}).data() + 4, area_size), 0) << "zeros up to the end";
    EXPECT_EQ(shadow_length(), 11U);

    const std::string fits(BOOTENV_VARIABLES_SIZE - 10 - 3, 'v');
    EXPECT_EQ(bootenv_set("c", (fits + "v").c_str()), -1);
    EXPECT_THAT(environment(), ElementsAre("b=2", "a=x=y"));
    EXPECT_EQ(bootenv_set("c", fits.c_str()), 0);
    EXPECT_EQ(bootenv_set("d", ""), -1) << "full";
    EXPECT_EQ(bootenv_set("b", "34"), -1) << "its own four bytes are too few";
    EXPECT_EQ(bootenv_set("b", "3"), 0) << "the replaced text makes room for the new one";
    make_backup({});
    EXPECT_EQ(bootenv_grava(), 0);
    ASSERT_EQ(start_switch(), 0) << "a full environment has its end, too";
    EXPECT_EQ(value_of("c"), fits);

    fill_flash(image_of({"a=1"}));
    start_switch();
    EXPECT_EQ(bootenv_set("a", nullptr), 0);
    EXPECT_EQ(shadow_length(), 1U);
    EXPECT_EQ(std::count(shadow(), shadow() + area_size, 0), static_cast<std::ptrdiff_t>(area_size));
}

TEST(Bootenv, HostileLengthInTheRegionIsHeldInside)
{
    start_switch();
    for (const std::uint32_t length : {65532U, 65533U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        std::memset(shadow(), 'x', area_size);
        std::memcpy(shadow() + area_size, &length, sizeof length);
        EXPECT_THAT(environment(), ElementsAre());
        EXPECT_EQ(bootenv_set("a", "1"), 0);
        EXPECT_THAT(environment(), ElementsAre("a=1"));
    }
}

TEST(Bootenv, SaveKeepsItsOrderOfOperations)
{
    fill_flash(image_of({"HV=0", "a=1"}));
    make_backup(image_of({"HV=0", "a=1"}));
    start_switch();
    bootenv_set("a", "2");
    watch_operations();
    ASSERT_EQ(bootenv_grava(), 0);
    const std::string erase = "erase a block of /dev/flash_env";
    std::vector<std::string> expected{"open /dev/flash_env", "geometry of /dev/flash_env"};
    expected.insert(expected.end(), flash().geometry().size / flash().geometry().block, erase);
    expected.insert(expected.end(),
        {"write /dev/flash_env 4", "write /dev/flash_env 65532", "close /dev/flash_env", "open /dev/flash_env",
            "geometry of /dev/flash_env", "read /dev/flash_env", "close /dev/flash_env", "open /mnt/flash/bkp/scratch",
            "write /mnt/flash/bkp/scratch 4", "write /mnt/flash/bkp/scratch 65532", "close /mnt/flash/bkp/scratch",
            "rename to /mnt/flash/bkp/env"});
    EXPECT_EQ(names(stop_watching()), expected);

    const Image saved = image_of({"HV=0", "a=2"});
    EXPECT_EQ(flash().copy(), saved);
    EXPECT_EQ(backup_content(), saved);
    EXPECT_EQ(fs::status(backup_path).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_FALSE(fs::exists("/mnt/flash/bkp/scratch"));
}

TEST(Bootenv, SaveTellsEachFailureByItsCode)
{
    const Environment old_one{"HV=0", "x=aaaa"};
    const auto prepare = [&] {
        flash().power_on();
        fill_flash(image_of(old_one));
        remove_backup();
        make_backup(image_of(old_one));
        start_switch();
        bootenv_set("x", "bbbb");
    };

    prepare();
    flash().power_off();
    EXPECT_EQ(bootenv_grava(), -26) << "the device cannot be opened";
    EXPECT_EQ(value_of("x"), "bbbb");

    for (const unsigned page : {1U, 2U, 200U}) {
        prepare();
        flash().fail_program(page);
        EXPECT_EQ(bootenv_grava(), -1) << "a write fails, which is no flash error here";
        EXPECT_EQ(backup_content(), image_of(old_one));
    }

    // The erase passes over its block, so old and new bits are mixed: 'a' and 'b' share the bits of '`'.
    prepare();
    flash().fail_erase(1);
    EXPECT_EQ(bootenv_grava(), -26) << "what is read back differs";
    EXPECT_EQ(value_of("x"), "````") << "the shadow is what flash holds";
    EXPECT_EQ(backup_content(), image_of(old_one)) << "the good copy is not overwritten";
    EXPECT_EQ(start_switch(), 0);

    prepare();
    fs::remove_all("/mnt/flash/bkp");
    EXPECT_EQ(bootenv_grava(), -26) << "no folder for the backup";
    EXPECT_EQ(flash().copy(), image_of({"HV=0", "x=bbbb"})) << "flash is written all the same";

    prepare();
    fs::remove(backup_path);
    fs::create_directories(std::string{backup_path} + "/in the way");
    EXPECT_EQ(bootenv_grava(), -26) << "the rename fails";
}

TEST(Bootenv, SaveThatCannotBeLoadedBackLeavesTheShadowUnloaded)
{
    fill_flash(image_of({"HV=0", "a=1"}));
    make_backup(image_of({"HV=0", "a=1"}));
    start_switch();
    bootenv_set("a", "2");
    watch_operations([](const Operation &operation) {
        if (operation.name == "close /dev/flash_env") {
            flash().power_off();
        }
    });
    EXPECT_EQ(bootenv_grava(), -1);
    stop_watching();
    EXPECT_EQ(shadow()[0], 0) << "so the next process loads";
    EXPECT_EQ(backup_content(), image_of({"HV=0", "a=1"}));
    flash().power_on();
    EXPECT_EQ(bootenv_init(), 0);
    EXPECT_THAT(environment(), ElementsAre("HV=0", "a=2"));
}

TEST(Bootenv, ReadImageIsCutToSizeAndRefusesWhatItCannotRead)
{
    const char *const path = "/tmp/image";
    int size = 77;
    std::ofstream{"/tmp/empty"}.flush();
    for (const char *const nothing : {"/tmp/no such file", "/tmp/empty", "/tmp"}) {
        EXPECT_EQ(bootenv_read_env(nothing, &size, 0), nullptr) << nothing;
    }
    std::ofstream{path} << "abc";
    EXPECT_EQ(bootenv_read_env(path, &size, 1), nullptr) << "a file is no partition";
    EXPECT_EQ(size, 77);

    std::unique_ptr<std::uint8_t, decltype(&std::free)> image{bootenv_read_env(path, &size, 0), &std::free};
    ASSERT_TRUE(image);
    EXPECT_EQ(std::string(image.get(), image.get() + size), "abc");
    std::ofstream{path} << std::string(70000, 'z');
    image.reset(bootenv_read_env(path, &size, 0));
    EXPECT_EQ(size, 65536);
    image.reset(bootenv_read_env("/dev/flash_env", &size, 1));
    EXPECT_EQ(size, 65536);
}

TEST(Bootenv, RestoreWritesOnlyAGoodBackup)
{
    const Image good = image_of({"HV=0", "a=1"});
    Image bad_crc = good;
    bad_crc[4] ^= 1;
    Image old_one = image_of({"b=2"});
    fill_flash(old_one);
    remove_backup();
    EXPECT_EQ(bootenv_flash_to_boot(), -26);
    for (const Image &bad : {Image{}, Image{0, 0, 0}, bad_crc, Image(good.begin(), good.end() - 1)}) {
        make_backup(bad);
        EXPECT_EQ(bootenv_flash_to_boot(), -26);
        EXPECT_EQ(flash().copy(), old_one) << "not touched";
    }
    make_backup(good);
    EXPECT_EQ(bootenv_flash_to_boot(), 0);
    EXPECT_EQ(flash().copy(), good);

    flash().fail_program(1);
    EXPECT_EQ(bootenv_flash_to_boot(), -26);
    flash().power_off();
    EXPECT_EQ(bootenv_flash_to_boot(), -26);
}

TEST(Bootenv, BackupFollowsTheOwnEnvironmentAndMarksOneThatIsNot)
{
    Image bad = image_of({"HV=0", "a=3"});
    bad[1] ^= 1;
    make_backup(bad);
    fill_flash(image_of({"default=1"}));
    start_switch();
    EXPECT_EQ(bootenv_backup(), 0);
    EXPECT_EQ(flash().copy(), image_of({"default=1", "HV=0"})) << "lost, but there is no good backup";
    EXPECT_EQ(backup_content(), flash().copy());

    fill_flash(image_of({"a=1"}));
    remove_backup();
    start_switch();
    EXPECT_EQ(bootenv_backup(), 0);
    EXPECT_EQ(flash().copy(), image_of({"a=1", "HV=0"}));
    EXPECT_EQ(backup_content(), flash().copy());
    EXPECT_EQ(fs::status("/mnt/flash/bkp").permissions(), fs::perms::owner_all);

    watch_operations();
    EXPECT_EQ(bootenv_backup(), 0);
    EXPECT_THAT(names(stop_watching()),
        ElementsAre("open /dev/flash_env", "geometry of /dev/flash_env", "read /dev/flash_env", "close /dev/flash_env",
            "open /mnt/flash/bkp/env", "read /mnt/flash/bkp/env", "close /mnt/flash/bkp/env"))
        << "in step: only looked at";

    const Image own = flash().copy();
    for (const Image &other : {Image{}, Image{1}, image_of({"HV=0", "a=2"}), Image(own.begin(), own.end() - 1)}) {
        make_backup(other);
        EXPECT_EQ(bootenv_backup(), 0);
        EXPECT_EQ(flash().copy(), own);
        EXPECT_EQ(backup_content(), own);
    }
}

TEST(Bootenv, LostEnvironmentIsRestoredAndTheSwitchRestarts)
{
    const Image kept = image_of({"HV=0", "a=1"});
    make_backup(kept);
    for (const Image &lost : {Image{}, image_of({"default=1"})}) {
        fill_flash(lost);
        start_switch();
        ::testing::internal::CaptureStdout();
        EXPECT_EQ(bootenv_backup(), -1);
        EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "Restoring bootloader environment\nSystem will reboot automatically\n");
        EXPECT_THAT(take_commands(),
            ElementsAre("umount /mnt/flash > /dev/null 2> /dev/null", "sleep 2", "/sbin/shutdown -r now"));
        EXPECT_EQ(flash().copy(), kept);
        EXPECT_EQ(backup_content(), kept);
        EXPECT_EQ(value_of("a"), std::nullopt) << "the shadow follows after the restart";
    }
    start_switch();
    EXPECT_EQ(bootenv_backup(), 0);
    EXPECT_THAT(take_commands(), ElementsAre());
}

} // namespace
} // namespace switchcfg::testing
