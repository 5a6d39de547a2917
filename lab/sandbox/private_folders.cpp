// SPDX-License-Identifier: Apache-2.0
#include "lab/sandbox/private_folders.h"

#include "lab/mounts.h"
#include "lab/refusal.h"
#include "lab/sandbox/device_folder.h"
#include "lab/sandbox/etc_folder.h"
#include "lab/sandbox/power_programs.h"

#include <algorithm>
#include <string>
#include <sys/mount.h>

namespace switchlab {
namespace {

struct Folder {
    const char *path;
    mode_t mode;
};

// What the switch's start-up scripts leave behind. /mnt/flash/bkp is missing: whoever saves the first backup makes it.
constexpr std::array skeleton{
    Folder{"/var/lib", 0755},
    Folder{"/var/log", 0755},
    Folder{"/var/run", 0755},
    Folder{"/var/run/cfg", 0755},
    Folder{"/var/tmp", 01777},
    Folder{"/mnt/flash", 0755},
    Folder{"/mnt/flash/log", 0755},
};

constexpr std::array device_folders{"/dev/shm", "/dev/pts", "/dev/net", "/dev/fd"};

} // namespace

bool is_made_by_lab(std::string_view path)
{
    const auto is_or_above = [&](std::string_view made) {
        return path == "/" || made == path || (made.starts_with(path) && made[path.size()] == '/');
    };
    return std::ranges::any_of(private_roots, is_or_above) || std::ranges::any_of(device_folders, is_or_above) ||
           std::ranges::any_of(skeleton, is_or_above, &Folder::path);
}

void mount_private_folders()
{
    // /mnt serves as scaffold: what is put together there is moved to its place before /mnt gets its final content.
    mount_tmpfs("/mnt", "mode=755");
    mount_etc_folder("/mnt");
    mount_device_folder("/mnt");
    if (::umount2("/mnt", MNT_DETACH) != 0) {
        throw refusal("umount", "/mnt");
    }
    mount_tmpfs("/var", "mode=755");
    mount_tmpfs("/tmp", "mode=1777");
    mount_tmpfs("/mnt", "mode=755");
    for (const Folder &folder : skeleton) {
        make_folder(folder.path, folder.mode);
    }
    replace_power_programs();
    if (::mount("proc", "/proc", "proc", MS_NOSUID | MS_NODEV | MS_NOEXEC, nullptr) != 0) {
        throw refusal("mount proc on", "/proc");
    }
}

} // namespace switchlab
