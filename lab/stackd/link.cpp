// SPDX-License-Identifier: Apache-2.0
#include "lab/stackd/link.h"

#include "util/byte_order.h"

#include <array>
#include <cerrno>
#include <sys/socket.h>

namespace switchlab::stackd {
namespace {

using switchcfg::load_ordered;
using switchcfg::store_ordered;

constexpr std::uint32_t frame_magic = 0x53574346;
constexpr std::size_t head_size = 28;
constexpr std::uint32_t longest = 64 * 1024;
constexpr std::size_t most_waiting = std::size_t{64} * 1024 * 1024; // more than both regions

} // namespace

void Link::send(const Frame &frame)
{
    if (!alive()) {
        return;
    }
    std::array<std::uint8_t, head_size> head{};
    const std::uint32_t words[] = {frame_magic, static_cast<std::uint32_t>(frame.kind), frame.region, frame.offset,
        static_cast<std::uint32_t>(frame.bytes.size()), static_cast<std::uint32_t>(frame.generation >> 32),
        static_cast<std::uint32_t>(frame.generation)};
    for (std::size_t i = 0; i < std::size(words); ++i) {
        store_ordered<std::endian::big>(head.data() + 4 * i, words[i]);
    }
    out_.insert(out_.end(), head.begin(), head.end());
    out_.insert(out_.end(), frame.bytes.begin(), frame.bytes.end());
    if (out_.size() - sent_ > most_waiting) {
        socket_.reset(); // it comes back for a snapshot
    }
}

void Link::flush()
{
    while (alive() && has_more_to_say()) {
        const ssize_t sent = ::send(socket_.get(), out_.data() + sent_, out_.size() - sent_, MSG_NOSIGNAL);
        if (sent >= 0) {
            sent_ += static_cast<std::size_t>(sent);
        } else if (errno == EAGAIN || errno == ENOTCONN) {
            return;
        } else if (errno != EINTR) {
            socket_.reset();
        }
    }
    out_.clear();
    sent_ = 0;
}

bool Link::take_frames(const std::function<bool(const Frame &)> &take)
{
    std::size_t at = 0;
    while (in_.size() - at >= head_size) {
        const auto word = [&](std::size_t i) {
            return load_ordered<std::endian::big, std::uint32_t>(in_.data() + at + 4 * i);
        };
        const std::uint32_t length = word(4);
        if (word(0) != frame_magic || length > longest) {
            return false;
        }
        if (in_.size() - at - head_size < length) {
            break;
        }
        const Frame frame{static_cast<Kind>(word(1)), word(2), word(3), std::uint64_t{word(5)} << 32 | word(6),
            Bytes{in_}.subspan(at + head_size, length)};
        if (!take(frame)) {
            return false;
        }
        at += head_size + length;
    }
    in_.erase(in_.begin(), in_.begin() + static_cast<std::ptrdiff_t>(at));
    return true;
}

void Link::receive(const std::function<bool(const Frame &)> &take)
{
    std::array<std::uint8_t, std::size_t{32} * 1024> block{};
    while (alive()) {
        const ssize_t got = ::recv(socket_.get(), block.data(), block.size(), 0);
        if (got > 0) {
            in_.insert(in_.end(), block.begin(), block.begin() + got);
            if (!take_frames(take)) {
                socket_.reset();
            }
        } else if (got == 0 || (errno != EAGAIN && errno != EINTR)) {
            socket_.reset();
        } else if (errno == EAGAIN) {
            return;
        }
    }
}

} // namespace switchlab::stackd
