// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/flash.h>

#include "support/flash_device.h"
#include "util/owned.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace {

using switchcfg::Descriptor;
using switchcfg::testing::FlashDevice;

constexpr std::size_t block = 64UL * 1024;
constexpr std::size_t blocks = 16;

class FlashPartition : public testing::Test {
  protected:
    // Every block starts with a text, so what is erased shows.
    void SetUp() override
    {
        ASSERT_EQ(device.content().size(), blocks * block);
        ASSERT_TRUE(fd) << FlashDevice::path;
        for (std::size_t i = 0; i < blocks; ++i) {
            std::ranges::copy(mark, device.content().begin() + static_cast<std::ptrdiff_t>(i * block));
        }
    }
    bool erased(std::size_t index) const
    {
        return std::ranges::all_of(
            device.content().subspan(index * block, block), [](int byte) { return byte == 0xFF; });
    }
    std::vector<std::size_t> dirty_blocks() const
    {
        std::vector<std::size_t> dirty;
        for (std::size_t i = 0; i < blocks; ++i) {
            if (!erased(i)) {
                dirty.push_back(i);
            }
        }
        return dirty;
    }

    static constexpr std::string_view mark = "in use";
    FlashDevice device;
    Descriptor fd{::open(FlashDevice::path, O_RDWR | O_CLOEXEC)};
};

TEST_F(FlashPartition, TellsItsGeometry)
{
    EXPECT_EQ(mtd_flash_size(fd.get()), 1024 * 1024);
    EXPECT_EQ(mtd_flash_sector_size(fd.get()), 64 * 1024);
    EXPECT_EQ(mtd_flash_sector_num(fd.get()), 16);
}

TEST_F(FlashPartition, ErasesARangeOfWholeBlocks)
{
    EXPECT_EQ(mtd_flash_erase_pos_size(fd.get(), 2 * block, 2 * block), 0);
    EXPECT_TRUE(erased(2) && erased(3));
    EXPECT_EQ(dirty_blocks().size(), blocks - 2);

    EXPECT_LT(mtd_flash_erase_pos_size(fd.get(), block / 2, block), 0);
    EXPECT_LT(mtd_flash_erase_pos_size(fd.get(), (blocks - 1) * block, 2 * block), 0);
    EXPECT_EQ(dirty_blocks().size(), blocks - 2) << "a range that is refused erases nothing";
}

TEST_F(FlashPartition, WholeEraseGoesOnBehindABlockThatFails)
{
    device.fail_erase(4);
    EXPECT_EQ(mtd_flash_erase(fd.get()), 0);
    EXPECT_EQ(dirty_blocks(), std::vector<std::size_t>{3});
    EXPECT_EQ(device.operations(), blocks) << "block by block";
    EXPECT_EQ(mtd_flash_erase(fd.get()), 0);
    EXPECT_EQ(dirty_blocks(), std::vector<std::size_t>{});
}

TEST(Flash, DescriptorThatIsNoDeviceFailsEveryRequestAndIsLeftAlone)
{
    constexpr char path[] = "/tmp/no_flash_device";
    const std::array<char, 16> content{"fifteen bytes.."};
    const int file = ::open(path, O_RDWR | O_CREAT | O_TRUNC, 0600);
    ASSERT_EQ(::write(file, content.data(), content.size()), 16);

    const auto fails_with = [](int result, int why) { return result == -1 && errno == why; };
    for (const auto &[fd, why] : {std::pair{file, ENOTTY}, std::pair{-1, EBADF}}) {
        EXPECT_TRUE(fails_with(mtd_flash_size(fd), why));
        EXPECT_TRUE(fails_with(mtd_flash_sector_size(fd), why));
        EXPECT_TRUE(fails_with(mtd_flash_sector_num(fd), why));
        EXPECT_TRUE(fails_with(mtd_flash_erase_pos_size(fd, 0, 16), why));
        EXPECT_TRUE(fails_with(mtd_flash_erase(fd), why));
    }

    std::array<char, 32> left{};
    EXPECT_EQ(::pread(file, left.data(), left.size(), 0), 16);
    EXPECT_STREQ(left.data(), content.data());
    ::close(file);
    ::unlink(path);
}

} // namespace
