// SPDX-License-Identifier: Apache-2.0
// Programs of the test's own in a folder of the machine, seen by this lab only.
#ifndef SWITCHCFG_TESTS_SUPPORT_OVERLAY_H
#define SWITCHCFG_TESTS_SUPPORT_OVERLAY_H

#include <sys/mount.h>

#include "support/test.h"

namespace switchcfg::testing {

// From now on what is written to the folder (a real path, no link) stays in the lab. An empty text, or why it cannot
// be.
inline std::string make_folder_private(const std::string &folder)
{
    const std::string place = "/tmp/overlay" + folder;
    std::filesystem::create_directories(place + "/upper");
    std::filesystem::create_directories(place + "/work");
    const std::string options = "lowerdir=" + folder + ",upperdir=" + place + "/upper,workdir=" + place + "/work";
    const bool mounted = ::mount("overlay", folder.c_str(), "overlay", 0, options.c_str()) == 0;
    return mounted ? "" : "an overlay over " + folder + ": " + std::strerror(errno);
}

} // namespace switchcfg::testing

#endif
