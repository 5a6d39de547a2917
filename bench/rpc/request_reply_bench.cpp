// SPDX-License-Identifier: Apache-2.0
// A request and its reply between processes, beside bare ZeroMQ request/reply with as many bytes each way.
#include <switchcfg/funclist_rpc.h>

#include "bench/support/bare_zeromq.h"
#include "bench/support/compare.h"
#include "bench/support/served.h"

#include <google/protobuf/wrappers.pb.h>

namespace {

using namespace switchcfg::bench;

using google::protobuf::BytesValue;

constexpr const char *request_endpoint = "tcp://127.0.0.1:20211";
constexpr const char *keep_alive_endpoint = "tcp://127.0.0.1:20212";
// What a request adds to its payload: the head, the service name, a field number and a length.
constexpr std::size_t request_overhead = 33 + 4 + 3;

class Echo : public FnDispCallbackAbstract {
  public:
    Echo() : FnDispCallbackAbstract(BytesValue::default_instance()) {}
    int call(const google::protobuf::Message &request, std::unique_ptr<google::protobuf::Message> *reply) override
    {
        *reply = std::make_unique<BytesValue>(static_cast<const BytesValue &>(request));
        return 0;
    }
    FnDispCallbackAbstract *clone() const override { return new Echo{*this}; }
};

void serve()
{
    RpcServer server{"bench"};
    RepKeepAliveDispatcher dispatcher{keep_alive_endpoint, "bench-alive"};
    dispatcher.registerCallback("ECHO", 1, Echo{});
    if (dispatcher.bind(request_endpoint, false) == 0 && server.addDispatcher(&dispatcher) == 0) {
        serving();
        server.wait();
    }
}
const ServeAs rpc{"rpc", serve};

void request_reply(benchmark::State &state)
{
    const auto size = static_cast<std::size_t>(state.range(0));
    const Served bare_server{"bare-zeromq"};
    const Served server{"rpc"};
    BareZeromq bare;
    ReqKeepAliveClient client{request_endpoint, keep_alive_endpoint};
    client.registerRequest(BytesValue::default_instance(), "ECHO", 1, BytesValue::default_instance());
    BytesValue request;
    request.set_value(std::string(size, 'x'));
    std::unique_ptr<google::protobuf::Message> reply;
    compare(
        state, {"request and reply", "bare ZeroMQ with the same bytes", 1.15, Row::Clock::wall},
        [&] { return bare.exchange(size + request_overhead, size + request_overhead); },
        [&] {
            return client.request(request, &reply, 10) == 0 &&
                   static_cast<const BytesValue &>(*reply).value().size() == size;
        });
}
SWITCHCFG_ROW(request_reply)->ArgName("bytes")->Arg(64)->Arg(4096);

} // namespace
