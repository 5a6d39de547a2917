// SPDX-License-Identifier: Apache-2.0
#include "bench/support/bare_zeromq.h"

#include "bench/support/served.h"

#include <cstdint>
#include <cstring>
#include <zmq.h>

namespace switchcfg::bench {
namespace {

constexpr const char *endpoint = "tcp://127.0.0.1:20213";

void serve()
{
    void *const socket = ::zmq_socket(::zmq_ctx_new(), ZMQ_REP);
    if (::zmq_bind(socket, endpoint) != 0) {
        return;
    }
    serving();
    for (;;) {
        zmq_msg_t request;
        ::zmq_msg_init(&request);
        std::uint64_t size = 0;
        if (::zmq_msg_recv(&request, socket, 0) >= static_cast<int>(sizeof size)) {
            std::memcpy(&size, ::zmq_msg_data(&request), sizeof size);
        }
        ::zmq_msg_close(&request);
        zmq_msg_t reply;
        ::zmq_msg_init_size(&reply, size);
        std::memset(::zmq_msg_data(&reply), 'x', size);
        ::zmq_msg_send(&reply, socket, 0);
    }
}
const ServeAs bare{"bare-zeromq", serve};

} // namespace

BareZeromq::BareZeromq() : context_(::zmq_ctx_new()), socket_(::zmq_socket(context_, ZMQ_REQ))
{
    const int linger = 0;
    const int patience_ms = 10000;
    ::zmq_setsockopt(socket_, ZMQ_LINGER, &linger, sizeof linger);
    ::zmq_setsockopt(socket_, ZMQ_RCVTIMEO, &patience_ms, sizeof patience_ms);
    ::zmq_connect(socket_, endpoint);
}

BareZeromq::~BareZeromq()
{
    ::zmq_close(socket_);
    ::zmq_ctx_term(context_);
}

bool BareZeromq::exchange(std::size_t request_size, std::size_t reply_size)
{
    if (bytes_.size() != request_size) {
        bytes_.assign(request_size, 'x');
    }
    const std::uint64_t size = reply_size;
    std::memcpy(bytes_.data(), &size, sizeof size);
    zmq_msg_t request;
    ::zmq_msg_init_size(&request, bytes_.size());
    std::memcpy(::zmq_msg_data(&request), bytes_.data(), bytes_.size());
    zmq_msg_t reply;
    ::zmq_msg_init(&reply);
    const bool done = ::zmq_msg_send(&request, socket_, 0) == static_cast<int>(request_size) &&
                      ::zmq_msg_recv(&reply, socket_, 0) == static_cast<int>(reply_size);
    ::zmq_msg_close(&reply);
    return done;
}

} // namespace switchcfg::bench
