// SPDX-License-Identifier: Apache-2.0
// What a server may send before the reply to a request: the input is a row of frames, some of them with the head of a
// reply to that very request, whole or in parts. Then comes the right reply, and the client must be usable for the
// next.
#include "fuzz/byte_source.h"
#include "fuzz/fuzz_input.h"
#include "rpc/zmq_handles.h"

#include <array>
#include <atomic>
#include <memory>
#include <switchcfg/funclist.h>
#include <switchcfg/vxlog.h>
#include <thread>
#include <vector>

void vxlog(int /*level*/, const char * /*format*/, ...) {}

using namespace switchcfg::fuzz;
using namespace switchcfg::rpc;

namespace {

constexpr std::uint64_t our_instance = 7;
constexpr int right_result = 4242;
constexpr const char *service = "S";
constexpr std::uint32_t message_id = 1;

// Lives as long as the process: its thread ends with it.
class Server {
  public:
    Server()
        : context_(new_context()), requests_(::zmq_socket(context_.get(), ZMQ_ROUTER)),
          probes_(::zmq_socket(context_.get(), ZMQ_ROUTER))
    {
        const int unbounded = 0; // a client that gets no turn for a while must not lose the right reply
        for (void *const socket : {requests_.get(), probes_.get()}) {
            require(::zmq_setsockopt(socket, ZMQ_SNDHWM, &unbounded, sizeof unbounded) == 0);
            require(::zmq_bind(socket, "tcp://127.0.0.1:*") == 0);
        }
        std::thread{[this] { serve(); }}.detach();
    }

    std::string requests() const { return endpoint(requests_.get()); }
    std::string probes() const { return endpoint(probes_.get()); }

    // For the next request; what comes after it gets the right reply at once.
    void say(ByteSource script)
    {
        script_ = script;
        tempted_ = false;
        has_script_ = true;
    }
    // Whether the script held a reply that the client may take.
    bool tempted() const { return tempted_; }

  private:
    static std::string endpoint(void *socket)
    {
        std::array<char, 64> text{};
        std::size_t size = text.size();
        require(::zmq_getsockopt(socket, ZMQ_LAST_ENDPOINT, text.data(), &size) == 0);
        return text.data();
    }

    void serve()
    {
        std::array<zmq_pollitem_t, 2> items{{{requests_.get(), -1, ZMQ_POLLIN, 0}, {probes_.get(), -1, ZMQ_POLLIN, 0}}};
        for (;;) {
            (void)::zmq_poll(items.data(), items.size(), -1);
            Message sender;
            Message frame;
            if (items[1].revents != 0 && take(probes_.get(), sender, frame)) {
                const auto probe = parse_probe(frame.bytes());
                require(probe.has_value());
                std::array<std::uint8_t, alive_size> answer{};
                write_alive(answer.data(), {probe->nonce, our_instance});
                send(probes_.get(), sender, answer, 0);
            }
            if (items[0].revents != 0 && take(requests_.get(), sender, frame)) {
                const auto request = parse_request(frame.bytes());
                require(request.has_value());
                if (has_script_.exchange(false)) {
                    play(sender, request->sequence);
                }
                std::array<std::uint8_t, reply_head> reply{};
                write_reply_head(reply.data(), {right_result, request->sequence, our_instance, ReplyStatus::done, {}});
                send(requests_.get(), sender, reply, 0);
            }
        }
    }

    void play(Message &sender, std::uint64_t sequence)
    {
        while (!script_.empty()) {
            const std::uint8_t kind = script_.byte();
            std::string bytes(script_.byte(), '\0');
            script_.fill(bytes.data(), bytes.size());
            std::vector<std::uint8_t> frame(bytes.begin(), bytes.end());
            if (kind % 4 != 0) {
                const auto status = static_cast<ReplyStatus>(script_.byte());
                const std::uint64_t far = kind % 4 == 1 ? 0 : script_.byte();
                frame.insert(frame.begin(), reply_head, 0);
                write_reply_head(frame.data(),
                    {static_cast<std::int32_t>(script_.word()), sequence - far, script_.word(), status, {}});
                tempted_ = tempted_ || far == 0;
            }
            send(requests_.get(), sender, frame, kind >= 192 ? ZMQ_SNDMORE : 0);
            if (kind >= 192) {
                (void)::zmq_send(requests_.get(), bytes.data(), bytes.size(), 0);
            }
        }
    }

    static bool take(void *socket, Message &sender, Message &frame)
    {
        return ::zmq_msg_recv(sender.get(), socket, 0) != -1 && receive_single(socket, frame, 0) == Received::frame;
    }

    static void send(void *socket, Message &sender, Bytes frame, int flags)
    {
        require(::zmq_send(socket, sender.data(), sender.size(), ZMQ_SNDMORE) != -1);
        require(::zmq_send(socket, frame.data(), frame.size(), flags) != -1);
    }

    Context context_;
    Socket requests_;
    Socket probes_;
    ByteSource script_{nullptr, 0};
    std::atomic<bool> has_script_ = false;
    std::atomic<bool> tempted_ = false;
};

ReqKeepAliveClient *new_client(const Server &server)
{
    auto *const client = new ReqKeepAliveClient{server.requests(), server.probes()};
    const auto &reply = FunclistBcmdFuncResponseData::default_instance();
    require(client->registerRequest(FunclistBcmdFuncGeneral::default_instance(), service, message_id, reply) == 0);
    return client;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static Server &server = *new Server;
    static ReqKeepAliveClient &client = *new_client(server);
    FunclistBcmdFuncGeneral request;
    request.set_type(BCMD_GENERAL_ECHO);
    request.set_arg1(1);
    request.set_arg2(2);
    request.set_arg3(3);
    request.set_arg4(4);
    std::unique_ptr<google::protobuf::Message> reply;
    server.say({data, size});
    const int result = client.request(request, &reply, 30);
    require(result == right_result || server.tempted());
    require(!reply || reply->IsInitialized());
    require(client.request(request, &reply, 30) == right_result && !reply);
    return 0;
}
