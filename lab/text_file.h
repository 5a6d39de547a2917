// SPDX-License-Identifier: Apache-2.0
#ifndef SWITCHCFG_LAB_TEXT_FILE_H
#define SWITCHCFG_LAB_TEXT_FILE_H

#include <string>
#include <string_view>
#include <sys/types.h>

namespace switchlab {

// Makes the file anew with this content; throws a Refusal.
void write_file(const std::string &path, std::string_view text, mode_t mode = 0644);
// Writes into a file that is there, with one call, as the kernel's own files want it; throws a Refusal.
void write_kernel_file(const char *path, std::string_view text);
// Empty when it cannot be read.
std::string read_file(const std::string &path);

} // namespace switchlab

#endif
