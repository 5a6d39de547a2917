// SPDX-License-Identifier: Apache-2.0
// Programs of the test's own in a folder of the machine, seen by this lab only.
#ifndef SWITCHCFG_TESTS_SUPPORT_OVERLAY_H
#define SWITCHCFG_TESTS_SUPPORT_OVERLAY_H

#include <string>

namespace switchcfg::testing {

// From now on what is written to the folder (a real path, no link) stays in the lab. An empty text, or why it cannot
// be.
std::string make_folder_private(const std::string &folder);

} // namespace switchcfg::testing

#endif
