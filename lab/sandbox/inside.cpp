// SPDX-License-Identifier: Apache-2.0
#include "lab/sandbox/inside.h"

#include "lab/mounts.h"
#include "lab/refusal.h"
#include "lab/sandbox/loopback.h"
#include "lab/sandbox/private_folders.h"
#include "lab/sandbox/programs.h"

#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace switchlab {

namespace {

std::string current_folder()
{
    std::error_code why;
    return std::filesystem::current_path(why).string();
}

} // namespace

Inside::Inside(const std::vector<std::string> &keep) : current_folder_(current_folder())
{
    for (const std::string &folder : keep) {
        kept_.keep(folder);
    }
    if (!current_folder_.empty()) {
        kept_.keep_if_possible(current_folder_);
    }
    keep_program(kept_, own_folder() / "switchlab");
    kept_.keep_if_possible(own_folder().parent_path().string()); // its companions and their libraries
}

void Inside::make()
{
    make_mounts_private();
    kept_.hold();
    const mode_t mask = ::umask(0);
    mount_private_folders();
    kept_.put_back();
    ::umask(mask);
    bring_loopback_up();
    if (current_folder_.empty() || ::chdir(current_folder_.c_str()) != 0) {
        if (::chdir("/") != 0) {
            throw refusal("chdir", "/");
        }
    }
}

} // namespace switchlab
