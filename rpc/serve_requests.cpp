// SPDX-License-Identifier: Apache-2.0
// The thread that takes requests, runs their callbacks and sends the replies.
#include "rpc/serving.h"

#include <cerrno>

namespace switchcfg::rpc {
namespace {

// The library under us hears that a peer took replies only when it has a moment; give it one before it takes a healthy
// peer for one that does not read, and before much memory is at stake.
constexpr unsigned replies_between_looks = 16;
constexpr std::size_t large_reply = 65536;

} // namespace

Serving::Got Serving::receive(Port &port, Message &sender, Message &frame, int flags) noexcept
{
    void *const socket = port.socket.get();
    if (::zmq_msg_recv(sender.get(), socket, flags) == -1) {
        return Got::nothing;
    }
    Received received = Received::nothing;
    do {
        received = receive_single(socket, frame, 0);
    } while (received == Received::nothing && errno == EINTR);
    port.progress.count(frame);
    return received == Received::frame ? Got::message : Got::garbage;
}

// True while the address is another process's.
bool Serving::stays_unbound(Port &port) noexcept
{
    if (!port.bound && !port.endpoint.empty()) {
        port.bound = ::zmq_bind(port.socket.get(), port.endpoint.c_str()) == 0;
        return !port.bound;
    }
    return false;
}

Serving::Got Serving::next_request(Message &sender, Message &frame) noexcept
{
    if (!held_.empty()) {
        sender = std::move(held_.front().sender);
        frame = std::move(held_.front().frame);
        held_bytes_ -= frame.size();
        held_.pop_front();
        return Got::message;
    }
    return receive(requests_, sender, frame, 0);
}

void Serving::serve_requests() noexcept
{
    std::unique_lock use{use_};
    while (!stopping_ && stays_unbound(requests_)) {
        set_option(requests_.socket.get(), ZMQ_RCVTIMEO, bind_retry_ms);
        Message ignored;
        (void)receive_single(requests_.socket.get(), ignored, 0);
    }
    set_option(requests_.socket.get(), ZMQ_RCVTIMEO, -1);
    Message sender;
    Message frame;
    while (!stopping_) {
        if (next_request(sender, frame) == Got::message) {
            serve(use, sender, frame);
        }
    }
}

FnDispCallbackAbstract *Serving::route_of(const Request &request) const noexcept
{
    for (const Route &route : routes_) {
        if (route.message_id == request.message_id && route.service == request.service) {
            return route.callback.get();
        }
    }
    return nullptr;
}

int Serving::run_callback(FnDispCallbackAbstract &callback, const Request &request, ReplyStatus &status,
    std::unique_ptr<google::protobuf::Message> &reply) const noexcept
{
    try {
        const std::unique_ptr<google::protobuf::Message> message{callback.requestType().New()};
        // Both together are ParseFromArray() without its lines on stderr, which a peer could fill a disk with.
        if (message->ParsePartialFromArray(request.payload.data(), static_cast<int>(request.payload.size())) &&
            message->IsInitialized()) {
            const int result = callback.call(*message, &reply);
            if (!reply || reply->ByteSizeLong() <= max_payload) {
                status = reply ? ReplyStatus::message : ReplyStatus::done;
                return result;
            }
        }
    } catch (...) {
        status = ReplyStatus::not_served;
    }
    reply.reset();
    return default_error_;
}

void Serving::serve(std::unique_lock<std::mutex> &use, Message &sender, Message &frame) noexcept
{
    const auto request = parse_request(frame.bytes());
    if (!request) {
        return;
    }
    Reply head{default_error_, request->sequence, instance_, ReplyStatus::not_served, {}};
    std::unique_ptr<google::protobuf::Message> message;
    if (request->instance != 0 && request->instance != instance_) {
        head.status = ReplyStatus::other_instance;
    } else if (request->deadline_ms != 0 && request->deadline_ms <= monotonic_ms()) {
        head.status = ReplyStatus::too_late;
    } else if (FnDispCallbackAbstract *const callback = route_of(*request); callback != nullptr) {
        use.unlock();
        head.result = run_callback(*callback, *request, head.status, message);
        use.lock();
    }
    send_reply(sender, head, message.get());
}

// A peer that is gone, or does not read its replies, loses this one.
void Serving::send_reply(Message &sender, Reply reply, const google::protobuf::Message *message) noexcept
{
    const std::size_t payload = message == nullptr ? 0 : message->ByteSizeLong();
    Message frame;
    if (!frame.resize(reply_head + payload)) {
        reply.status = ReplyStatus::not_served;
        reply.result = default_error_;
        message = nullptr;
        if (!frame.resize(reply_head)) {
            return;
        }
    }
    write_reply_head(frame.data(), reply);
    if (message != nullptr) {
        message->SerializeWithCachedSizesToArray(frame.data() + reply_head);
    }
    last_sent_ms_ = monotonic_ms();
    void *const socket = requests_.socket.get();
    if (payload > large_reply || ++sent_ % replies_between_looks == 0) {
        int events = 0;
        std::size_t size = sizeof events;
        (void)::zmq_getsockopt(socket, ZMQ_EVENTS, &events, &size);
    }
    while (::zmq_msg_send(sender.get(), socket, ZMQ_SNDMORE | ZMQ_DONTWAIT) == -1) {
        if (errno != EINTR) {
            return;
        }
    }
    while (::zmq_msg_send(frame.get(), socket, ZMQ_DONTWAIT) == -1 && errno == EINTR) {
    }
}

} // namespace switchcfg::rpc
