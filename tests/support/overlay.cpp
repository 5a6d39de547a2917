// SPDX-License-Identifier: Apache-2.0
#include "support/overlay.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sys/mount.h>

namespace switchcfg::testing {

std::string make_folder_private(const std::string &folder)
{
    const std::filesystem::path place = "/tmp/overlay" + folder;
    std::filesystem::create_directories(place / "upper");
    std::filesystem::create_directories(place / "work");
    const std::string options =
        "lowerdir=" + folder + ",upperdir=" + (place / "upper").string() + ",workdir=" + (place / "work").string();
    if (::mount("overlay", folder.c_str(), "overlay", 0, options.c_str()) != 0) {
        return "an overlay over " + folder + ": " + std::strerror(errno);
    }
    return {};
}

} // namespace switchcfg::testing
