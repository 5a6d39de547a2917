// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/process.h>

#include "support/file_text.h"
#include "support/overlay.h"
#include "support/peer.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>

namespace {

using namespace switchcfg::testing;

TEST(Reboot, RunsTheProgramAndNeverReturns)
{
    const std::string folder = std::filesystem::canonical("/sbin").string();
    if (const std::string why = make_folder_private(folder); !why.empty()) {
        GTEST_SKIP() << why;
    }
    // Never the machine's own: its name is taken away first.
    std::filesystem::remove("/sbin/reboot");
    ASSERT_FALSE(std::filesystem::exists("/sbin/reboot"));
    ASSERT_EQ(::mkfifo("/tmp/rebooting", 0600), 0);
    std::ofstream{"/sbin/reboot"} << "#!/bin/sh\necho $# > /tmp/rebooting\n";
    ASSERT_EQ(::chmod("/sbin/reboot", 0755), 0);
    Peer daemon{[](Link &link) {
        ::setenv("SWITCHCFG_TRACE", "/tmp/trace", 1);
        reboot();
        link.tell(); // only if it returns, which ends the wait below
    }};
    EXPECT_EQ(file_text("/tmp/rebooting"), "0\n");
    EXPECT_NE(file_text("/tmp/trace").find(" systemAPI:"), std::string::npos);
    EXPECT_TRUE(file_text("/tmp/trace").ends_with(" reboot(): Rebooting...\n"));
    EXPECT_EQ(pid_exists(daemon.pid()), 1);
}

} // namespace
