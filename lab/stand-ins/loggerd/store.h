// SPDX-License-Identifier: Apache-2.0
// One named destination of the logging daemon: lines of text up to a limit, in memory or in a file.
#ifndef SWITCHCFG_LAB_STAND_INS_LOGGERD_STORE_H
#define SWITCHCFG_LAB_STAND_INS_LOGGERD_STORE_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace switchlab::loggerd {

class Store {
  public:
    // Without a path the lines are kept in memory.
    Store(std::string name, std::size_t limit, std::string path = {});

    const std::string &name() const { return name_; }
    void add(std::string_view line); // the oldest lines make room
    std::optional<std::string> text() const;
    bool clear();

  private:
    void add_to_file(std::string_view line);

    std::string name_;
    std::size_t limit_;
    std::string path_;
    std::string lines_; // of a store in memory
};

} // namespace switchlab::loggerd

#endif
