// SPDX-License-Identifier: Apache-2.0
// A connection between two units that carries changes of the configuration. Never waits: what the other end does not
// take at once is kept, up to a bound.
#ifndef SWITCHCFG_LAB_STACKD_LINK_H
#define SWITCHCFG_LAB_STACKD_LINK_H

#include "lab/stackd/replica.h"

#include "util/owned.h"

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace switchlab::stackd {

enum class Kind : std::uint32_t { change = 1, snapshot_begins, snapshot_ends };

// On the wire: 28 bytes of head, numbers in big-endian order, then the bytes.
struct Frame {
    Kind kind = Kind::change;
    std::uint32_t region = 0;
    std::uint32_t offset = 0;
    std::uint64_t generation = 0;
    Bytes bytes{};
};

class Link {
  public:
    explicit Link(switchcfg::Descriptor socket) : socket_(std::move(socket)) {}

    int socket() const { return socket_.get(); }
    bool alive() const { return static_cast<bool>(socket_); }
    bool has_more_to_say() const { return sent_ < out_.size(); }

    void send(const Frame &frame);
    void flush();
    // Takes in what has arrived. The link is dead afterwards when the other end has closed it, sent what is no frame,
    // or `take` says so by false.
    void receive(const std::function<bool(const Frame &)> &take);

  private:
    bool take_frames(const std::function<bool(const Frame &)> &take);

    switchcfg::Descriptor socket_;
    std::vector<std::uint8_t> out_;
    std::size_t sent_ = 0;
    std::vector<std::uint8_t> in_;
};

} // namespace switchlab::stackd

#endif
