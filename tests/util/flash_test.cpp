// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/flash.h>

#include "support/file_text.h"
#include "support/flash_device.h"
#include "util/owned.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace {

using switchcfg::Descriptor;
using switchcfg::testing::FlashDevice;

constexpr std::size_t block = 64UL * 1024;
constexpr std::size_t blocks = 16;

class FlashPartition : public testing::Test {
  protected:
    void SetUp() override
    {
        ASSERT_EQ(device.content().size(), blocks * block);
        ASSERT_TRUE(fd) << FlashDevice::path;
        for (std::size_t i = 0; i < blocks; ++i) {
            device.content()[i * block] = 'x';
        }
    }
    // A letter for each block: '.' when it is erased.
    std::string state() const
    {
        std::string all;
        for (std::size_t i = 0; i < blocks; ++i) {
            const auto bytes = device.content().subspan(i * block, block);
            all += std::ranges::all_of(bytes, [](int byte) { return byte == 0xFF; }) ? '.' : 'x';
        }
        return all;
    }

    FlashDevice device;
    Descriptor fd{::open(FlashDevice::path, O_RDWR | O_CLOEXEC)};
};

TEST_F(FlashPartition, TellsItsGeometryAndErasesARangeOfWholeBlocks)
{
    EXPECT_EQ(mtd_flash_size(fd.get()), 1024 * 1024);
    EXPECT_EQ(mtd_flash_sector_size(fd.get()), 64 * 1024);
    EXPECT_EQ(mtd_flash_sector_num(fd.get()), 16);
    EXPECT_EQ(mtd_flash_erase_pos_size(fd.get(), 2 * block, 2 * block), 0);
    EXPECT_EQ(state(), "xx..xxxxxxxxxxxx");
    EXPECT_LT(mtd_flash_erase_pos_size(fd.get(), block / 2, block), 0);
    EXPECT_LT(mtd_flash_erase_pos_size(fd.get(), (blocks - 1) * block, 2 * block), 0);
    EXPECT_EQ(state(), "xx..xxxxxxxxxxxx") << "a range that is refused erases nothing";
}

TEST_F(FlashPartition, WholeEraseGoesOnBehindABlockThatFails)
{
    device.fail_erase(4);
    EXPECT_EQ(mtd_flash_erase(fd.get()), 0);
    EXPECT_EQ(state(), "...x............");
    EXPECT_EQ(device.operations(), blocks) << "block by block";
}

TEST(Flash, DescriptorThatIsNoDeviceFailsEveryRequestAndIsLeftAlone)
{
    switchcfg::testing::write_file("/tmp/file", "sixteen bytes...");
    const Descriptor file{::open("/tmp/file", O_RDWR)};
    const auto fails_with = [](int result, int why) { return result == -1 && errno == why; };
    for (const auto &[fd, why] : {std::pair{file.get(), ENOTTY}, std::pair{-1, EBADF}}) {
        EXPECT_TRUE(fails_with(mtd_flash_size(fd), why));
        EXPECT_TRUE(fails_with(mtd_flash_sector_size(fd), why));
        EXPECT_TRUE(fails_with(mtd_flash_sector_num(fd), why));
        EXPECT_TRUE(fails_with(mtd_flash_erase_pos_size(fd, 0, 16), why));
        EXPECT_TRUE(fails_with(mtd_flash_erase(fd), why));
    }
    EXPECT_EQ(switchcfg::testing::file_text("/tmp/file"), "sixteen bytes...");
}

} // namespace
