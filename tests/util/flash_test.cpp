// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/flash.h>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

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
