// SPDX-License-Identifier: Apache-2.0
#include "rpc/frame.h"

#include "util/byte_order.h"

#include <cstring>

namespace switchcfg::rpc {
namespace {

constexpr std::endian order = std::endian::big;
constexpr std::uint16_t magic = 0x5352; // "SR"
constexpr std::uint8_t version = 1;

enum class Kind : std::uint8_t { request = 1, reply = 2, probe = 3, alive = 4 };

// What the frames have in common: magic, version, kind, then a word and a long word.
void write_common(std::uint8_t *out, Kind kind, std::uint32_t word, std::uint64_t number) noexcept
{
    store_ordered<order>(out, magic);
    out[2] = version;
    out[3] = static_cast<std::uint8_t>(kind);
    store_ordered<order>(out + 4, word);
    store_ordered<order>(out + 8, number);
}

bool is(Bytes frame, Kind kind, std::size_t least) noexcept
{
    return frame.size() >= least && load_ordered<order, std::uint16_t>(frame.data()) == magic && frame[2] == version &&
           frame[3] == static_cast<std::uint8_t>(kind);
}

std::uint32_t word_at(Bytes frame, std::size_t offset) noexcept
{
    return load_ordered<order, std::uint32_t>(frame.data() + offset);
}

std::uint64_t long_at(Bytes frame, std::size_t offset) noexcept
{
    return load_ordered<order, std::uint64_t>(frame.data() + offset);
}

} // namespace

void write_request_head(std::uint8_t *out, const Request &request) noexcept
{
    write_common(out, Kind::request, request.message_id, request.sequence);
    store_ordered<order>(out + 16, request.instance);
    store_ordered<order>(out + 24, request.deadline_ms);
    out[32] = static_cast<std::uint8_t>(request.service.size());
    std::memcpy(out + request_head, request.service.data(), request.service.size());
}

void write_reply_head(std::uint8_t *out, const Reply &reply) noexcept
{
    write_common(out, Kind::reply, static_cast<std::uint32_t>(reply.result), reply.sequence);
    store_ordered<order>(out + 16, reply.instance);
    out[24] = static_cast<std::uint8_t>(reply.status);
}

void write_probe(std::uint8_t *out, const Probe &probe) noexcept
{
    write_common(out, Kind::probe, 0, probe.nonce);
}

void write_alive(std::uint8_t *out, const Alive &alive) noexcept
{
    write_common(out, Kind::alive, 0, alive.nonce);
    store_ordered<order>(out + 16, alive.instance);
}

std::optional<Request> parse_request(Bytes frame) noexcept
{
    if (!is(frame, Kind::request, request_head)) {
        return std::nullopt;
    }
    const std::size_t name = frame[32];
    if (name == 0 || name > max_service || frame.size() - request_head < name ||
        frame.size() - request_head - name > max_payload) {
        return std::nullopt;
    }
    return Request{word_at(frame, 4), long_at(frame, 8), long_at(frame, 16), long_at(frame, 24),
        {reinterpret_cast<const char *>(frame.data()) + request_head, name}, frame.subspan(request_head + name)};
}

std::optional<Reply> parse_reply(Bytes frame) noexcept
{
    if (!is(frame, Kind::reply, reply_head) || frame[24] > static_cast<std::uint8_t>(ReplyStatus::too_late)) {
        return std::nullopt;
    }
    const auto status = static_cast<ReplyStatus>(frame[24]);
    const Bytes payload = frame.subspan(reply_head);
    if (payload.size() > max_payload || (status != ReplyStatus::message && !payload.empty())) {
        return std::nullopt;
    }
    return Reply{static_cast<std::int32_t>(word_at(frame, 4)), long_at(frame, 8), long_at(frame, 16), status, payload};
}

std::optional<Probe> parse_probe(Bytes frame) noexcept
{
    if (frame.size() != probe_size || !is(frame, Kind::probe, probe_size) || word_at(frame, 4) != 0) {
        return std::nullopt;
    }
    return Probe{long_at(frame, 8)};
}

std::optional<Alive> parse_alive(Bytes frame) noexcept
{
    if (frame.size() != alive_size || !is(frame, Kind::alive, alive_size) || word_at(frame, 4) != 0) {
        return std::nullopt;
    }
    return Alive{long_at(frame, 8), long_at(frame, 16)};
}

} // namespace switchcfg::rpc
