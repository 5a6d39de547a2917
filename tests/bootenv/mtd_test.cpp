// SPDX-License-Identifier: Apache-2.0
// The boot environment on a flash partition of the kernel's own, whose device numbers SWITCHCFG_TEST_MTD gives
// (MAJOR:MINOR) because it is erased: scripts/target-system has one.
#include "bootenv/boot.h"
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

} // namespace
} // namespace switchcfg::testing
