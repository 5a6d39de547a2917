// SPDX-License-Identifier: Apache-2.0
// Sees every operation that this process makes on the flash partition and on the flash file system, and can end the
// process at any of them, as a power failure would. It stands between the library and libc: the program that links
// this file has its own open(), write() and so on, which count and pass on.
#ifndef SWITCHCFG_TESTS_BOOTENV_OPERATIONS_H
#define SWITCHCFG_TESTS_BOOTENV_OPERATIONS_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace switchcfg::testing {

struct Operation {
    std::string name;  // "write /dev/flash_env"
    std::size_t bytes; // of a write, else 0
    bool operator==(const Operation &) const = default;
};

// The process ends after operation `after` (counted from 0), with status cut_status. A write stops after `bytes` bytes.
struct Cut {
    std::size_t after;
    std::size_t bytes;
};
inline constexpr int cut_status = 77;

// Each forgets what was seen before.
void watch_operations(std::function<void(const Operation &)> then = {}); // `then` is called after each
void watch_operations(Cut cut);
std::vector<Operation> stop_watching();

} // namespace switchcfg::testing

#endif
