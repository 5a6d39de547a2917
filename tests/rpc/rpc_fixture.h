// SPDX-License-Identifier: Apache-2.0
// A service of a few functions over bytes, in this process or in one of its own.
#ifndef SWITCHCFG_TESTS_RPC_RPC_FIXTURE_H
#define SWITCHCFG_TESTS_RPC_RPC_FIXTURE_H

#include "support/descriptors.h"
#include "support/peer.h"

#include <google/protobuf/wrappers.pb.h>
#include <stdexcept>
#include <switchcfg/funclist_rpc.h>

namespace switchcfg::testing {

using google::protobuf::BytesValue;
using Slot = std::unique_ptr<google::protobuf::Message>;
using Body = std::function<int(const std::string &input, Slot *reply)>;

inline constexpr const char *request_endpoint = "tcp://127.0.0.1:62050";
inline constexpr const char *keep_alive_endpoint = "tcp://127.0.0.1:62060";

#ifdef __SANITIZE_ADDRESS__
inline constexpr bool sanitized = true;
#else
inline constexpr bool sanitized = false;
#endif

#ifdef __SANITIZE_THREAD__
inline constexpr bool threads_sanitized = true;
#else
inline constexpr bool threads_sanitized = false;
#endif

enum Id : std::uint32_t { echo = 1, own = 2, fail = 3, throws = 4, too_much = 5, nobody = 99 };

inline Slot bytes(const std::string &text)
{
    auto message = std::make_unique<BytesValue>();
    message->set_value(text);
    return message;
}

class Function : public FnDispCallbackAbstract {
  public:
    explicit Function(Body body) : FnDispCallbackAbstract(BytesValue::default_instance()), body_(std::move(body)) {}
    int call(const google::protobuf::Message &request, Slot *reply) override
    {
        return body_(dynamic_cast<const BytesValue &>(request).value(), reply);
    }
    FnDispCallbackAbstract *clone() const override { return new Function{*this}; }

  private:
    Body body_;
};

struct Service {
    // `special` is what the function `own` does.
    explicit Service(Body special = [](const std::string &, Slot *) { return 0; })
    {
        dispatcher.setDefaultError(-37);
        dispatcher.registerCallback("TEST", echo, Function{[](const std::string &input, Slot *reply) {
            *reply = bytes(input);
            return static_cast<int>(input.size());
        }});
        dispatcher.registerCallback("TEST", own, Function{std::move(special)});
        dispatcher.registerCallback("TEST", fail, Function{[](const std::string &, Slot *) { return -5; }});
        dispatcher.registerCallback("TEST", throws, Function{[](const std::string &, Slot *reply) -> int {
            *reply = bytes("lost");
            throw std::runtime_error{"thrown"};
        }});
        dispatcher.registerCallback("TEST", too_much, Function{[](const std::string &, Slot *reply) {
            *reply = bytes(std::string(std::size_t{17} << 20, 'x'));
            return 5;
        }});
    }
    int start() { return dispatcher.bind(request_endpoint, false) == 0 ? server.addDispatcher(&dispatcher) : -1; }

    RpcServer server{"TestRpcServer"};
    RepKeepAliveDispatcher dispatcher{keep_alive_endpoint, "test-alive"};
};

// A process that serves from enter() until it is killed. `own` tells the parent and then waits for ever. It is forked
// before a client's threads exist: a sanitizer's allocator that one of them holds would stay locked in it for ever.
inline std::unique_ptr<Peer> understudy()
{
    return std::make_unique<Peer>([](Link &link) {
        link.wait();
        Service service{[&](const std::string &, Slot *) {
            link.tell();
            return ::pause();
        }};
        if (service.start() == 0) {
            link.tell();
            service.server.wait();
        }
    });
}

inline void enter(const Peer &daemon)
{
    daemon.go();
    EXPECT_TRUE(daemon.await());
}

inline std::unique_ptr<Peer> start_daemon()
{
    auto daemon = understudy();
    enter(*daemon);
    return daemon;
}

// A message type of each function, since a client finds the way by type.
template<typename Client = ReqKeepAliveClient>
struct Caller : Client {
    template<typename... Endpoints>
    explicit Caller(Endpoints... endpoints) : Client(endpoints...)
    {
        this->setFailureResult(-1000);
    }
    int call(Id id, const std::string &input, Slot *reply = nullptr, std::uint32_t timeout_s = 10)
    {
        this->registerRequest(BytesValue::default_instance(), "TEST", id, BytesValue::default_instance());
        return this->request(*bytes(input), reply, timeout_s);
    }
    std::string echoed(const std::string &input)
    {
        Slot reply;
        const int result = call(echo, input, &reply);
        return result == static_cast<int>(input.size()) && reply
                   ? dynamic_cast<const BytesValue &>(*reply).value()
                   : "no echo: result " + std::to_string(result) + ", errno " + std::to_string(errno);
    }
};

struct KeptAlive : Caller<> {
    KeptAlive() : Caller(request_endpoint, keep_alive_endpoint) {}
};

} // namespace switchcfg::testing

#endif
