// SPDX-License-Identifier: Apache-2.0
// The four frames that clients and servers exchange; docs/rpc-protocol.md is their description.
#ifndef SWITCHCFG_RPC_FRAME_H
#define SWITCHCFG_RPC_FRAME_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace switchcfg::rpc {

using Bytes = std::span<const std::uint8_t>;

inline constexpr std::size_t max_payload = std::size_t{16} << 20;
inline constexpr std::size_t max_service = 63;

struct Request {
    std::uint32_t message_id;
    std::uint64_t sequence;
    std::uint64_t instance;    // of the server it is for; 0: any
    std::uint64_t deadline_ms; // of CLOCK_MONOTONIC; 0: none
    std::string_view service;
    Bytes payload;
};

enum class ReplyStatus : std::uint8_t {
    done = 0,           // the callback's result, no reply message
    message = 1,        // the callback's result and reply message
    not_served = 2,     // the default error: no such callback, request or reply unfit
    other_instance = 3, // not run: the request was for a server that is gone
    too_late = 4,       // not run: its deadline had passed
};

struct Reply {
    std::int32_t result;
    std::uint64_t sequence; // the request's
    std::uint64_t instance; // of the server that replies
    ReplyStatus status;
    Bytes payload; // empty unless there is a message, which may be empty too
};

struct Probe {
    std::uint64_t nonce;
};

struct Alive {
    std::uint64_t nonce; // the probe's
    std::uint64_t instance;
};

inline constexpr std::size_t request_head = 33; // and the service name
inline constexpr std::size_t reply_head = 25;
inline constexpr std::size_t probe_size = 16;
inline constexpr std::size_t alive_size = 24;
inline constexpr std::size_t max_frame = request_head + max_service + max_payload;

// Everything before the payload. `out` has request_head bytes and the service name's, or reply_head bytes; the service
// name 1 to max_service.
void write_request_head(std::uint8_t *out, const Request &request) noexcept;
void write_reply_head(std::uint8_t *out, const Reply &reply) noexcept;
void write_probe(std::uint8_t *out, const Probe &probe) noexcept;
void write_alive(std::uint8_t *out, const Alive &alive) noexcept;

// The whole frame or nothing; texts and payload point into it.
std::optional<Request> parse_request(Bytes frame) noexcept;
std::optional<Reply> parse_reply(Bytes frame) noexcept;
std::optional<Probe> parse_probe(Bytes frame) noexcept;
std::optional<Alive> parse_alive(Bytes frame) noexcept;

} // namespace switchcfg::rpc

#endif
