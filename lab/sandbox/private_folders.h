// SPDX-License-Identifier: Apache-2.0
// The folders that every lab has to itself, and what an empty switch has in them.
#ifndef SWITCHCFG_LAB_SANDBOX_PRIVATE_FOLDERS_H
#define SWITCHCFG_LAB_SANDBOX_PRIVATE_FOLDERS_H

#include <array>
#include <string_view>

namespace switchlab {

inline constexpr std::array private_roots{"/var", "/tmp", "/mnt", "/etc", "/dev"};

// True for a private root, a folder made in it, and whatever lies above one.
bool is_made_by_lab(std::string_view path);

// Mounts and fills them all, and a /proc of the lab's own; umask must be 0.
void mount_private_folders();

} // namespace switchlab

#endif
