// SPDX-License-Identifier: Apache-2.0
// A request and its reply between processes, beside bare ZeroMQ request/reply with as many bytes each way.
#include <switchcfg/funclist_rpc.h>

#include <benchmark/benchmark.h>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <google/protobuf/wrappers.pb.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zmq.h>

namespace {

using google::protobuf::BytesValue;

constexpr const char *request_endpoint = "tcp://127.0.0.1:20211";
constexpr const char *keep_alive_endpoint = "tcp://127.0.0.1:20212";
constexpr const char *bare_endpoint = "tcp://127.0.0.1:20213";
// What a request adds to its payload: the head, the service name, a field number and a length.
constexpr std::size_t request_overhead = 33 + 4 + 3;

// A server in a process of its own, which says over a pipe that it listens.
class Server {
  public:
    explicit Server(void (*serve)(int ready))
    {
        int ready[2];
        if (::pipe(ready) != 0) {
            std::abort();
        }
        pid_ = ::fork();
        if (pid_ == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            serve(ready[1]);
            ::_exit(1);
        }
        ::close(ready[1]);
        char byte = 0;
        if (::read(ready[0], &byte, 1) != 1) {
            std::abort();
        }
        ::close(ready[0]);
    }
    ~Server()
    {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    Server(const Server &) = delete;
    Server &operator=(const Server &) = delete;

  private:
    pid_t pid_;
};

void serve_bare(int ready)
{
    void *const context = ::zmq_ctx_new();
    void *const socket = ::zmq_socket(context, ZMQ_REP);
    ::zmq_bind(socket, bare_endpoint);
    (void)!::write(ready, "", 1);
    zmq_msg_t message;
    ::zmq_msg_init(&message);
    for (;;) {
        ::zmq_msg_recv(&message, socket, 0);
        ::zmq_msg_send(&message, socket, 0);
    }
}

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

void serve_rpc(int ready)
{
    RpcServer server{"bench"};
    RepKeepAliveDispatcher dispatcher{keep_alive_endpoint, "bench-alive"};
    dispatcher.registerCallback("ECHO", 1, Echo{});
    if (dispatcher.bind(request_endpoint, false) == 0 && server.addDispatcher(&dispatcher) == 0) {
        (void)!::write(ready, "", 1);
        server.wait();
    }
}

void request_reply_floor(benchmark::State &state)
{
    const Server server{serve_bare};
    void *const context = ::zmq_ctx_new();
    void *const socket = ::zmq_socket(context, ZMQ_REQ);
    const int linger = 0;
    ::zmq_setsockopt(socket, ZMQ_LINGER, &linger, sizeof linger);
    ::zmq_connect(socket, bare_endpoint);
    const std::string bytes(static_cast<std::size_t>(state.range(0)) + request_overhead, 'x');
    zmq_msg_t reply;
    ::zmq_msg_init(&reply);
    for (auto _ : state) {
        zmq_msg_t request;
        ::zmq_msg_init_size(&request, bytes.size());
        std::memcpy(::zmq_msg_data(&request), bytes.data(), bytes.size());
        ::zmq_msg_send(&request, socket, 0);
        if (::zmq_msg_recv(&reply, socket, 0) != static_cast<int>(bytes.size())) {
            state.SkipWithError("the exchange failed");
            break;
        }
    }
    ::zmq_msg_close(&reply);
    ::zmq_close(socket);
    ::zmq_ctx_term(context);
}
BENCHMARK(request_reply_floor)->Arg(64)->Arg(4096)->UseRealTime()->Unit(benchmark::kMicrosecond);

void request_reply(benchmark::State &state)
{
    const Server server{serve_rpc};
    ReqKeepAliveClient client{request_endpoint, keep_alive_endpoint};
    client.registerRequest(BytesValue::default_instance(), "ECHO", 1, BytesValue::default_instance());
    BytesValue request;
    request.set_value(std::string(static_cast<std::size_t>(state.range(0)), 'x'));
    std::unique_ptr<google::protobuf::Message> reply;
    for (auto _ : state) {
        if (client.request(request, &reply, 10) != 0 ||
            static_cast<const BytesValue &>(*reply).value().size() != request.value().size()) {
            state.SkipWithError("the exchange failed");
            break;
        }
    }
}
BENCHMARK(request_reply)->Arg(64)->Arg(4096)->UseRealTime()->Unit(benchmark::kMicrosecond);

} // namespace
