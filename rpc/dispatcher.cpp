// SPDX-License-Identifier: Apache-2.0
#include "rpc/serving.h"

#include <cerrno>

namespace {

// Runs what may throw for want of memory.
template<typename Work>
int guarded(const std::shared_ptr<switchcfg::rpc::Serving> &serving, Work &&work) noexcept
{
    try {
        if (serving) {
            return work();
        }
    } catch (...) {
        (void)0; // the result says it
    }
    errno = ENOMEM;
    return -1;
}

} // namespace

FnDispCallbackAbstract::~FnDispCallbackAbstract() = default;

AbstractZmqDispatcher::AbstractZmqDispatcher() noexcept : serving_(switchcfg::rpc::Serving::create()) {}

AbstractZmqDispatcher::~AbstractZmqDispatcher()
{
    if (serving_) {
        serving_->finish();
    }
}

int AbstractZmqDispatcher::bind(const std::string &endpoint, bool keep_trying) noexcept
{
    return guarded(serving_, [&] { return serving_->bind(endpoint, keep_trying); });
}

RepDispatcher::RepDispatcher() noexcept = default;

RepDispatcher::~RepDispatcher() = default;

int RepDispatcher::registerCallback(
    const std::string &service, std::uint32_t message_id, const FnDispCallbackAbstract &callback) noexcept
{
    return guarded(serving_, [&] { return serving_->add_route(service, message_id, callback); });
}

void RepDispatcher::setDefaultError(int result) noexcept
{
    if (serving_) {
        serving_->set_default_error(result);
    }
}

RepKeepAliveDispatcher::RepKeepAliveDispatcher(const std::string &keep_alive_endpoint, const std::string &name) noexcept
{
    if (guarded(serving_, [&] { return serving_->serve_keep_alive(keep_alive_endpoint, name); }) != 0) {
        // Without it no client would ever find the daemon: better nothing works, and bind() says so.
        serving_.reset();
    }
}

RepKeepAliveDispatcher::~RepKeepAliveDispatcher() = default;

void RepKeepAliveDispatcher::setKeepAliveTime(std::uint32_t *place) noexcept
{
    if (serving_) {
        serving_->set_keep_alive_time(place);
    }
}
