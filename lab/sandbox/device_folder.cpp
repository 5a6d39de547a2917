// SPDX-License-Identifier: Apache-2.0
#include "lab/sandbox/device_folder.h"

#include "lab/mounts.h"
#include "lab/refusal.h"

#include <array>
#include <cerrno>
#include <sys/mount.h>
#include <unistd.h>

namespace switchlab {
namespace {

// The machine's own nodes are bound, since a user namespace may not make nodes.
constexpr std::array needed_nodes{"null", "zero", "full", "random", "urandom", "tty"};
constexpr std::array optional_nodes{"fuse", "cuse", "net/tun"};

struct Link {
    const char *name;
    const char *target;
};
constexpr std::array links{
    Link{"fd", "/proc/self/fd"},
    Link{"stdin", "/proc/self/fd/0"},
    Link{"stdout", "/proc/self/fd/1"},
    Link{"stderr", "/proc/self/fd/2"},
    Link{"ptmx", "pts/ptmx"},
};

void bind_node(const std::string &folder, const char *name)
{
    const std::string place = folder + "/" + name;
    make_file(place, 0666);
    bind_mount((std::string{"/dev/"} + name).c_str(), place.c_str());
}

} // namespace

void mount_device_folder(const std::string &scaffold)
{
    const std::string folder = scaffold + "/dev";
    make_folder(folder, 0755);
    mount_tmpfs(folder.c_str(), "mode=755");
    make_folder(folder + "/shm", 01777);
    make_folder(folder + "/pts", 0755);
    make_folder(folder + "/net", 0755);
    for (const char *name : needed_nodes) {
        bind_node(folder, name);
    }
    for (const char *name : optional_nodes) {
        if (::access((std::string{"/dev/"} + name).c_str(), F_OK) == 0) {
            bind_node(folder, name);
        }
    }
    for (const Link &link : links) {
        if (::symlink(link.target, (folder + "/" + link.name).c_str()) != 0) {
            throw refusal("symlink", folder + "/" + link.name);
        }
    }
    if (::mount("devpts", (folder + "/pts").c_str(), "devpts", MS_NOSUID | MS_NOEXEC,
            "newinstance,ptmxmode=0666,mode=620") != 0) {
        throw refusal("mount devpts on", "/dev/pts");
    }
    move_mount_point(folder.c_str(), "/dev");
}

} // namespace switchlab
