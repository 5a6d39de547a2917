// SPDX-License-Identifier: Apache-2.0
// Cuts the power of a job at a chosen point, so that a loop can try every one.
//
//     for (unsigned after = 0;; ++after) {
//         prepare();
//         const CutRun run = run_and_cut(flash, CutAt::operation, after, save);
//         ... start again and check what is left ...
//         if (!run.cut) break;
//     }
#ifndef SWITCHCFG_TESTS_SUPPORT_POWER_CUT_H
#define SWITCHCFG_TESTS_SUPPORT_POWER_CUT_H

#include "support/flash_device.h"

#include <functional>

namespace switchcfg::testing {

enum class CutAt {
    operation,      // before an operation of the flash device: the erase of a block, the programming of a page
    half_operation, // in the middle of one
};

struct CutRun {
    bool cut;   // false: the job ended before the point was reached
    int status; // then, the job's result as a process's exit status
};

// Runs `job` in a child process, lets `after` operations happen and then cuts the power: nothing that the job
// or a process of its own does to storage afterwards happens. On return they are gone and the power is on again.
CutRun run_and_cut(FlashDevice &flash, CutAt where, unsigned after, const std::function<int()> &job);

} // namespace switchcfg::testing

#endif
