// SPDX-License-Identifier: Apache-2.0
// /etc: the machine's own, on which the lab's changes lie like a transparency.
#ifndef SWITCHCFG_LAB_SANDBOX_ETC_FOLDER_H
#define SWITCHCFG_LAB_SANDBOX_ETC_FOLDER_H

#include <string>

namespace switchlab {

// `scaffold` is a folder of a private tmpfs that may disappear afterwards.
void mount_etc_folder(const std::string &scaffold);

} // namespace switchlab

#endif
