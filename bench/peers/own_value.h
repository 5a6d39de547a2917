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

enum class Job { read, write, durable_write };

// A row of ours beside a peer, which is made of a folder and whether its writes reach the disk, and has runs(), read()
// and write().
template<typename Peer>
void beside_own_value(benchmark::State &state, const char *name, Job job)
{
    const bool durable = job == Job::durable_write;
    const Folder folder{durable ? Folder::Where::disk : Folder::Where::memory};
    Peer peer{folder.path(), durable};
    OwnValue own{folder.path()};
    if (!peer.runs() || !peer.write()) {
        state.SkipWithError("the peer does not start");
        return;
    }
    const auto row = [&](const char *title, auto theirs, auto ours) {
        compare(state, {title, name, 0, Row::Clock::wall}, theirs, ours);
    };
    switch (job) {
    case Job::read:
        row(
            "configuration value read", [&] { return peer.read(); }, [&] { return own.read(); });
        break;
    case Job::write:
        row(
            "configuration value written", [&] { return peer.write(); }, [&] { return own.write(); });
        break;
    case Job::durable_write:
        row(
            "configuration value written to disk", [&] { return peer.write(); }, [&] { return own.write_durably(); });
        break;
    }
}

} // namespace switchcfg::bench
