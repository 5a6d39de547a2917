// SPDX-License-Identifier: Apache-2.0
#include "rpc/link.h"

#include <cerrno>
#include <switchcfg/funclist_rpc.h>

using switchcfg::rpc::Link;

namespace {

std::unique_ptr<Link> new_link(const std::string &endpoint, const std::string &keep_alive_endpoint) noexcept
{
    try {
        auto link = std::make_unique<Link>(endpoint, keep_alive_endpoint);
        (void)link->open(); // what cannot be opened now is tried again by the first request
        return link;
    } catch (...) {
        return nullptr;
    }
}

} // namespace

ReqClient::ReqClient(const std::string &endpoint) noexcept : link_(new_link(endpoint, {})) {}

ReqClient::ReqClient(const std::string &endpoint, const std::string &keep_alive_endpoint) noexcept
    : link_(new_link(endpoint, keep_alive_endpoint))
{
}

ReqClient::~ReqClient() = default;

int ReqClient::registerRequest(const google::protobuf::Message &request, const std::string &service,
    std::uint32_t message_id, const google::protobuf::Message &reply) noexcept
{
    if (service.empty() || service.size() > switchcfg::rpc::max_service) {
        errno = EINVAL;
        return -1;
    }
    try {
        if (link_) {
            const std::lock_guard hold{link_->use};
            link_->add_route(request, service, message_id, reply);
            return 0;
        }
    } catch (...) {
        (void)0; // the result says it
    }
    errno = ENOMEM;
    return -1;
}

void ReqClient::setFailureResult(int result) noexcept
{
    failure_result_ = result;
}

int ReqClient::failureResult() const noexcept
{
    return failure_result_;
}

int ReqClient::request(const google::protobuf::Message &request, std::unique_ptr<google::protobuf::Message> *reply_slot,
    std::uint32_t timeout_s) noexcept
{
    int result = 0;
    int why = ENOMEM;
    try {
        if (reply_slot != nullptr) {
            reply_slot->reset();
        }
        if (link_) {
            const std::lock_guard hold{link_->use};
            why = link_->exchange(request, reply_slot, timeout_s, result);
        }
    } catch (...) {
        why = ENOMEM;
    }
    errno = why;
    return why == 0 ? result : failure_result_;
}

ReqKeepAliveClient::ReqKeepAliveClient(
    const std::string &request_endpoint, const std::string &keep_alive_endpoint) noexcept
    : ReqClient(request_endpoint, keep_alive_endpoint)
{
}

ReqKeepAliveClient::~ReqKeepAliveClient() = default;

int ReqKeepAliveClient::link_socket(void *socket, const std::string &endpoint) noexcept
{
    return Link::connect(socket, endpoint);
}
