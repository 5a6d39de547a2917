// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/config_region.h>
#include <switchcfg/mapped_file.h>

#include "support/file_text.h"

#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

namespace {

using namespace switchcfg::testing;

TEST(MappedFile, CreatesSparselyWithTheUmaskApplied)
{
    ::umask(022);
    auto *const map = static_cast<char *>(file_map_create("/tmp/new", 1000001));
    ASSERT_NE(map, nullptr);
    struct stat file {};
    ASSERT_EQ(::stat("/tmp/new", &file), 0);
    EXPECT_EQ(file.st_mode & 07777, 0755U);
    EXPECT_EQ(file.st_size, 1000001);
    EXPECT_LT(file.st_blocks * 512, 100000);
    EXPECT_EQ(map[1000000], 0);
    EXPECT_EQ(file_unmap(map, 1000001), 0);
}

TEST(MappedFile, ExtendsAShortFileAndLeavesALongOneAlone)
{
    write_file("/tmp/short", "abc");
    auto *map = static_cast<char *>(file_map_create("/tmp/short", 10));
    ASSERT_NE(map, nullptr);
    EXPECT_EQ(std::memcmp(map, "abc\0\0\0\0\0\0\0", 10), 0);
    file_unmap(map, 10);

    write_file("/tmp/long", "0123456789");
    map = static_cast<char *>(file_map_create("/tmp/long", 4));
    ASSERT_NE(map, nullptr);
    map[0] = 'X';
    EXPECT_EQ(file_sync(map, 4), 0);
    file_unmap(map, 4);
    EXPECT_EQ(file_text("/tmp/long"), "X123456789");
}

TEST(MappedFile, ReadAndWriteMapWhatIsThereAndNeverCreate)
{
    EXPECT_EQ(file_map_read("/tmp/missing"), nullptr);
    EXPECT_EQ(file_map_write("/tmp/missing"), nullptr);
    EXPECT_FALSE(std::filesystem::exists("/tmp/missing"));
    write_file("/tmp/empty", "");
    EXPECT_EQ(file_map_read("/tmp/empty"), nullptr);
    EXPECT_EQ(file_map_read(nullptr), nullptr);
    for (const char *const wrong : {"/tmp/no/folder", "/tmp", static_cast<const char *>(nullptr)}) {
        EXPECT_EQ(file_map_create(wrong, 10), nullptr);
    }
    EXPECT_EQ(file_map_create("/tmp/nothing", 0), nullptr);

    write_file("/tmp/file", "hello");
    auto *const writable = static_cast<char *>(file_map_write("/tmp/file"));
    auto *const readable = static_cast<const char *>(file_map_read("/tmp/file"));
    ASSERT_NE(writable, nullptr);
    ASSERT_NE(readable, nullptr);
    writable[0] = 'j';
    EXPECT_EQ(std::memcmp(readable, "jello", 5), 0);
}

TEST(MappedFile, SyncReportsFailure)
{
    EXPECT_EQ(file_sync(nullptr, 4096), -1);
}

TEST(MappedFile, FullFileSystemFailsCleanlyAndKeepsWhatIsThere)
{
    ::mkdir("/tmp/full", 0755);
    ASSERT_EQ(::mount("none", "/tmp/full", "tmpfs", 0, "size=64k"), 0);
    write_file("/tmp/full/region", "kept");
    write_file("/tmp/full/filler", std::string(1 << 20, 'x')); // as much of it as fits
    EXPECT_EQ(file_map_create("/tmp/full/region", 1 << 20), nullptr);
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_EQ(file_text("/tmp/full/region"), "kept");
    EXPECT_EQ(file_map_create("/tmp/full/new", 1 << 20), nullptr);
}

TEST(ConfigRegion, IsMappedOnceReplacedSyncedAndUnmapped)
{
    EXPECT_EQ(cfg_data_sync(), 0);
    EXPECT_EQ(cfg_get_cfg(), nullptr);
    ASSERT_EQ(cfg_data_cfg_map(), 0);
    void *const running = cfg_get_cfg();
    ASSERT_NE(running, nullptr);
    EXPECT_EQ(cfg_data_cfg_map(), -1) << "a second mapping is refused";
    EXPECT_EQ(cfg_get_cfg(), running);
    char candidate[8] = {};
    cfg_set_cfg(candidate); // the pointer only
    EXPECT_EQ(cfg_get_cfg(), candidate);
    cfg_set_cfg(running);
    EXPECT_EQ(cfg_get_default_cfg(), nullptr);
    ASSERT_EQ(cfg_data_defcfg_map(), 0);
    EXPECT_NE(cfg_get_default_cfg(), nullptr);
    static_cast<char *>(running)[CFG_REGION_SIZE - 1] = 'e';
    EXPECT_EQ(cfg_data_sync(), 0);
    EXPECT_EQ(file_text(CFG_RUNNING_PATH).size(), 21707629U);
    EXPECT_EQ(file_text(CFG_RUNNING_PATH).back(), 'e');
    EXPECT_EQ(file_text(CFG_DEFAULT_PATH), std::string(21707629, '\0'));

    EXPECT_EQ(cfg_data_cfg_unmap(), 0);
    EXPECT_EQ(cfg_data_cfg_unmap(), 0);
    EXPECT_EQ(cfg_data_defcfg_unmap(), 0);
    EXPECT_EQ(cfg_get_cfg(), nullptr);
    EXPECT_EQ(cfg_get_default_cfg(), nullptr);
}

} // namespace
