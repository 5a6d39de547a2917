// SPDX-License-Identifier: Apache-2.0
#include "rpc/link.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <unistd.h>

namespace switchcfg::rpc {
namespace {

constexpr std::uint64_t quiet_ms = 1000;  // wait for a reply before asking whether the server is there at all
constexpr std::uint64_t probe_ms = 1000;  // between probes
constexpr std::uint64_t answer_ms = 2000; // a probe unanswered for so long: the server is gone
constexpr std::uint64_t find_ms = 3000;   // the same when no word was exchanged yet
constexpr std::uint64_t stopped_ms = 500; // a wait that is so much too long: this process was stopped
constexpr std::uint64_t longest_wait_ms = 3600000;
constexpr int most_attempts = 4;

int ms_until(std::uint64_t when, std::uint64_t now) noexcept
{
    return when <= now ? 0 : static_cast<int>(std::min<std::uint64_t>(when - now, longest_wait_ms));
}

} // namespace

Link::Link(std::string endpoint, std::string keep_alive_endpoint)
    : endpoint_(std::move(endpoint)), keep_alive_endpoint_(std::move(keep_alive_endpoint)), process_(::getpid()),
      sequence_(random_number()), nonce_(random_number())
{
}

Link::~Link()
{
    leave_parents_links();
}

// ZeroMQ's threads do not follow into a forked child; what is theirs can only be let go of.
void Link::leave_parents_links() noexcept
{
    if (const pid_t here = ::getpid(); here != process_) {
        (void)requests_.release();
        (void)keep_alive_.release();
        (void)context_.release();
        process_ = here;
        instance_ = 0;
        sequence_ = random_number();
        nonce_ = random_number();
    }
}

int Link::connect(void *socket, const std::string &endpoint) noexcept
{
    const bool set = set_option(socket, ZMQ_LINGER, 0) && set_option(socket, ZMQ_RECONNECT_IVL, 100) &&
                     set_option(socket, ZMQ_RECONNECT_IVL_MAX, 2000) && set_option(socket, ZMQ_SNDHWM, 8) &&
                     set_option(socket, ZMQ_RCVHWM, 8) && set_size_limit(socket, max_frame);
    return set ? ::zmq_connect(socket, endpoint.c_str()) : -1;
}

int Link::open() noexcept
{
    leave_parents_links();
    if (requests_) {
        return 0;
    }
    if (!context_) {
        context_ = new_context();
    }
    instance_ = 0;
    receive_wait_ms_ = -1;
    if (context_) {
        requests_.reset(::zmq_socket(context_.get(), ZMQ_DEALER));
        // No request goes anywhere but to a server that is connected: none is left to be delivered to the next one.
        if (requests_ && set_option(requests_.get(), ZMQ_IMMEDIATE, 1) && connect(requests_.get(), endpoint_) == 0) {
            if (!keeps_alive()) {
                return 0;
            }
            keep_alive_.reset(::zmq_socket(context_.get(), ZMQ_DEALER));
            if (keep_alive_ && connect(keep_alive_.get(), keep_alive_endpoint_) == 0) {
                return 0;
            }
        }
    }
    const int why = errno;
    close();
    return why == 0 ? ENOMEM : why;
}

// After a failure nothing of the old exchange can come in any more, and a client without a server keeps quiet.
void Link::close() noexcept
{
    requests_.reset();
    keep_alive_.reset();
    instance_ = 0;
}

void Link::add_route(const google::protobuf::Message &request, const std::string &service, std::uint32_t message_id,
    const google::protobuf::Message &reply)
{
    Route route{request.GetDescriptor(), &reply, message_id, service};
    const auto known = std::ranges::find(routes_, route.request, &Route::request);
    if (known == routes_.end()) {
        routes_.push_back(std::move(route));
    } else {
        *known = std::move(route);
    }
}

const Link::Route *Link::route_of(const google::protobuf::Message &request) const noexcept
{
    const auto found = std::ranges::find(routes_, request.GetDescriptor(), &Route::request);
    return found == routes_.end() ? nullptr : &*found;
}

int Link::exchange(const google::protobuf::Message &request, std::unique_ptr<google::protobuf::Message> *reply_slot,
    std::uint32_t timeout_s, int &ret_result)
{
    const Route *const route = route_of(request);
    if (route == nullptr) {
        return EINVAL;
    }
    const std::size_t payload = request.ByteSizeLong();
    if (payload > max_payload) {
        return EMSGSIZE;
    }
    // A part of a millisecond is cut off now and then: never sooner than the time that callers measure more finely.
    const std::uint64_t deadline = monotonic_ms() + std::uint64_t{timeout_s} * 1000 + 1;
    Message frame;
    Reply reply{};
    int outcome = try_again;
    for (int attempts = 0; attempts < most_attempts && outcome == try_again; ++attempts) {
        outcome = attempt(*route, request, payload, deadline, frame, reply);
    }
    if (outcome != replied) {
        close();
        return outcome == try_again ? EHOSTDOWN : outcome;
    }
    if (reply.status == ReplyStatus::message && reply_slot != nullptr) {
        std::unique_ptr<google::protobuf::Message> message{route->reply->New()};
        if (!message->ParsePartialFromArray(reply.payload.data(), static_cast<int>(reply.payload.size())) ||
            !message->IsInitialized()) {
            return EBADMSG;
        }
        *reply_slot = std::move(message);
    }
    ret_result = reply.result;
    return replied;
}

int Link::attempt(const Route &route, const google::protobuf::Message &request, std::size_t payload,
    std::uint64_t deadline, Message &frame, Reply &ret_reply) noexcept
{
    if (const int why = open(); why != 0) {
        return why;
    }
    bool just_found = !keeps_alive();
    if (keeps_alive() && instance_ == 0) {
        if (const int why = find_server(deadline); why != 0) {
            return why;
        }
        just_found = true;
    }
    if (const int why = send(route, request, payload, deadline, just_found); why != 0) {
        return why;
    }
    const int why = await_reply(deadline, frame, ret_reply);
    if (why == replied && ret_reply.status == ReplyStatus::other_instance) {
        // The server was restarted since the last word from it. It did not run the request, and nobody else has it.
        instance_ = keeps_alive() ? ret_reply.instance : 0;
        return try_again;
    }
    return why;
}

int Link::send(const Route &route, const google::protobuf::Message &request, std::size_t payload,
    std::uint64_t deadline, bool just_found) noexcept
{
    Message frame;
    const std::size_t head = request_head + route.service.size();
    if (!frame.resize(head + payload)) {
        return ENOMEM;
    }
    sequence_ += 1;
    write_request_head(frame.data(), {route.message_id, sequence_, instance_, deadline, route.service, {}});
    request.SerializeWithCachedSizesToArray(frame.data() + head);

    std::uint64_t patience = 0;
    while (::zmq_msg_send(frame.get(), requests_.get(), ZMQ_DONTWAIT) == -1) {
        if (errno == EINTR) {
            continue;
        }
        if (errno != EAGAIN) {
            return errno;
        }
        if (!just_found) {
            close(); // connected no more: find the server again
            return try_again;
        }
        const std::uint64_t now = monotonic_ms();
        if (patience == 0) {
            patience = keeps_alive() ? std::min(deadline, now + find_ms) : deadline;
        }
        if (now >= patience) {
            return patience == deadline ? ETIMEDOUT : EHOSTDOWN;
        }
        zmq_pollitem_t item{requests_.get(), -1, ZMQ_POLLOUT, 0};
        (void)::zmq_poll(&item, 1, ms_until(patience, now));
    }
    return 0;
}

// True with the reply to the current request; others are late or foreign and dropped.
bool Link::take_reply(Message &frame, Reply &ret_reply, int flags) noexcept
{
    if (receive_single(requests_.get(), frame, flags) != Received::frame) {
        return false;
    }
    const auto reply = parse_reply(frame.bytes());
    if (!reply || reply->sequence != sequence_) {
        errno = EBADMSG;
        return false;
    }
    ret_reply = *reply;
    return true;
}

// Nearly every reply comes in the first second, which is spent in a plain receive.
int Link::await_reply(std::uint64_t deadline, Message &frame, Reply &ret_reply) noexcept
{
    const std::uint64_t now = monotonic_ms();
    const std::uint64_t until = std::min(deadline, now + quiet_ms);
    int wait = ms_until(until, now);
    for (;;) {
        if (wait != receive_wait_ms_) {
            set_option(requests_.get(), ZMQ_RCVTIMEO, wait);
            receive_wait_ms_ = wait;
        }
        if (take_reply(frame, ret_reply, 0)) {
            return replied;
        }
        if (errno == EAGAIN) {
            return await_reply_or_end(deadline, frame, ret_reply);
        }
        if (errno != EINTR && errno != EBADMSG) {
            return errno;
        }
        const std::uint64_t later = monotonic_ms();
        if (later >= until) { // rubbish without end
            return await_reply_or_end(deadline, frame, ret_reply);
        }
        wait = ms_until(until, later);
    }
}

int Link::await_reply_or_end(std::uint64_t deadline, Message &frame, Reply &ret_reply) noexcept
{
    std::array<zmq_pollitem_t, 2> items{{{requests_.get(), -1, ZMQ_POLLIN, 0}, {keep_alive_.get(), -1, ZMQ_POLLIN, 0}}};
    const int count = keeps_alive() ? 2 : 1;
    const std::uint64_t first_nonce = nonce_ + 1;
    std::uint64_t next_probe = 0;
    std::uint64_t unanswered_since = 0; // 0: no probe is
    for (;;) {
        std::uint64_t now = monotonic_ms();
        if (keeps_alive() && now >= next_probe) {
            send_probe();
            next_probe = now + probe_ms;
            unanswered_since = unanswered_since == 0 ? now : unanswered_since;
        }
        std::uint64_t until = keeps_alive() ? std::min(deadline, next_probe) : deadline;
        if (unanswered_since != 0) {
            until = std::min(until, unanswered_since + answer_ms);
        }
        const int wait = ms_until(until, now);
        (void)::zmq_poll(items.data(), count, wait);

        bool in_time = true;
        while (in_time) {
            if (take_reply(frame, ret_reply, ZMQ_DONTWAIT)) {
                return replied;
            }
            // A server that sends rubbish without end does not hold a caller beyond its time.
            in_time = errno == EBADMSG && monotonic_ms() < deadline;
        }
        const std::uint64_t late = monotonic_ms();
        if (keeps_alive()) {
            const std::uint64_t instance = take_answers(first_nonce);
            if (instance != 0 && instance != instance_) {
                return EHOSTDOWN; // restarted; the request ended with the server that had it
            }
            if (instance != 0) {
                unanswered_since = 0;
            } else if (late > now + static_cast<std::uint64_t>(wait) + stopped_ms && unanswered_since != 0) {
                unanswered_since = late; // it was us who did not listen
            } else if (unanswered_since != 0 && late >= unanswered_since + answer_ms) {
                return EHOSTDOWN;
            }
        }
        if (late >= deadline) {
            return ETIMEDOUT;
        }
    }
}

int Link::find_server(std::uint64_t deadline) noexcept
{
    const std::uint64_t first_nonce = nonce_ + 1;
    const std::uint64_t until = std::min(deadline, monotonic_ms() + find_ms);
    std::uint64_t next_probe = 0;
    for (;;) {
        const std::uint64_t now = monotonic_ms();
        if (now >= next_probe) {
            send_probe();
            next_probe = now + probe_ms;
        }
        zmq_pollitem_t item{keep_alive_.get(), -1, ZMQ_POLLIN, 0};
        (void)::zmq_poll(&item, 1, ms_until(std::min(until, next_probe), now));
        instance_ = take_answers(first_nonce);
        if (instance_ != 0) {
            return 0;
        }
        if (monotonic_ms() >= until) {
            return until == deadline ? ETIMEDOUT : EHOSTDOWN;
        }
    }
}

bool Link::send_probe() noexcept
{
    Message frame;
    if (!frame.resize(probe_size)) {
        return false;
    }
    nonce_ += 1;
    write_probe(frame.data(), {nonce_});
    return ::zmq_msg_send(frame.get(), keep_alive_.get(), ZMQ_DONTWAIT) != -1;
}

// The instance that answered a probe of this call last, 0 when none did. Answers to earlier probes say nothing.
std::uint64_t Link::take_answers(std::uint64_t first_nonce) noexcept
{
    std::uint64_t instance = 0;
    Message frame;
    for (int turns = 0; turns < 64; ++turns) {
        const Received received = receive_single(keep_alive_.get(), frame, ZMQ_DONTWAIT);
        if (received == Received::nothing && errno != EBADMSG) {
            break;
        }
        const auto alive = received == Received::frame ? parse_alive(frame.bytes()) : std::nullopt;
        if (alive && alive->nonce - first_nonce <= nonce_ - first_nonce) {
            instance = alive->instance;
        }
    }
    return instance;
}

} // namespace switchcfg::rpc
