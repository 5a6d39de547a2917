// SPDX-License-Identifier: Apache-2.0
// The few mount operations a lab is made of; each throws a Refusal that names the call and the place.
#ifndef SWITCHCFG_LAB_MOUNTS_H
#define SWITCHCFG_LAB_MOUNTS_H

#include <string>
#include <sys/types.h>

namespace switchlab {

// From here on what is mounted stays in this namespace.
void make_mounts_private();
void mount_tmpfs(const char *place, const char *options);
void bind_mount(const char *what, const char *place);
void move_mount_point(const char *from, const char *to);
void make_folder(const std::string &path, mode_t mode);  // one level; one that exists is fine
void make_folders(const std::string &path, mode_t mode); // with its parents
void make_file(const std::string &path, mode_t mode);    // empty

} // namespace switchlab

#endif
