// SPDX-License-Identifier: Apache-2.0
// The boot environment on a flash partition of the kernel's own, whose device numbers SWITCHCFG_TEST_MTD gives
// (MAJOR:MINOR) because it is erased: scripts/target-system has one.
#include "bootenv/boot.h"
#include "bootenv/operations.h"
#include "bootenv/restart.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <switchcfg/bootenv.h>
#include <switchcfg/flash.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace switchcfg::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;

constexpr std::uint32_t block = 16 * 1024;

class Mtd : public ::testing::Test {
  protected:
    void SetUp() override
    {
        const char *const device = std::getenv("SWITCHCFG_TEST_MTD");
        unsigned major = 0;
        unsigned minor = 0;
        if (device == nullptr || std::sscanf(device, "%u:%u", &major, &minor) != 2) {
            GTEST_SKIP() << "no flash partition of the kernel's is given in SWITCHCFG_TEST_MTD";
        }
        ASSERT_EQ(::mknod("/dev/flash_env", S_IFCHR | 0600, ::makedev(major, minor)), 0) << std::strerror(errno);
        fd_ = ::open("/dev/flash_env", O_RDWR | O_CLOEXEC);
        ASSERT_GE(fd_, 0) << std::strerror(errno);
        program({});
    }
    void TearDown() override { ::close(fd_); }

    Image content() const
    {
        Image bytes(BOOTENV_IMAGE_SIZE);
        EXPECT_EQ(::pread(fd_, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
        return bytes;
    }
    void program(const Image &image) const
    {
        ASSERT_EQ(mtd_flash_erase(fd_), 0);
        ASSERT_EQ(::pwrite(fd_, image.data(), image.size(), 0), static_cast<ssize_t>(image.size()));
    }

    int fd_ = -1;
};

// Starts until the switch stays up.
void settle()
{
    for (int restarts = 0; restarts < 4; ++restarts) {
        start_switch();
        if (bootenv_backup() != -1) {
            start_switch();
            return;
        }
        EXPECT_THAT(take_commands(), Contains("/sbin/shutdown -r now"));
    }
    ADD_FAILURE() << "the switch restarts for ever";
}

TEST_F(Mtd, GeometryAndEraseAreTheKernels)
{
    EXPECT_EQ(mtd_flash_size(fd_), BOOTENV_IMAGE_SIZE);
    EXPECT_EQ(mtd_flash_sector_size(fd_), static_cast<int>(block));
    EXPECT_EQ(mtd_flash_sector_num(fd_), 4);

    const Image zeros(BOOTENV_IMAGE_SIZE, 0);
    program(zeros);
    EXPECT_EQ(content(), zeros);
    EXPECT_LT(mtd_flash_erase_pos_size(fd_, block / 2, block), 0) << "only whole blocks";
    EXPECT_LT(mtd_flash_erase_pos_size(fd_, 4 * block, block), 0) << "beyond the end";
    EXPECT_EQ(content(), zeros);
    ASSERT_EQ(mtd_flash_erase_pos_size(fd_, block, 2 * block), 0);
    Image expected = zeros;
    std::fill_n(expected.begin() + block, 2 * block, 0xFF);
    EXPECT_EQ(content(), expected);
    ASSERT_EQ(mtd_flash_erase(fd_), 0);
    EXPECT_EQ(content(), Image(BOOTENV_IMAGE_SIZE, 0xFF));

    const int reader = ::open("/dev/flash_env", O_RDONLY | O_CLOEXEC);
    EXPECT_LT(mtd_flash_erase_pos_size(reader, 0, block), 0) << "needs a descriptor for writing";
    ::close(reader);
}

TEST_F(Mtd, SaveIsThereAfterARestart)
{
    EXPECT_EQ(start_switch(), -1) << "an erased partition has no environment";
    program(image_of({"HV=0", "bootcmd=bootm 0xe8000000"}));
    make_backup({});
    ASSERT_EQ(start_switch(), 0);
    ASSERT_EQ(bootenv_set("bootargs", "root=/dev/mtd2 rw"), 0);
    ASSERT_EQ(bootenv_write_fbmp(0, 5), 0);
    const Environment expected{"HV=0", "bootcmd=bootm 0xe8000000", "bootargs=root=/dev/mtd2 rw", "FBMP=5"};
    EXPECT_EQ(content(), image_of(expected));
    EXPECT_EQ(backup_content(), image_of(expected));
    ASSERT_EQ(start_switch(), 0);
    EXPECT_EQ(environment(), expected);

    std::size_t room = BOOTENV_VARIABLES_SIZE; // to the last byte
    for (const std::string &text : expected) {
        room -= text.size() + 1;
    }
    const std::string fill(room - std::string{"x= "}.size(), 'f');
    ASSERT_EQ(bootenv_set("x", fill.c_str()), 0);
    ASSERT_EQ(bootenv_grava(), 0);
    ASSERT_EQ(start_switch(), 0);
    EXPECT_THAT(environment(), Contains("x=" + fill));
    EXPECT_EQ(content(), image_of(environment()));
}

TEST_F(Mtd, LostEnvironmentComesBackFromItsBackup)
{
    program(image_of({"a=1"}));
    start_switch();
    EXPECT_EQ(bootenv_backup(), 0);
    EXPECT_EQ(content(), image_of({"a=1", "HV=0"})) << "marked as the switch's own";
    EXPECT_EQ(backup_content(), content());
    const Image kept = content();

    program({});
    start_switch();
    EXPECT_EQ(bootenv_backup(), -1);
    EXPECT_THAT(
        take_commands(), ElementsAre("umount /mnt/flash > /dev/null 2> /dev/null", "sleep 2", "/sbin/shutdown -r now"));
    EXPECT_EQ(content(), kept);
    start_switch();
    EXPECT_EQ(bootenv_backup(), 0);
    EXPECT_THAT(environment(), ElementsAre("a=1", "HV=0"));
}

TEST_F(Mtd, SaveThatEndsAnywhereLeavesTheOldOrTheNewEnvironment)
{
    const Environment old_one{"HV=0", "bootdelay=3", "bootcmd=bootm"};
    const Environment new_one{"HV=0", "bootcmd=bootm", "bootdelay=7"};
    const auto prepare = [&] {
        program(image_of(old_one));
        make_backup(image_of(old_one));
        start_switch();
    };
    const auto save = [] {
        bootenv_set("bootdelay", "7");
        return bootenv_grava();
    };
    prepare();
    watch_operations();
    ASSERT_EQ(save(), 0);
    const std::vector<Operation> operations = stop_watching();
    int left_old = 0;
    int left_new = 0;
    for (std::size_t i = 0; i < operations.size(); ++i) {
        for (const std::size_t bytes : {std::size_t{0}, operations[i].bytes / 2, operations[i].bytes}) {
            SCOPED_TRACE(operations[i].name + ", after " + std::to_string(bytes) + " bytes");
            prepare();
            EXPECT_EQ(in_child([&] {
                watch_operations(Cut{i, bytes});
                return save();
            }),
                cut_status);
            settle();
            const Environment left = environment();
            EXPECT_TRUE(left == old_one || left == new_one);
            ++(left == old_one ? left_old : left_new);
            EXPECT_EQ(bootenv_grava(), 0);
            EXPECT_TRUE(checksum_holds(content()));
            EXPECT_EQ(backup_content(), content());
        }
    }
    std::printf("%d cut points leave the old environment, %d the new one\n", left_old, left_new);
    EXPECT_GT(left_old, 0);
    EXPECT_GT(left_new, 0);
}

} // namespace
} // namespace switchcfg::testing
