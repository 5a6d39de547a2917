// SPDX-License-Identifier: Apache-2.0
// What programs and test authors rely on in the flash device of the lab.
#include "lab/lab_runner.h"
#include "support/error_of.h"
#include "support/flash_device.h"
#include "support/power_cut.h"
#include "util/owned.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string_view>
#include <sys/ioctl.h>
#include <unistd.h>

namespace switchcfg::testing {
namespace {

using ::testing::Each;
using ::testing::HasSubstr;

constexpr std::size_t device_size = 65536;
constexpr std::size_t block_size = 16384;
constexpr std::size_t page_size = 256;
constexpr std::size_t pages = device_size / page_size;
constexpr std::size_t blocks = device_size / block_size;

Descriptor open_device(int flags)
{
    return Descriptor{::open(FlashDevice::path, flags | O_CLOEXEC)};
}

ssize_t write_text(int fd, std::string_view text)
{
    return ::write(fd, text.data(), text.size());
}

std::string text_at(const Descriptor &fd, std::size_t place, std::size_t count)
{
    std::string text(count, '\0');
    const ssize_t got = ::pread(fd.get(), text.data(), count, static_cast<off_t>(place));
    return text.substr(0, got < 0 ? 0 : static_cast<std::size_t>(got));
}

int erase(int fd, std::uint32_t start, std::uint32_t length)
{
    erase_info_user range{start, length};
    return ::ioctl(fd, MEMERASE, &range);
}

TEST(LabFlash, IsReadAndWrittenLikeACharacterDevice)
{
    FlashDevice flash;
    EXPECT_THAT(flash.copy(), Each(0xFF));
    const Descriptor fd = open_device(O_RDWR | O_TRUNC);
    ASSERT_TRUE(fd);
    EXPECT_EQ(write_text(fd.get(), "hello "), 6);
    EXPECT_EQ(write_text(fd.get(), "world"), 5);
    EXPECT_EQ(::lseek(fd.get(), 0, SEEK_CUR), 11);
    EXPECT_EQ(::lseek(fd.get(), 6, SEEK_SET), 6);
    char byte = 0;
    EXPECT_EQ(::read(fd.get(), &byte, 1), 1);
    EXPECT_EQ(byte, 'w');

    const auto end = static_cast<off_t>(device_size);
    EXPECT_EQ(::lseek(fd.get(), 0, SEEK_END), end);
    EXPECT_EQ(::read(fd.get(), &byte, 1), 0);
    EXPECT_EQ(error_of(write_text(fd.get(), "x")), ENOSPC);
    EXPECT_EQ(::pwrite(fd.get(), "abc", 3, end - 2), 2) << "a write over the end is short";
    EXPECT_EQ(text_at(fd, device_size - 2, 100), "ab");

    EXPECT_EQ(error_of(::fsync(fd.get())), EINVAL) << "MTD devices have none";
    EXPECT_EQ(write_text(open_device(O_WRONLY | O_DSYNC).get(), "hell"), 4);
    EXPECT_EQ(error_of(write_text(open_device(O_RDONLY).get(), "x")), EBADF);
    const std::vector<std::uint8_t> content = flash.copy();
    EXPECT_TRUE(text_at(fd, 0, device_size) == std::string(content.begin(), content.end())) << "all in one read";
}

TEST(LabFlash, UnmodifiedProgramsUseIt)
{
    FlashDevice flash;
    ASSERT_EQ(run({"sh", "-c",
                      "printf hello > /dev/flash_env; head -c 6 /dev/flash_env | od -An -c; "
                      "cat /dev/flash_env | wc -c; cp /dev/flash_env /tmp/copy && cmp /tmp/copy /dev/flash_env && "
                      "printf '\\001' | dd of=/dev/flash_env conv=notrunc seek=1 bs=1 2> /dev/null"})
                  .output,
        "   h   e   l   l   o 377\n65536\n");
    EXPECT_EQ(flash.content()[0], 'h') << "the shell's > truncates no device";
    EXPECT_EQ(flash.content()[1], 'e' & 1);

    if (run({"sh", "-c", "command -v mtd_debug flashcp"}).status != 0) {
        GTEST_SKIP() << "the tools of mtd-utils are not installed";
    }
    EXPECT_EQ(run({"mtd_debug", "erase", FlashDevice::path, "0", "16384"}).status, 0);
    EXPECT_EQ(flash.content()[0], 0xFF);
    EXPECT_EQ(run({"flashcp", "/etc/passwd", FlashDevice::path}).status, 0) << "it erases, writes and verifies";
}

TEST(LabFlash, ProgrammingClearsBitsAndErasingSetsThemByBlock)
{
    FlashDevice flash;
    const Descriptor fd = open_device(O_RDWR);
    ASSERT_EQ(::pwrite(fd.get(), "\x0F\x33", 2, block_size - 1), 2);
    ASSERT_EQ(::pwrite(fd.get(), "\x3C\x55", 2, block_size - 1), 2);
    EXPECT_EQ(flash.content()[block_size - 1], 0x0C);
    EXPECT_EQ(flash.content()[block_size], 0x11);

    mtd_info_user info{};
    ASSERT_EQ(::ioctl(fd.get(), MEMGETINFO, &info), 0);
    EXPECT_EQ(info.type, MTD_NORFLASH);
    EXPECT_EQ(info.size, device_size);
    EXPECT_EQ(info.erasesize, block_size);

    EXPECT_EQ(erase(fd.get(), block_size, block_size), 0);
    EXPECT_EQ(flash.content()[block_size - 1], 0x0C);
    EXPECT_EQ(flash.content()[block_size], 0xFF);
    for (const auto &[start, length] : {std::array{1U, 16384U}, {0U, 100U}, {65536U, 16384U}, {16384U, 65536U}}) {
        EXPECT_EQ(error_of(erase(fd.get(), start, length)), EINVAL);
    }
    EXPECT_EQ(error_of(erase(open_device(O_RDONLY).get(), 0, block_size)), EPERM);
    erase_info_user64 wide{0, device_size};
    EXPECT_EQ(::ioctl(fd.get(), MEMERASE64, &wide), 0);
    EXPECT_THAT(flash.copy(), Each(0xFF));
    const std::string zeros(3 * page_size, '\0');
    flash.fail_program(2, true);
    EXPECT_EQ(error_of(write_text(fd.get(), zeros)), EIO);
    EXPECT_EQ(std::ranges::count(flash.content(), 0), page_size + page_size / 2);
    EXPECT_EQ(write_text(fd.get(), zeros), static_cast<ssize_t>(zeros.size())) << "a fault hits once";
    int modes = 0;
    EXPECT_EQ(error_of(::ioctl(fd.get(), MEMGETOOBSEL, &modes)), ENOTTY);
}

TEST(LabFlash, EveryCutOfTheDeviceIsExact)
{
    FlashDevice flash;
    const std::vector<std::uint8_t> before(device_size, 0x0F);
    const auto job = [] {
        const Descriptor fd = open_device(O_WRONLY);
        for (std::uint32_t at = 0; at < device_size; at += block_size) {
            erase(fd.get(), at, block_size);
        }
        const ssize_t written = write_text(fd.get(), std::string(device_size, '\xF0'));
        std::ofstream{"/tmp/after"} << "the job went on\n";
        return written == static_cast<ssize_t>(device_size) ? 0 : 1;
    };
    for (const CutAt where : {CutAt::operation, CutAt::half_operation}) {
        const std::size_t part = where == CutAt::half_operation ? 1 : 0;
        unsigned after = 0;
        for (;; ++after) {
            flash.restore(before);
            std::filesystem::remove("/tmp/after");
            if (const CutRun done = run_and_cut(flash, where, after, job); !done.cut) {
                EXPECT_EQ(done.status, 0);
                break;
            }
            const std::size_t erased = after < blocks ? after * block_size + part * block_size / 2 : device_size;
            const std::size_t programmed = after < blocks ? 0 : (after - blocks) * page_size + part * page_size / 2;
            std::vector<std::uint8_t> expected = before;
            std::fill_n(expected.begin(), erased, std::uint8_t{0xFF});
            std::fill_n(expected.begin(), programmed, std::uint8_t{0xF0});
            ASSERT_EQ(flash.copy(), expected) << "after " << after;
            ASSERT_FALSE(std::filesystem::exists("/tmp/after")) << "the job ends where the power goes";
        }
        EXPECT_EQ(after, blocks + pages);
    }
}

TEST(LabFlash, IsDrivenFromTheCommandLine)
{
    const std::string bench = std::string{SWITCHLAB} + " flash ";
    const auto sh = [](const std::string &script) { return run({"sh", "-c", script}); };
    // With dd, since a preloaded device does not see what goes through stdio.
    EXPECT_EQ(sh(bench + "cut-after 2 --half && printf abcd | dd of=/dev/flash_env && printf x >> /dev/null && " +
                  bench + "rot 0 1 && " + bench + "fail-program 5 && " + bench + "fail-erase 7")
                  .status,
        0);
    const Outcome status = sh(bench + "status");
    EXPECT_THAT(status.output, HasSubstr("65536 bytes, erase blocks of 16384, pages of 256"));
    EXPECT_THAT(status.output, HasSubstr("power on, 1 operations: 0 blocks erased, 1 pages programmed\n"
                                         "fails: erase 7 from now\nfails: program 5 from now\n"
                                         "power goes after 1 more operations, in the middle of the next\n"));
    EXPECT_THAT(sh(bench + "status --json").output, HasSubstr("\"cut_after\": 1"));
    EXPECT_EQ(sh(bench + "power-off; dd if=/dev/flash_env bs=4 count=1 2>&1 | grep -c 'Input/output error'; " + bench +
                  "power-on; dd if=/dev/flash_env bs=4 count=1 2>/dev/null")
                  .output,
        "1\ncbcd");
    EXPECT_EQ(sh(bench + "rot 65536 0").output, "switchlab: rot: offset 65536 is outside the device of 65536 bytes\n");
    EXPECT_EQ(sh(bench + "rot 0 8").status, 125);
    EXPECT_THAT(lab(bench + "status").output, HasSubstr("enter a lab with switchlab run --flash"));
}

TEST(LabFlash, ContentOutlivesTheLabInItsImage)
{
    const Words options{"--flash", "--flash-image", "/tmp/image"};
    EXPECT_EQ(lab("printf kept > /dev/flash_env", options).status, 0);
    EXPECT_EQ(std::filesystem::file_size("/tmp/image"), device_size);
    EXPECT_EQ(lab("head -c 4 /dev/flash_env", options).output, "kept");

    const auto with = [&](Words more) {
        more.insert(more.begin(), options.begin(), options.end());
        return lab(std::string{SWITCHLAB} + " flash status", more).output;
    };
    EXPECT_THAT(with({"--flash-size", "128KiB"}), HasSubstr("the file has 65536 bytes, the partition 131072"));
    EXPECT_THAT(with({"--flash-block", "10000"}), HasSubstr("a whole number of erase blocks (10000 bytes)"));
    EXPECT_THAT(lab(std::string{SWITCHLAB} + " flash status",
                    {"--flash", "--flash-size", "1MiB", "--flash-block", "64KiB", "--flash-page", "1"})
                    .output,
        HasSubstr("1048576 bytes, erase blocks of 65536, pages of 1,"));
}

} // namespace
} // namespace switchcfg::testing
