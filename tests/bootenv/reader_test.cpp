// SPDX-License-Identifier: Apache-2.0
// The image against a reader and writer that others made for boot loaders: Debian's libubootenv-tool. It takes the CRC
// word in the order of the machine it runs on, so on a little-endian one the word is turned around in between.
#include "bootenv/boot.h"
#include "support/command.h"
#include "support/file_text.h"

#include <algorithm>
#include <bit>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <switchcfg/bootenv.h>

namespace switchcfg::testing {
namespace {

using ::testing::Contains;
using ::testing::Not;

constexpr char image_path[] = "/tmp/image";

Image turned_around(Image image)
{
    if constexpr (std::endian::native == std::endian::little) {
        std::reverse(image.begin(), image.begin() + 4);
    }
    return image;
}

class Reader : public ::testing::Test {
  protected:
    void SetUp() override
    {
        if (run_command("command -v fw_printenv && command -v fw_setenv").status != 0) {
            GTEST_SKIP() << "fw_printenv and fw_setenv are not here: install libubootenv-tool";
        }
        write_file("/tmp/fw_env.config", std::string{image_path} + " 0x0 0x10000\n");
        std::filesystem::create_directories("/mnt/flash/bkp");
    }
    static void hand_over()
    {
        const Image image = turned_around(flash().copy());
        write_file(image_path, {image.begin(), image.end()});
    }
    static void take_back()
    {
        const std::string bytes = file_text(image_path);
        fill_flash(turned_around({bytes.begin(), bytes.end()}));
    }
    static Outcome tool(const std::string &command) { return run_command(command + " -c /tmp/fw_env.config"); }
};

TEST_F(Reader, ReadsWhatWeSave)
{
    fill_flash(image_of({"HV=0", "bootcmd=bootm 0xe8000000"}));
    start_switch();
    ASSERT_EQ(bootenv_set("bootargs", "root=/dev/mtd2 rw"), 0);
    ASSERT_EQ(bootenv_write_fbmp(0, 5), 0);
    hand_over();
    const Outcome printed = tool("fw_printenv");
    EXPECT_EQ(printed.status, 0) << printed.err;
    EXPECT_THAT(lines_of(printed.out),
        ::testing::UnorderedElementsAre("HV=0", "bootcmd=bootm 0xe8000000", "bootargs=root=/dev/mtd2 rw", "FBMP=5"));

    // The same up to the last byte that an environment can have.
    const std::string fill(
        BOOTENV_VARIABLES_SIZE -
            std::string{"HV=0 bootcmd=bootm 0xe8000000 bootargs=root=/dev/mtd2 rw FBMP=5 x= "}.size(),
        'f');
    ASSERT_EQ(bootenv_set("x", fill.c_str()), 0);
    ASSERT_EQ(bootenv_set("y", ""), -1);
    ASSERT_EQ(bootenv_grava(), 0);
    hand_over();
    EXPECT_THAT(lines_of(tool("fw_printenv").out), Contains("x=" + fill));

    flash().rot(100, 0);
    hand_over();
    EXPECT_NE(tool("fw_printenv").status, 0) << "so the reader does look at the CRC";
}

TEST_F(Reader, WritesWhatWeRead)
{
    fill_flash(image_of({"HV=0", "serverip=10.0.0.1"}));
    hand_over();
    ASSERT_EQ(tool("fw_setenv FBMP 1").status, 0);
    ASSERT_EQ(tool("fw_setenv bootargs 'a=b c'").status, 0);
    take_back();
    EXPECT_TRUE(checksum_holds(flash().copy()));
    ASSERT_EQ(start_switch(), 0);
    EXPECT_THAT(
        environment(), ::testing::UnorderedElementsAre("HV=0", "serverip=10.0.0.1", "FBMP=1", "bootargs=a=b c"));

    // It leaves old bytes behind the end when an environment shrinks. They count as texts here, and go with the next
    // change unless they look like a variable.
    ASSERT_EQ(tool("fw_setenv serverip").status, 0);
    take_back();
    ASSERT_EQ(start_switch(), 0);
    EXPECT_THAT(environment(), ::testing::IsSupersetOf({"HV=0", "FBMP=1", "bootargs=a=b c"}));
    EXPECT_THAT(environment(), Not(Contains("serverip=10.0.0.1")));
    ASSERT_EQ(bootenv_grava(), 0);
}

} // namespace
} // namespace switchcfg::testing
