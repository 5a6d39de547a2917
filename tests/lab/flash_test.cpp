// SPDX-License-Identifier: Apache-2.0
// What programs and test authors rely on in the flash device of the lab.
#include "lab/lab_runner.h"
#include "support/flash_device.h"
#include "support/power_cut.h"
#include "util/owned.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
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

std::string read_text(int fd, std::size_t count)
{
    std::string text(count, '\0');
    const ssize_t got = ::read(fd, text.data(), count);
    text.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
    return text;
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
    EXPECT_EQ(::lseek(fd.get(), 0, SEEK_SET), 0);
    EXPECT_EQ(read_text(fd.get(), 11), "hello world");
    char byte = 0;
    EXPECT_EQ(::pread(fd.get(), &byte, 1, 4), 1);
    EXPECT_EQ(byte, 'o');

    const auto end = static_cast<off_t>(device_size);
    EXPECT_EQ(::lseek(fd.get(), 0, SEEK_END), end);
    EXPECT_EQ(::read(fd.get(), &byte, 1), 0);
    EXPECT_EQ(write_text(fd.get(), "x"), -1);
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_EQ(::pwrite(fd.get(), "abc", 3, end - 2), 2) << "a write over the end is short";
    EXPECT_EQ(::lseek(fd.get(), end - 2, SEEK_SET), end - 2);
    EXPECT_EQ(read_text(fd.get(), 100), "ab");

    EXPECT_EQ(::fsync(fd.get()), -1) << "MTD devices have none";
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(write_text(open_device(O_WRONLY | O_DSYNC).get(), "hell"), 4);
    EXPECT_EQ(write_text(open_device(O_RDONLY).get(), "x"), -1);
    EXPECT_EQ(errno, EBADF);
    std::array<std::uint8_t, device_size> all{};
    EXPECT_EQ(::pread(fd.get(), all.data(), all.size(), 0), end) << "the whole device in one read";
    EXPECT_TRUE(std::ranges::equal(all, flash.content()));
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
    EXPECT_THAT(run({"mtd_debug", "info", FlashDevice::path}).output, HasSubstr("mtd.erasesize = 16384 (16K)"));
    EXPECT_EQ(run({"mtd_debug", "erase", FlashDevice::path, "0", "16384"}).status, 0);
    EXPECT_EQ(flash.content()[0], 0xFF);
    EXPECT_EQ(run({"flashcp", "/etc/passwd", FlashDevice::path}).status, 0) << "it erases, writes and verifies";
}

TEST(LabFlash, ProgrammingClearsBitsAndErasingSetsThemByBlock)
{
    FlashDevice flash;
    const Descriptor fd = open_device(O_RDWR);
    const std::array<char, 2> first{'\x0F', '\x33'};
    const std::array<char, 2> second{'\x3C', '\x55'};
    ASSERT_EQ(::pwrite(fd.get(), first.data(), 2, block_size - 1), 2);
    ASSERT_EQ(::pwrite(fd.get(), second.data(), 2, block_size - 1), 2);
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
        EXPECT_EQ(erase(fd.get(), start, length), -1);
        EXPECT_EQ(errno, EINVAL);
    }
    EXPECT_EQ(erase(open_device(O_RDONLY).get(), 0, block_size), -1);
    EXPECT_EQ(errno, EPERM);
    erase_info_user64 wide{0, device_size};
    EXPECT_EQ(::ioctl(fd.get(), MEMERASE64, &wide), 0);
    EXPECT_THAT(flash.copy(), Each(0xFF));
    int modes = 0;
    EXPECT_EQ(::ioctl(fd.get(), MEMGETOOBSEL, &modes), -1);
    EXPECT_EQ(errno, ENOTTY);
}

TEST(LabFlash, FaultsHitOnceAndWhereAsked)
{
    FlashDevice flash;
    const Descriptor fd = open_device(O_RDWR);
    const std::string zeros(3 * page_size, '\0');
    ASSERT_EQ(::pwrite(fd.get(), zeros.data(), 1, block_size), 1);

    flash.fail_erase(2);
    EXPECT_EQ(erase(fd.get(), 0, block_size), 0);
    EXPECT_EQ(erase(fd.get(), block_size, block_size), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(flash.content()[block_size], 0) << "a failed erase changes nothing";
    EXPECT_EQ(erase(fd.get(), block_size, block_size), 0);

    flash.fail_program(2, true);
    EXPECT_EQ(::write(fd.get(), zeros.data(), zeros.size()), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(std::ranges::count(flash.content(), 0), page_size + page_size / 2);
    flash.fail_program(1);
    EXPECT_EQ(::write(fd.get(), zeros.data(), zeros.size()), -1);
    EXPECT_EQ(::write(fd.get(), zeros.data(), zeros.size()), static_cast<ssize_t>(zeros.size()));

    flash.rot(device_size - 1, 7);
    char byte = 0;
    ASSERT_EQ(::pread(fd.get(), &byte, 1, device_size - 1), 1);
    EXPECT_EQ(byte, 0x7F);
    EXPECT_EQ(flash.state().erases, 3U);
    EXPECT_EQ(flash.state().programs, 1U + 2U + 1U + 3U);
}

TEST(LabFlash, WithoutPowerNothingWorksAndNothingChanges)
{
    FlashDevice flash;
    const Descriptor fd = open_device(O_RDWR);
    ASSERT_EQ(write_text(fd.get(), "kept"), 4);
    flash.cut_after(1);
    EXPECT_EQ(write_text(fd.get(), "last"), 4);
    EXPECT_EQ(write_text(fd.get(), "lost"), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_FALSE(flash.powered());

    char byte = 0;
    mtd_info_user info{};
    EXPECT_EQ(::pread(fd.get(), &byte, 1, 0), -1);
    EXPECT_EQ(::ioctl(fd.get(), MEMGETINFO, &info), -1);
    EXPECT_EQ(erase(fd.get(), 0, block_size), -1);
    EXPECT_FALSE(open_device(O_RDONLY));
    EXPECT_EQ(errno, EIO);

    flash.power_on();
    EXPECT_EQ(read_text(open_device(O_RDONLY).get(), 9), "keptlast\xFF");
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
        const std::vector<std::uint8_t> image(device_size, 0xF0);
        const bool written = ::write(fd.get(), image.data(), image.size()) == static_cast<ssize_t>(device_size);
        std::ofstream{"/tmp/after"} << "the job went on\n";
        return written ? 0 : 1;
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

TEST(LabFlash, EveryCutBetweenCallsIsTried)
{
    FlashDevice flash;
    const auto job = [] {
        const Descriptor device = open_device(O_WRONLY);
        if (erase(device.get(), 0, block_size) != 0 || write_text(device.get(), "new") != 3) {
            return 1;
        }
        std::puts("output is no storage");
        const Descriptor file{::open("/mnt/flash/scratch", O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600)};
        const bool written = write_text(file.get(), "new") == 3;
        return written && ::rename("/mnt/flash/scratch", "/mnt/flash/file") == 0 &&
                       std::system("rm /mnt/flash/file") == 0
                   ? 0
                   : 1;
    };
    // What is there after each cut: the device's first byte, and the files.
    std::vector<std::string> seen;
    for (unsigned after = 0;; ++after) {
        flash.restore(std::vector<std::uint8_t>(device_size, 'o'));
        for (const char *name : {"/mnt/flash/scratch", "/mnt/flash/file"}) {
            std::filesystem::remove(name);
        }
        const CutRun done = run_and_cut(flash, CutAt::call, after, job);
        std::string state(1, flash.content()[0] == 0xFF ? 'E' : static_cast<char>(flash.content()[0]));
        for (const auto &[name, sign] : {std::pair{"/mnt/flash/scratch", 's'}, {"/mnt/flash/file", 'f'}}) {
            std::error_code missing;
            const auto size = std::filesystem::file_size(name, missing);
            state += missing ? "" : std::string(1, sign) + std::to_string(size);
        }
        if (seen.empty() || seen.back() != state) {
            seen.push_back(state);
        }
        if (!done.cut) {
            EXPECT_EQ(done.status, 0);
            break;
        }
    }
    if (flash.state().mechanism == switchlab::FlashMechanism::fuse) {
        EXPECT_EQ(seen, (std::vector<std::string>{"o", "E", "n", "ns0", "ns3", "nf3", "n"}));
    } else { // here the device is no matter of system calls: CutAt::operation finds those points
        EXPECT_EQ(seen, (std::vector<std::string>{"n", "ns0", "ns3", "nf3", "n"}));
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
