// SPDX-License-Identifier: Apache-2.0
// A configuration value as this system keeps it, for the peers to stand beside.
#pragma once

#include "bench/support/compare.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace switchcfg::bench {

// A folder of its own, gone again when it is destroyed.
class Folder {
  public:
    enum class Where { memory, disk }; // a tmpfs, as the switch's own; the file system this program was started on
    explicit Folder(Where where);
    ~Folder();
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;
    const std::string &path() const { return path_; }

  private:
    std::string path_;
};

// One value of the running configuration. Its writers take the configuration's lock, as writers of more than a word do.
class OwnValue {
  public:
    explicit OwnValue(const std::string &folder);
    ~OwnValue();
    OwnValue(const OwnValue &) = delete;
    OwnValue &operator=(const OwnValue &) = delete;
    bool read();
    bool write();
    bool write_durably(); // waits until the page is in its file

  private:
    std::uint8_t *region_;
    int lock_;
    std::uint32_t next_ = 0;
};

} // namespace switchcfg::bench
