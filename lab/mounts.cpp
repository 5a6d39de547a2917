// SPDX-License-Identifier: Apache-2.0
#include "lab/mounts.h"

#include "lab/refusal.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace switchlab {

void make_mounts_private()
{
    if (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0) {
        return;
    }
    if (errno != EINVAL) {
        throw refusal("mount MS_PRIVATE on", "/");
    }
    // The root is a folder (a chroot), not a mount, and only mounts can be private. So it becomes one, and the way
    // through
    // ".." leads onto it. The current folder is looked up again behind it.
    std::string here(4096, '\0');
    const bool known = ::getcwd(here.data(), here.size()) != nullptr;
    if (::mount("/", "/", nullptr, MS_BIND | MS_REC, nullptr) != 0) {
        throw refusal("bind mount on / of", "/");
    }
    if (::chdir("/..") != 0 || ::chroot(".") != 0) {
        throw refusal("chroot", "/");
    }
    if (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
        throw refusal("mount MS_PRIVATE on", "/");
    }
    if (known && ::chdir(here.c_str()) != 0) {
        throw refusal("chdir", here);
    }
}

void mount_tmpfs(const char *place, const char *options)
{
    if (::mount("tmpfs", place, "tmpfs", MS_NOSUID, options) != 0) {
        throw refusal("mount tmpfs on", place);
    }
}

void bind_mount(const char *what, const char *place)
{
    if (::mount(what, place, nullptr, MS_BIND, nullptr) != 0) {
        throw refusal("bind mount on " + std::string{place} + " of", what);
    }
}

void move_mount_point(const char *from, const char *to)
{
    if (::mount(from, to, nullptr, MS_MOVE, nullptr) != 0) {
        throw refusal("move mount to " + std::string{to} + " of", from);
    }
}

void make_folder(const std::string &path, mode_t mode)
{
    if (::mkdir(path.c_str(), mode) != 0 && errno != EEXIST) {
        throw refusal("mkdir", path);
    }
}

void make_folders(const std::string &path, mode_t mode)
{
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1)) {
        make_folder(path.substr(0, slash), mode);
    }
    make_folder(path, mode);
}

void make_file(const std::string &path, mode_t mode)
{
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, mode);
    if (fd < 0) {
        throw refusal("create", path);
    }
    ::close(fd);
}

} // namespace switchlab
