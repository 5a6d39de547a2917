// SPDX-License-Identifier: Apache-2.0
#include "lab/sandbox/etc_folder.h"

#include "lab/mounts.h"
#include "lab/refusal.h"
#include "util/owned.h"

#include <fcntl.h>
#include <filesystem>
#include <string_view>
#include <sys/mount.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

namespace switchlab {
namespace {

namespace fs = std::filesystem;
using switchcfg::Descriptor;

// In a user namespace most files belong to users that have no name in it, and overlayfs cannot copy those up.
bool owners_are_strangers()
{
    const Descriptor fd{::open("/proc/self/uid_map", O_RDONLY | O_CLOEXEC)};
    char map[128];
    const ssize_t length = fd ? ::read(fd.get(), map, sizeof map) : 0;
    constexpr std::string_view every_user = "4294967295";
    return length > 0 &&
           std::string_view{map, static_cast<std::size_t>(length)}.find(every_user) == std::string_view::npos;
}

// What this user may not read stays behind: the lab could not have read it either.
void copy_one_file(const fs::path &from, const fs::path &to)
{
    const Descriptor in{::open(from.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)};
    struct stat about {};
    if (!in || ::fstat(in.get(), &about) != 0 || !S_ISREG(about.st_mode)) {
        return;
    }
    const Descriptor out{::open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, about.st_mode & 07777)};
    if (!out) {
        throw refusal("create", to.string());
    }
    ssize_t sent = 0;
    do {
        sent = ::sendfile(out.get(), in.get(), nullptr, 1 << 20);
    } while (sent > 0);
    if (sent < 0) {
        throw refusal("copy", from.string());
    }
    (void)!::fchown(out.get(), about.st_uid, about.st_gid); // an owner the lab cannot name becomes the lab's root
}

// The files directly in /etc, writable by whoever runs the lab; those in its folders stay the machine's.
void copy_top_files(const fs::path &from, const fs::path &to)
{
    std::error_code ignored;
    for (const fs::directory_entry &entry : fs::directory_iterator(from, ignored)) {
        if (entry.symlink_status(ignored).type() == fs::file_type::regular) {
            copy_one_file(entry.path(), to / entry.path().filename());
        }
    }
}

void copy_tree(const fs::path &from, const fs::path &to)
{
    std::error_code ignored;
    for (const fs::directory_entry &entry : fs::directory_iterator(from, ignored)) {
        const fs::path target = to / entry.path().filename();
        const fs::file_type type = entry.symlink_status(ignored).type();
        if (type == fs::file_type::regular) {
            copy_one_file(entry.path(), target);
        } else if (type == fs::file_type::symlink) {
            fs::copy_symlink(entry.path(), target, ignored);
        } else if (type == fs::file_type::directory) {
            make_folder(target.string(), 0755);
            copy_tree(entry.path(), target);
        }
    }
}

} // namespace

void mount_etc_folder(const std::string &scaffold)
{
    const bool strangers = owners_are_strangers();
    const std::string upper = scaffold + "/etc";
    const std::string work = scaffold + "/etc-work";
    make_folder(upper, 0755);
    make_folder(work, 0755);
    if (strangers) {
        copy_top_files("/etc", upper);
    }
    // "userxattr" is what a user namespace may use for the marks that overlayfs keeps on folders.
    const std::string options =
        "lowerdir=/etc,upperdir=" + upper + ",workdir=" + work + (strangers ? ",userxattr" : "");
    if (::mount("overlay", "/etc", "overlay", MS_NOSUID | MS_NODEV, options.c_str()) == 0) {
        return;
    }
    // No overlayfs here, or too many of them on top of each other already.
    const std::string copy = scaffold + "/etc-copy";
    make_folder(copy, 0755);
    mount_tmpfs(copy.c_str(), "mode=755");
    copy_tree("/etc", copy);
    move_mount_point(copy.c_str(), "/etc");
}

} // namespace switchlab
