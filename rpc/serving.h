// SPDX-License-Identifier: Apache-2.0
// One dispatcher at work: its sockets, its routes, and two threads. One takes requests and runs the callbacks; the
// other, the watch, answers keep-alive probes and guards the connections, whatever the first is busy with.
#ifndef SWITCHCFG_RPC_SERVING_H
#define SWITCHCFG_RPC_SERVING_H

#include "rpc/connection_guard.h"
#include "rpc/zmq_handles.h"

#include <atomic>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <switchcfg/funclist_rpc.h>
#include <sys/types.h>
#include <thread>
#include <vector>

namespace switchcfg::rpc {

class Serving : public std::enable_shared_from_this<Serving> {
  public:
    static std::shared_ptr<Serving> create() noexcept; // null with errno
    ~Serving();
    Serving(const Serving &) = delete;
    Serving &operator=(const Serving &) = delete;

    // Before start(); these give 0, or -1 with errno, and may throw for want of memory.
    int bind(const std::string &endpoint, bool keep_trying);
    int serve_keep_alive(const std::string &endpoint, const std::string &name);
    int add_route(const std::string &service, std::uint32_t message_id, const FnDispCallbackAbstract &callback);
    void set_default_error(int result) noexcept { default_error_ = result; }
    int start(const std::string &name);

    void set_keep_alive_time(std::uint32_t *place) noexcept;

    void request_stop() noexcept;
    // Stops and waits for the threads; from a callback or in a forked child it only does what can be done there.
    void finish() noexcept;

    // Whether the calling thread runs a callback of some dispatcher.
    static bool on_serving_thread() noexcept;

  private:
    struct Route {
        std::string service;
        std::uint32_t message_id;
        std::unique_ptr<FnDispCallbackAbstract> callback;
    };
    struct Held {
        Message sender;
        Message frame;
    };
    // A socket that peers reach, and where it is to be bound.
    struct Port {
        Socket socket;
        Progress progress;
        std::unique_ptr<ConnectionGuard> guard;
        std::string endpoint;
        bool bound = false;
    };
    enum class Got { message, nothing, garbage };
    static constexpr int bind_retry_ms = 200;

    Serving() = default;
    bool open_port(Port &port, const char *name, std::size_t most_bytes, std::uint64_t connection_limit, int queue);
    static int bind_port(Port &port, const std::string &endpoint, bool keep_trying);
    static Got receive(Port &port, Message &sender, Message &frame, int flags) noexcept;
    bool stays_unbound(Port &port) noexcept;

    void serve_requests() noexcept;
    Got next_request(Message &sender, Message &frame) noexcept;
    void serve(std::unique_lock<std::mutex> &use, Message &sender, Message &frame) noexcept;
    int run_callback(FnDispCallbackAbstract &callback, const Request &request, ReplyStatus &status,
        std::unique_ptr<google::protobuf::Message> &reply) const noexcept;
    void send_reply(Message &sender, Reply reply, const google::protobuf::Message *message) noexcept;
    FnDispCallbackAbstract *route_of(const Request &request) const noexcept;

    void watch() noexcept;
    void answer_probes() noexcept;
    void take_waiting_requests() noexcept;

    const pid_t process_ = ::getpid();
    const std::uint64_t instance_ = random_number();
    std::vector<Route> routes_;
    int default_error_ = -1;

    Context context_;
    Port requests_;
    Port keep_alive_;
    Socket waker_; // a message from here ends a wait for requests
    int watch_waker_ = -1;

    // Whoever holds it may use the request socket and what is held back: the request thread but for the time of a
    // callback, when the watch takes requests off the socket so that nothing piles up where it is not counted.
    std::mutex use_;
    std::deque<Held> held_;
    std::size_t held_bytes_ = 0;
    unsigned sent_ = 0;
    std::uint64_t last_sent_ms_ = 0;

    std::mutex keep_alive_time_use_;
    std::uint32_t *keep_alive_time_ = nullptr;

    std::mutex stop_use_;
    std::atomic<bool> stopping_{false};
    bool started_ = false;
    std::string watch_name_;
    std::mutex finish_use_;
    // On the heap: in a forked child there is no thread behind them, and nothing can be done to them.
    std::unique_ptr<std::thread> request_thread_;
    std::unique_ptr<std::thread> watch_thread_;
};

} // namespace switchcfg::rpc

#endif
