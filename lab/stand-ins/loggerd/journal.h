// SPDX-License-Identifier: Apache-2.0
// The four stores of the logging daemon and which message goes into which. Shared by the thread that takes messages and
// the one that answers commands.
#ifndef SWITCHCFG_LAB_STAND_INS_LOGGERD_JOURNAL_H
#define SWITCHCFG_LAB_STAND_INS_LOGGERD_JOURNAL_H

#include "lab/stand-ins/loggerd/store.h"

#include <switchcfg/log.h>

#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace switchlab::loggerd {

struct Limits {
    std::size_t ram = std::size_t{512} * 1024;
    std::size_t flash = std::size_t{1024} * 1024;
    std::string flash_folder = "/mnt/flash/log";
    bool echo = false; // each line on standard output, too
};

class Journal {
  public:
    explicit Journal(const Limits &limits);

    void add(const log_message_header &header, std::string_view text);
    void note(std::string_view what); // the daemon's own remark

    std::vector<std::string> names() const;
    bool has(std::string_view name) const;
    std::optional<std::string> text(std::string_view name) const; // nothing when it cannot be read
    bool clear(std::string_view name);

  private:
    bool echo_;
    mutable std::mutex mutex_;
    std::vector<Store> stores_;
};

} // namespace switchlab::loggerd

#endif
