// SPDX-License-Identifier: Apache-2.0
#include "lab/sandbox/kept_places.h"

#include "lab/mounts.h"
#include "lab/refusal.h"
#include "lab/sandbox/private_folders.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/mount.h>
#include <sys/stat.h>

namespace switchlab {
namespace {

namespace fs = std::filesystem;

bool is_below(const std::string &path, const std::string &folder)
{
    return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

std::string plain(const fs::path &path)
{
    std::string text = fs::absolute(path).lexically_normal().string();
    while (text.size() > 1 && text.back() == '/') {
        text.pop_back();
    }
    return text;
}

} // namespace

void KeptPlaces::keep(const std::string &path)
{
    std::error_code why;
    const std::string real = fs::canonical(path, why).string();
    if (why) {
        errno = why.value();
        throw refusal("--keep", path, "name a folder that exists");
    }
    for (const std::string &name : {plain(path), real}) {
        if (is_made_by_lab(name)) {
            errno = EINVAL;
            throw refusal("--keep", path, "every lab has its own: name a folder below it");
        }
        add(name);
    }
}

bool KeptPlaces::keep_if_possible(const std::string &path)
{
    std::error_code why;
    const std::string real = fs::canonical(path, why).string();
    const std::string name = plain(path);
    if (why || is_made_by_lab(name) || is_made_by_lab(real)) {
        return false;
    }
    // What lies below /etc is there anyway, and stays copy-on-write.
    for (const std::string &place : {name, real}) {
        if (!is_below(place, "/etc")) {
            add(place);
        }
    }
    return true;
}

void KeptPlaces::add(const std::string &path)
{
    const auto covers = [&](const std::string &folder) { return path == folder || is_below(path, folder); };
    const bool hidden = std::ranges::any_of(private_roots, [&](const char *root) { return is_below(path, root); });
    if (!hidden || std::ranges::any_of(places_, covers, &Place::path)) {
        return;
    }
    std::erase_if(places_, [&](const Place &place) { return is_below(place.path, path); });
    places_.push_back({path});
}

void KeptPlaces::hold()
{
    for (Place &place : places_) {
        place.tree.reset(::open_tree(AT_FDCWD, place.path.c_str(), OPEN_TREE_CLONE | OPEN_TREE_CLOEXEC | AT_RECURSIVE));
        struct stat about {};
        if (!place.tree || ::fstat(place.tree.get(), &about) != 0) {
            throw refusal("open_tree", place.path);
        }
        place.folder = S_ISDIR(about.st_mode);
    }
}

void KeptPlaces::put_back() const
{
    for (const Place &place : places_) {
        if (place.folder) {
            make_folders(place.path, 0755);
        } else {
            make_folders(place.path.substr(0, place.path.rfind('/')), 0755);
            make_file(place.path, 0644);
        }
        if (::move_mount(place.tree.get(), "", AT_FDCWD, place.path.c_str(), MOVE_MOUNT_F_EMPTY_PATH) != 0) {
            throw refusal("move_mount", place.path);
        }
    }
}

} // namespace switchlab
