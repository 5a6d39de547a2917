// SPDX-License-Identifier: Apache-2.0
// The thread that answers keep-alive probes and guards the connections while the other one is busy.
#include "rpc/serving.h"

#include <array>
#include <cerrno>
#include <ctime>
#include <tuple>

namespace switchcfg::rpc {
namespace {

constexpr std::size_t most_held = 256;
constexpr std::size_t most_held_bytes = std::size_t{32} << 20;

} // namespace

void Serving::watch() noexcept
{
    std::array<zmq_pollitem_t, 6> items{};
    std::size_t count = 0;
    const auto item = [&](void *socket, int fd) {
        items[count] = {socket, fd, ZMQ_POLLIN, 0};
        return count++;
    };
    const std::size_t end = item(nullptr, watch_waker_);
    const std::size_t request_events = item(requests_.guard->events(), -1);
    const std::size_t request_wake = item(nullptr, requests_.guard->wake_fd());
    const bool keeps_alive = keep_alive_.socket != nullptr;
    const std::size_t probes = keeps_alive ? item(keep_alive_.socket.get(), -1) : 0;
    const std::size_t probe_events = keeps_alive ? item(keep_alive_.guard->events(), -1) : 0;
    const std::size_t probe_wake = keeps_alive ? item(nullptr, keep_alive_.guard->wake_fd()) : 0;

    while (items[end].revents == 0) {
        long timeout = -1;
        if (requests_.guard->tick()) {
            timeout = ConnectionGuard::tick_ms;
            take_waiting_requests();
        }
        if (keeps_alive) {
            if (keep_alive_.guard->tick()) {
                timeout = ConnectionGuard::tick_ms;
            } else if (stays_unbound(keep_alive_) && timeout == -1) {
                timeout = bind_retry_ms;
            }
        }
        if (::zmq_poll(items.data(), static_cast<int>(count), timeout) == -1) {
            if (errno == EINTR) {
                continue;
            }
            return;
        }
        // Probes first: they are what somebody waits for.
        if (keeps_alive && items[probes].revents != 0) {
            answer_probes();
        }
        for (const auto &[guard, events, wake] : {std::tuple{requests_.guard.get(), request_events, request_wake},
                 std::tuple{keep_alive_.guard.get(), probe_events, probe_wake}}) {
            if (guard != nullptr && items[events].revents != 0) {
                guard->on_events();
            }
            if (guard != nullptr && items[wake].revents != 0) {
                guard->on_wake();
            }
        }
    }
}

void Serving::answer_probes() noexcept
{
    Message sender;
    Message frame;
    // Not for ever: the watch has more to do than a peer that never stops asking.
    for (int turns = 0; turns < 64; ++turns) {
        const Got got = receive(keep_alive_, sender, frame, ZMQ_DONTWAIT);
        if (got == Got::nothing) {
            return;
        }
        const auto probe = got == Got::message ? parse_probe(frame.bytes()) : std::nullopt;
        Message answer;
        if (!probe || !answer.resize(alive_size)) {
            continue;
        }
        write_alive(answer.data(), {probe->nonce, instance_});
        void *const socket = keep_alive_.socket.get();
        // Held from before the sending: who has heard the answer and then names another place finds this one written.
        const std::lock_guard hold{keep_alive_time_use_};
        if (::zmq_msg_send(sender.get(), socket, ZMQ_SNDMORE | ZMQ_DONTWAIT) == -1 ||
            ::zmq_msg_send(answer.get(), socket, ZMQ_DONTWAIT) == -1) {
            continue;
        }
        if (keep_alive_time_ != nullptr) {
            __atomic_store_n(keep_alive_time_, static_cast<std::uint32_t>(std::time(nullptr)), __ATOMIC_RELAXED);
        }
    }
}

// During a long callback, requests of peers that come and go would pile up in the library under us without bound.
void Serving::take_waiting_requests() noexcept
{
    const std::unique_lock use{use_, std::try_to_lock};
    if (!use) {
        return; // the request thread is between callbacks and takes them itself
    }
    Message sender;
    Message frame;
    for (int turns = 0; turns < 64; ++turns) {
        const Got got = receive(requests_, sender, frame, ZMQ_DONTWAIT);
        if (got == Got::nothing) {
            return;
        }
        const auto request = got == Got::message ? parse_request(frame.bytes()) : std::nullopt;
        if (!request) {
            continue;
        }
        const bool room = held_.size() < most_held && held_bytes_ + frame.size() <= most_held_bytes;
        try {
            if (room) {
                const std::size_t size = frame.size();
                held_.push_back({std::move(sender), std::move(frame)});
                held_bytes_ += size;
                continue;
            }
        } catch (...) {
            continue; // lost for want of memory; the peer's time-out will tell it
        }
        send_reply(sender, {default_error_, request->sequence, instance_, ReplyStatus::not_served, {}}, nullptr);
    }
}

} // namespace switchcfg::rpc
