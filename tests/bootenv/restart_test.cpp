// SPDX-License-Identifier: Apache-2.0
// The restart after a restore with the real system() and the real shell, on programs that only take note.
#include "bootenv/boot.h"
#include "support/file_text.h"
#include "support/overlay.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <switchcfg/bootenv.h>

namespace switchcfg::testing {
namespace {

namespace fs = std::filesystem;

void take_note_instead_of(const fs::path &program)
{
    fs::remove(program);
    std::ofstream{program} << "#!/bin/sh\necho " << program.filename().string() << " \"$@\" >>/tmp/notes\n"
                           << "echo noise; echo noise >&2\n";
    fs::permissions(program, fs::perms::owner_all);
}

TEST(Restart, RunsUmountAndShutdown)
{
    const fs::path folder = fs::canonical("/sbin");
    if (const std::string why = make_folder_private(folder); !why.empty()) {
        GTEST_SKIP() << "/sbin/shutdown cannot be replaced in this lab: " << why;
    }
    take_note_instead_of(folder / "shutdown");
    ASSERT_EQ(file_text((folder / "shutdown").string()).substr(0, 9), "#!/bin/sh") << "never with the real one";
    fs::create_directory("/tmp/programs");
    take_note_instead_of("/tmp/programs/umount");
    ::setenv("PATH", ("/tmp/programs:" + std::string{std::getenv("PATH")}).c_str(), 1);

    make_backup(image_of({"HV=0"}));
    start_switch();
    EXPECT_EQ(bootenv_backup(), -1);
    EXPECT_EQ(file_text("/tmp/notes"), "umount /mnt/flash\nshutdown -r now\n");
}

} // namespace
} // namespace switchcfg::testing
