// SPDX-License-Identifier: Apache-2.0
#include "rpc/frame.h"
#include "rpc_fixture.h"

#include <ctime>
#include <google/protobuf/empty.pb.h>
#include <latch>
#include <zmq.h>

using namespace switchcfg::testing;
namespace rpc = switchcfg::rpc;

namespace {

// A peer that speaks frames, as one in another language would.
class Speaker {
  public:
    Speaker(int type, const char *endpoint) : context_(::zmq_ctx_new()), socket_(::zmq_socket(context_, type))
    {
        constexpr int limit = 5000;
        constexpr int linger = 0;
        ::zmq_setsockopt(socket_, ZMQ_RCVTIMEO, &limit, sizeof limit);
        ::zmq_setsockopt(socket_, ZMQ_LINGER, &linger, sizeof linger);
        EXPECT_EQ(type == ZMQ_ROUTER ? ::zmq_bind(socket_, endpoint) : ::zmq_connect(socket_, endpoint), 0);
    }
    ~Speaker()
    {
        ::zmq_close(socket_);
        ::zmq_ctx_term(context_);
    }
    Speaker(const Speaker &) = delete;
    Speaker &operator=(const Speaker &) = delete;

    void say(const std::string &frame, int flags = 0) { ::zmq_send(socket_, frame.data(), frame.size(), flags); }
    std::string hear()
    {
        std::string frame(4096, '\0');
        const int size = ::zmq_recv(socket_, frame.data(), frame.size(), 0);
        frame.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
        return frame;
    }

  private:
    void *context_;
    void *socket_;
};

std::pair<int, int> with_errno(int result)
{
    return {result, errno};
}

rpc::Bytes bytes_of(const std::string &text)
{
    return {reinterpret_cast<const std::uint8_t *>(text.data()), text.size()};
}

std::string request_of(const rpc::Request &request, const std::string &payload = "")
{
    std::string frame(rpc::request_head + request.service.size(), '\0');
    rpc::write_request_head(reinterpret_cast<std::uint8_t *>(frame.data()), request);
    return frame + payload;
}

std::string reply_of(const rpc::Reply &reply, const std::string &payload = "")
{
    std::string frame(rpc::reply_head, '\0');
    rpc::write_reply_head(reinterpret_cast<std::uint8_t *>(frame.data()), reply);
    return frame + payload;
}

class RpcExchange : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(service.start(), 0); }

    std::atomic<int> runs = 0;
    Service service{[this](const std::string &, Slot *) { return ++runs; }};
    KeptAlive client;
};

TEST_F(RpcExchange, ResultsAndReplyMessages)
{
    for (const std::size_t size : {0U, 1U, 64U, 4096U, 1U << 20, (16U << 20) - 16}) {
        const std::string input(size, 'x');
        EXPECT_EQ(client.echoed(input), input);
    }
    Slot reply = bytes("of an earlier call");
    EXPECT_EQ(with_errno(client.call(fail, "", &reply)), std::pair(-5, 0));
    EXPECT_EQ(reply, nullptr);
    EXPECT_EQ(client.call(echo, "nobody wants it back"), 20);
    EXPECT_EQ(with_errno(client.call(echo, std::string(std::size_t{16} << 20, 'x'))), std::pair(-1000, EMSGSIZE));
    EXPECT_EQ(with_errno(client.request(google::protobuf::Empty{}, nullptr, 10)), std::pair(-1000, EINVAL));
    EXPECT_EQ(client.echoed("still usable"), "still usable");

    // What cannot be served gets the default error.
    for (const Id id : {throws, too_much, nobody}) {
        EXPECT_EQ(client.call(id, "x", &reply), -37) << id;
        EXPECT_EQ(errno, 0);
        EXPECT_EQ(reply, nullptr);
    }
    client.registerRequest(BytesValue::default_instance(), "TES", echo, BytesValue::default_instance());
    EXPECT_EQ(client.request(*bytes("x"), nullptr, 10), -37);
}

TEST(RpcServer, RegistrationAndBindingRefusals)
{
    Service service;
    const Function function{[](const std::string &, Slot *) { return 0; }};
    EXPECT_EQ(with_errno(service.dispatcher.registerCallback("", 1, function)), std::pair(-1, EINVAL));
    EXPECT_EQ(service.dispatcher.registerCallback(std::string(64, 's'), 1, function), -1);
    EXPECT_EQ(service.dispatcher.registerCallback(std::string(63, 's'), 1, function), 0);
    EXPECT_EQ(with_errno(service.dispatcher.bind("no endpoint", true)), std::pair(-1, EINVAL));
    ASSERT_EQ(service.start(), 0);
    EXPECT_EQ(with_errno(service.dispatcher.registerCallback("TEST", 7, function)), std::pair(-1, EBUSY));
    EXPECT_EQ(with_errno(service.dispatcher.bind("tcp://127.0.0.1:62051", false)), std::pair(-1, EBUSY));
    EXPECT_EQ(with_errno(service.server.addDispatcher(&service.dispatcher)), std::pair(-1, EBUSY));
    EXPECT_EQ(service.server.addDispatcher(nullptr), -1);
    RepDispatcher second;
    EXPECT_EQ(with_errno(second.bind(request_endpoint, false)), std::pair(-1, EADDRINUSE));
    service.server.stop();
    service.server.wait();
    EXPECT_EQ(with_errno(service.server.addDispatcher(&second)), std::pair(-1, ESHUTDOWN));
}

TEST_F(RpcExchange, ServesAPeerThatOnlyKnowsTheFrames)
{
    Speaker alive{ZMQ_DEALER, keep_alive_endpoint};
    std::string probe(rpc::probe_size, '\0');
    rpc::write_probe(reinterpret_cast<std::uint8_t *>(probe.data()), {77});
    std::uint32_t last_answer = 0;
    service.dispatcher.setKeepAliveTime(&last_answer);
    alive.say("rubbish");
    alive.say(probe);
    const std::string answer = alive.hear();
    const auto state = rpc::parse_alive(bytes_of(answer));
    ASSERT_TRUE(state);
    EXPECT_EQ(state->nonce, 77U);
    service.dispatcher.setKeepAliveTime(nullptr); // and with it, what was stored can be seen
    EXPECT_NEAR(last_answer, static_cast<double>(std::time(nullptr)), 2);

    Speaker speaker{ZMQ_DEALER, request_endpoint};
    const auto status = [&](const std::string &frame) {
        speaker.say(frame);
        const std::string heard = speaker.hear();
        const auto reply = rpc::parse_reply(bytes_of(heard));
        return reply ? static_cast<int>(reply->status) : -1;
    };
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    const auto now_ms = static_cast<std::uint64_t>(now.tv_sec) * 1000;
    EXPECT_EQ(status(request_of({own, 1, 0, 0, "TEST", {}})), 0);
    EXPECT_EQ(status(request_of({own, 2, state->instance, now_ms + 60000, "TEST", {}})), 0);
    EXPECT_EQ(runs, 2);
    EXPECT_EQ(status(request_of({own, 3, state->instance + 1, 0, "TEST", {}})), 3);
    EXPECT_EQ(status(request_of({own, 4, 0, now_ms - 1, "TEST", {}})), 4);
    EXPECT_EQ(status(request_of({own, 5, 0, 0, "TEST", {}}, "\xff no message")), 2);
    EXPECT_EQ(runs, 2);

    // What is no request gets no answer, and the next one is not mistaken.
    speaker.say("rubbish");
    speaker.say("");
    speaker.say(request_of({own, 6, 0, 0, "TEST", {}}), ZMQ_SNDMORE);
    speaker.say("a second frame");
    speaker.say(request_of({echo, 7, 0, 0, "TEST", {}}, "\x0a\x02hi"));
    EXPECT_EQ(speaker.hear(), reply_of({2, 7, state->instance, rpc::ReplyStatus::message, {}}, "\x0a\x02hi"));
    EXPECT_EQ(runs, 2);
}

TEST(RpcClient, OnlyTheReplyToTheRequestCounts)
{
    std::thread server{[] {
        Speaker speaker{ZMQ_ROUTER, request_endpoint};
        const std::string sender = speaker.hear();
        const std::string heard = speaker.hear();
        const auto request = rpc::parse_request(bytes_of(heard));
        ASSERT_TRUE(request);
        const auto answer = [&](const std::string &frame) {
            speaker.say(sender, ZMQ_SNDMORE);
            speaker.say(frame);
        };
        const rpc::Reply right{42, request->sequence, 1, rpc::ReplyStatus::done, {}};
        answer("");
        answer("rubbish");
        answer(reply_of(right).substr(0, rpc::reply_head - 1));
        rpc::Reply late = right;
        late.sequence -= 1;
        late.result = 41;
        answer(reply_of(late));
        speaker.say(sender, ZMQ_SNDMORE);
        speaker.say(reply_of(late), ZMQ_SNDMORE);
        answer(reply_of(right)); // two frames and the sender's name among them
        answer(reply_of(right));
        rpc::Reply broken = right;
        broken.status = rpc::ReplyStatus::message;
        (void)speaker.hear();
        broken.sequence = rpc::parse_request(bytes_of(std::string{speaker.hear()}))->sequence;
        answer(reply_of(broken, "\xff"));
        (void)speaker.hear(); // the client's good-bye; ends by the time limit
    }};
    Caller<ReqClient> client{request_endpoint};
    EXPECT_EQ(client.call(echo, "x"), 42);
    Slot reply;
    EXPECT_EQ(with_errno(client.call(echo, "x", &reply)), std::pair(-1000, EBADMSG));
    EXPECT_EQ(reply, nullptr);
    server.join();
}

TEST(RpcClient, ATimeOutLeavesTheClientUsableAndItsReplyIsLost)
{
    std::latch release{1};
    Service service{[&](const std::string &, Slot *reply) {
        release.wait();
        *reply = bytes("late");
        return 4;
    }};
    ASSERT_EQ(service.start(), 0);
    KeptAlive client;
    Caller<ReqClient> plain{request_endpoint};
    EXPECT_EQ(with_errno(client.call(own, "", nullptr, 1)), std::pair(-1000, ETIMEDOUT));
    EXPECT_EQ(with_errno(plain.call(own, "", nullptr, 1)), std::pair(-1000, ETIMEDOUT));
    release.count_down();
    EXPECT_EQ(client.echoed("mine"), "mine");
    EXPECT_EQ(plain.echoed("mine"), "mine");
}

TEST_F(RpcExchange, ThreadsOfOneClientTakeTurns)
{
    client.call(echo, "registers");
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (std::size_t i = 1; i <= 4; ++i) {
        threads.emplace_back([this, &wrong, i] {
            for (int turn = 0; turn < 200; ++turn) {
                wrong += client.request(*bytes(std::string(i, 'x')), nullptr, 10) == static_cast<int>(i) ? 0 : 1;
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

TEST(RpcServer, StopFromACallbackSendsItsReply)
{
    RpcServer *server = nullptr;
    Service service{[&](const std::string &, Slot *) {
        server->stop();
        server->wait(); // returns, as the callback cannot wait for itself
        return 17;
    }};
    server = &service.server;
    ASSERT_EQ(service.start(), 0);
    KeptAlive client;
    EXPECT_EQ(client.call(own, ""), 17);
    service.server.wait();
    EXPECT_EQ(with_errno(client.call(echo, "")), std::pair(-1000, EHOSTDOWN));
}

TEST(RpcServer, ComesToServeWhenItsPredecessorIsGone)
{
    auto predecessor = std::make_unique<Service>();
    ASSERT_EQ(predecessor->start(), 0);
    Service service{[](const std::string &, Slot *) { return 2; }};
    ASSERT_EQ(service.dispatcher.bind(request_endpoint, true), 0);
    ASSERT_EQ(service.server.addDispatcher(&service.dispatcher), 0);
    KeptAlive client;
    EXPECT_EQ(client.call(own, ""), 0);
    predecessor.reset();
    // A request that leaves before the end of the old connection is noticed here is lost, as nobody can tell whether it
    // ran.
    EXPECT_THAT(client.call(own, ""), testing::AnyOf(2, -1000));
    EXPECT_EQ(client.call(own, ""), 2);
}

TEST(RpcServer, MayBeDestroyedInAnyOrderAndBeLeftByExit)
{
    auto server = std::make_unique<RpcServer>("short-lived");
    auto dispatcher = std::make_unique<RepDispatcher>();
    EXPECT_EQ(with_errno(server->addDispatcher(dispatcher.get())), std::pair(-1, EDESTADDRREQ));
    ASSERT_EQ(dispatcher->bind(request_endpoint, false), 0);
    ASSERT_EQ(server->addDispatcher(dispatcher.get()), 0);
    dispatcher.reset();
    server.reset();

    // A function that ends the daemon: destructors of statics run on the thread that serves.
    Peer child{[](Link &) {
        ::alarm(20);
        static Service service{[](const std::string &, Slot *) -> int { std::exit(3); }};
        service.start();
        std::thread{[] {
            KeptAlive client;
            client.call(own, "");
        }}.detach();
        service.server.wait();
    }};
    const int status = child.join();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 3) << status;
}

TEST_F(RpcExchange, AForkedChildLeavesItAloneAndExits)
{
    if (threads_sanitized) {
        GTEST_SKIP() << "the thread sanitizer does not follow the child of a process with threads";
    }
    EXPECT_EQ(client.echoed("parent"), "parent");
    Peer child{[&](Link &) {
        ::alarm(20);
        const bool good = client.echoed("child") == "child";
        service.~Service();
        ::_exit(good ? 0 : 1);
    }};
    EXPECT_EQ(child.join(), 0);
    EXPECT_EQ(client.echoed("parent again"), "parent again");
}

TEST(RpcServer, WithoutDescriptorsNothingWorksAndNothingBreaks)
{
    if (sanitized) {
        GTEST_SKIP() << "the sanitizer's own checks need descriptors";
    }
    const int before = open_descriptors();
    {
        const NoMoreDescriptors none;
        Service service;
        EXPECT_EQ(service.start(), -1);
        KeptAlive client;
        EXPECT_EQ(with_errno(client.call(echo, "")), std::pair(-1000, EMFILE));
    }
    EXPECT_EQ(open_descriptors(), before);
}

} // namespace
