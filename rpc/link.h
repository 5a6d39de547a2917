// SPDX-License-Identifier: Apache-2.0
// A client's side: two sockets, one request at a time.
#ifndef SWITCHCFG_RPC_LINK_H
#define SWITCHCFG_RPC_LINK_H

#include "rpc/zmq_handles.h"

#include <google/protobuf/message.h>
#include <memory>
#include <mutex>
#include <string>
#include <sys/types.h>
#include <vector>

namespace switchcfg::rpc {

class Link {
  public:
    Link(std::string endpoint, std::string keep_alive_endpoint); // the latter empty: no keep-alive
    ~Link();
    Link(const Link &) = delete;
    Link &operator=(const Link &) = delete;

    // Opens what is closed; 0 or an errno value.
    int open() noexcept;

    void add_route(const google::protobuf::Message &request, const std::string &service, std::uint32_t message_id,
        const google::protobuf::Message &reply);

    // 0 with the server's result, or an errno value. May throw for want of memory; the link is usable after that.
    int exchange(const google::protobuf::Message &request, std::unique_ptr<google::protobuf::Message> *reply_slot,
        std::uint32_t timeout_s, int &ret_result);

    std::mutex use; // around everything but construction and destruction

    static int connect(void *socket, const std::string &endpoint) noexcept; // 0, or -1 with errno

  private:
    struct Route {
        const google::protobuf::Descriptor *request;
        const google::protobuf::Message *reply;
        std::uint32_t message_id;
        std::string service;
    };
    // What an attempt came to: an errno value, or one of these.
    static constexpr int replied = 0;
    static constexpr int try_again = -1;

    bool keeps_alive() const noexcept { return !keep_alive_endpoint_.empty(); }
    const Route *route_of(const google::protobuf::Message &request) const noexcept;
    void leave_parents_links() noexcept;
    void close() noexcept;

    int find_server(std::uint64_t deadline) noexcept;
    int attempt(const Route &route, const google::protobuf::Message &request, std::size_t payload,
        std::uint64_t deadline, Message &frame, Reply &ret_reply) noexcept;
    int send(const Route &route, const google::protobuf::Message &request, std::size_t payload, std::uint64_t deadline,
        bool just_found) noexcept;
    int await_reply(std::uint64_t deadline, Message &frame, Reply &ret_reply) noexcept;
    int await_reply_or_end(std::uint64_t deadline, Message &frame, Reply &ret_reply) noexcept;
    bool take_reply(Message &frame, Reply &ret_reply, int flags) noexcept;
    bool send_probe() noexcept;
    std::uint64_t take_answers(std::uint64_t first_nonce) noexcept;

    const std::string endpoint_;
    const std::string keep_alive_endpoint_;
    std::vector<Route> routes_;

    pid_t process_;
    Context context_;
    Socket requests_;
    Socket keep_alive_;
    int receive_wait_ms_ = -1; // as set on requests_

    std::uint64_t sequence_;
    std::uint64_t nonce_;
    std::uint64_t instance_ = 0; // of the server the sockets lead to; 0: not known
};

} // namespace switchcfg::rpc

#endif
