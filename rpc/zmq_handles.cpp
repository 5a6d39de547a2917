// SPDX-License-Identifier: Apache-2.0
#include "rpc/zmq_handles.h"

#include <array>
#include <cerrno>
#include <ctime>
#include <sys/eventfd.h>
#include <sys/random.h>
#include <unistd.h>

namespace switchcfg::rpc {
namespace {

// A context, its two threads, four sockets and what they talk through.
constexpr std::size_t descriptors_needed = 16;

bool descriptors_are_free() noexcept
{
    std::array<int, descriptors_needed> taken{};
    std::size_t count = 0;
    while (count < taken.size() && (taken[count] = ::eventfd(0, EFD_CLOEXEC)) != -1) {
        ++count;
    }
    const int why = errno;
    for (std::size_t i = 0; i < count; ++i) {
        ::close(taken[i]);
    }
    errno = why;
    return count == taken.size();
}

} // namespace

void EndContext::operator()(void *context) const noexcept
{
    while (::zmq_ctx_term(context) != 0 && errno == EINTR) {
    }
}

bool Message::resize(std::size_t size) noexcept
{
    ::zmq_msg_close(&message_);
    if (::zmq_msg_init_size(&message_, size) == 0) {
        return true;
    }
    ::zmq_msg_init(&message_);
    return false;
}

Context new_context() noexcept
{
    return Context{descriptors_are_free() ? ::zmq_ctx_new() : nullptr};
}

bool set_option(void *socket, int option, int value) noexcept
{
    return ::zmq_setsockopt(socket, option, &value, sizeof value) == 0;
}

bool set_size_limit(void *socket, std::size_t bytes) noexcept
{
    const auto limit = static_cast<std::int64_t>(bytes);
    return ::zmq_setsockopt(socket, ZMQ_MAXMSGSIZE, &limit, sizeof limit) == 0;
}

Received receive_single(void *socket, Message &frame, int flags) noexcept
{
    if (::zmq_msg_recv(frame.get(), socket, flags) == -1) {
        return Received::nothing;
    }
    if (!frame.has_more()) {
        return Received::frame;
    }
    while (frame.has_more() && (::zmq_msg_recv(frame.get(), socket, ZMQ_DONTWAIT) != -1 || errno == EINTR)) {
    }
    errno = EBADMSG;
    return Received::nothing;
}

std::uint64_t monotonic_ms() noexcept
{
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1000 + static_cast<std::uint64_t>(now.tv_nsec) / 1000000;
}

std::uint64_t random_number() noexcept
{
    std::uint64_t number = 0;
    if (::getrandom(&number, sizeof number, GRND_NONBLOCK) != static_cast<ssize_t>(sizeof number)) {
        // Early after power-up; what matters is that the next start of the process gets another number.
        number = monotonic_ms() << 32 | static_cast<std::uint64_t>(::getpid());
    }
    return number == 0 ? 1 : number;
}

} // namespace switchcfg::rpc
