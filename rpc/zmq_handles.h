// SPDX-License-Identifier: Apache-2.0
// Owners of ZeroMQ's handles, and the few operations both sides need.
#ifndef SWITCHCFG_RPC_ZMQ_HANDLES_H
#define SWITCHCFG_RPC_ZMQ_HANDLES_H

#include "rpc/frame.h"

#include <memory>
#include <zmq.h>

namespace switchcfg::rpc {

struct EndContext {
    void operator()(void *context) const noexcept;
};
struct CloseSocket {
    void operator()(void *socket) const noexcept { ::zmq_close(socket); }
};
// A context ends when its sockets are closed, and waits for them: declare it before them.
using Context = std::unique_ptr<void, EndContext>;
using Socket = std::unique_ptr<void, CloseSocket>;

class Message {
  public:
    Message() noexcept { ::zmq_msg_init(&message_); }
    Message(Message &&other) noexcept : Message() { ::zmq_msg_move(&message_, &other.message_); }
    Message &operator=(Message &&other) noexcept
    {
        ::zmq_msg_move(&message_, &other.message_);
        return *this;
    }
    ~Message() { ::zmq_msg_close(&message_); }

    // A message of `size` bytes to be written; false without memory.
    bool resize(std::size_t size) noexcept;

    std::uint8_t *data() noexcept { return static_cast<std::uint8_t *>(::zmq_msg_data(&message_)); }
    std::size_t size() const noexcept { return ::zmq_msg_size(&message_); }
    Bytes bytes() noexcept { return {data(), size()}; }
    zmq_msg_t *get() noexcept { return &message_; }
    bool has_more() const noexcept { return ::zmq_msg_more(&message_) != 0; }

  private:
    zmq_msg_t message_{};
};

// Null with errno when the machine has no room for one. The library under it would end the process at the first
// descriptor it cannot have, so room is looked for first.
Context new_context() noexcept;

bool set_option(void *socket, int option, int value) noexcept;
bool set_size_limit(void *socket, std::size_t bytes) noexcept;

// Receives into `frame`; a message of several frames is taken off the socket and counts as nothing.
enum class Received { frame, nothing };
Received receive_single(void *socket, Message &frame, int flags) noexcept; // errno says why nothing

std::uint64_t monotonic_ms() noexcept;
std::uint64_t random_number() noexcept; // never 0

} // namespace switchcfg::rpc

#endif
