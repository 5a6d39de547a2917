// SPDX-License-Identifier: Apache-2.0
// The tables of the lab's CPU monitor, by column identifier.
#ifndef SWITCHLAB_CPUMON_TABLES_H
#define SWITCHLAB_CPUMON_TABLES_H

#include "lab/stand-ins/cpumon/sampler.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace switchlab::cpumon {

struct RequestError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Table {
    struct Column {
        std::string title;
        bool is_text; // to the left
    };
    std::vector<Column> columns;
    std::vector<std::vector<std::string>> rows;
};

// One row per process: by what it used lately when that is asked for, else by its memory when that is, else by PID.
// Throws RequestError for a column that is not known.
Table process_table(const Snapshot &now, const Sampler &sampler, const std::vector<std::uint32_t> &columns);

// One row per processor, or one for the memory and one for the swap space.
Table summary_table(
    const Snapshot &now, const Sampler &sampler, std::uint32_t mode, const std::vector<std::uint32_t> &columns);

// Percent that all processors together are busy.
unsigned busy_percent(const Snapshot &now, const Sampler &sampler);

// The name under which users know a process: that of its daemon's job, else its own.
std::string translated(const std::string &name);

std::string with_decimal(double value); // one place

} // namespace switchlab::cpumon

#endif
