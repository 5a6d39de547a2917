// SPDX-License-Identifier: Apache-2.0
// The bytes of docs/rpc-protocol.md.
#include "rpc/frame.h"
#include "support/test.h"

using namespace switchcfg::rpc;

namespace {

using Frame = std::vector<std::uint8_t>;

Frame hex(const std::string &text)
{
    Frame bytes;
    for (std::size_t at = 0; at < text.size(); at += text[at] == ' ' ? 1U : 2U) {
        if (text[at] != ' ') {
            bytes.push_back(static_cast<std::uint8_t>(std::stoi(text.substr(at, 2), nullptr, 16)));
        }
    }
    return bytes;
}

const Frame golden_request =
    hex("5352 01 01 00000002 0102030405060708 1112131415161718 00000000000f4240 04 464c4243 0801");
const Frame golden_reply = hex("5352 01 02 ffffffdb 0102030405060708 1112131415161718 01 0a0178");
const Frame golden_probe = hex("5352 01 03 00000000 2122232425262728");
const Frame golden_alive = hex("5352 01 04 00000000 2122232425262728 1112131415161718");

TEST(RpcFrame, GoldenFrames)
{
    Frame out(golden_request.size() - 2);
    write_request_head(out.data(), {2, 0x0102030405060708, 0x1112131415161718, 1000000, "FLBC", {}});
    out.insert(out.end(), {0x08, 0x01});
    EXPECT_EQ(out, golden_request);
    const auto request = parse_request(golden_request);
    ASSERT_TRUE(request);
    EXPECT_EQ(request->message_id, 2U);
    EXPECT_EQ(request->sequence, 0x0102030405060708U);
    EXPECT_EQ(request->instance, 0x1112131415161718U);
    EXPECT_EQ(request->deadline_ms, 1000000U);
    EXPECT_EQ(request->service, "FLBC");
    EXPECT_THAT(request->payload, testing::ElementsAre(0x08, 0x01));

    out.resize(reply_head);
    write_reply_head(out.data(), {-37, 0x0102030405060708, 0x1112131415161718, ReplyStatus::message, {}});
    out.insert(out.end(), {0x0a, 0x01, 0x78});
    EXPECT_EQ(out, golden_reply);
    const auto reply = parse_reply(golden_reply);
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->result, -37);
    EXPECT_EQ(reply->sequence, 0x0102030405060708U);
    EXPECT_EQ(reply->instance, 0x1112131415161718U);
    EXPECT_EQ(reply->status, ReplyStatus::message);
    EXPECT_EQ(reply->payload.size(), 3U);

    out.resize(probe_size);
    write_probe(out.data(), {0x2122232425262728});
    EXPECT_EQ(out, golden_probe);
    EXPECT_EQ(parse_probe(golden_probe)->nonce, 0x2122232425262728U);
    out.resize(alive_size);
    write_alive(out.data(), {0x2122232425262728, 0x1112131415161718});
    EXPECT_EQ(out, golden_alive);
    EXPECT_EQ(parse_alive(golden_alive)->instance, 0x1112131415161718U);
}

TEST(RpcFrame, EveryTruncationAndForeignFramesAreRefused)
{
    for (std::size_t size = 0; size < golden_request.size(); ++size) {
        EXPECT_EQ(parse_request(Bytes{golden_request}.first(size)).has_value(), size >= request_head + 4) << size;
    }
    for (std::size_t size = 0; size < golden_reply.size(); ++size) {
        EXPECT_EQ(parse_reply(Bytes{golden_reply}.first(size)).has_value(), size >= reply_head) << size;
    }
    for (std::size_t size = 0; size < probe_size; ++size) {
        EXPECT_FALSE(parse_probe(Bytes{golden_probe}.first(size)));
        EXPECT_FALSE(parse_alive(Bytes{golden_alive}.first(size)));
    }
    // Another magic, version or kind.
    for (std::size_t at = 0; at < 4; ++at) {
        for (const Frame &golden : {golden_request, golden_reply, golden_probe, golden_alive}) {
            Frame other = golden;
            other[at] ^= 0x80;
            EXPECT_FALSE(parse_request(other) || parse_reply(other) || parse_probe(other) || parse_alive(other));
        }
    }
}

TEST(RpcFrame, FieldsOutOfRangeAreRefused)
{
    Frame frame = golden_request;
    frame.resize(request_head + 200);
    for (const auto &[length, good] : {std::pair{0, false}, {1, true}, {63, true}, {64, false}, {255, false}}) {
        frame[32] = static_cast<std::uint8_t>(length);
        EXPECT_EQ(parse_request(frame).has_value(), good) << length;
    }
    frame[32] = 4;
    frame.resize(request_head + 4 + max_payload);
    EXPECT_TRUE(parse_request(frame));
    frame.push_back(0);
    EXPECT_FALSE(parse_request(frame));

    frame = golden_reply;
    frame[24] = 0; // a payload without a message
    EXPECT_FALSE(parse_reply(frame));
    frame.resize(reply_head);
    for (int status = 0; status < 256; ++status) {
        frame[24] = static_cast<std::uint8_t>(status);
        EXPECT_EQ(parse_reply(frame).has_value(), status <= 4) << status;
    }
    frame = golden_probe;
    frame.push_back(0);
    EXPECT_FALSE(parse_probe(frame));
    frame = golden_alive;
    frame[7] = 1;
    EXPECT_FALSE(parse_alive(frame));
}

} // namespace
