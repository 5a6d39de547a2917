// SPDX-License-Identifier: Apache-2.0
#include "rpc/serving.h"

#include <cerrno>
#include <condition_variable>
#include <new>

namespace switchcfg::rpc {

class ServerState {
  public:
    explicit ServerState(const std::string &given) : name(given) {}

    const pid_t process = ::getpid();
    const std::string name;
    std::mutex use;
    std::condition_variable stopped;
    bool stopping = false;
    std::vector<std::shared_ptr<Serving>> servings;
};

} // namespace switchcfg::rpc

using switchcfg::rpc::ServerState;
using switchcfg::rpc::Serving;

namespace {

std::shared_ptr<ServerState> new_state(const std::string &name) noexcept
{
    try {
        return std::make_shared<ServerState>(name);
    } catch (...) {
        return nullptr;
    }
}

} // namespace

RpcServer::RpcServer(const std::string &name) noexcept : state_(new_state(name)) {}

RpcServer::~RpcServer()
{
    if (state_ && ::getpid() != state_->process) {
        // A forked child: the parent's threads hold and wait for what is in there, so it cannot be destroyed.
        (void)new (std::nothrow) std::shared_ptr<ServerState>{std::move(state_)};
        return;
    }
    stop();
    wait();
}

int RpcServer::addDispatcher(AbstractZmqDispatcher *dispatcher) noexcept
{
    if (dispatcher == nullptr) {
        errno = EINVAL;
        return -1;
    }
    if (!state_ || !dispatcher->serving_) {
        errno = ENOMEM;
        return -1;
    }
    try {
        const std::lock_guard hold{state_->use};
        if (state_->stopping) {
            errno = ESHUTDOWN;
            return -1;
        }
        state_->servings.push_back(dispatcher->serving_);
        if (dispatcher->serving_->start(state_->name) == 0) {
            return 0;
        }
        const int why = errno;
        state_->servings.pop_back();
        errno = why;
    } catch (...) {
        errno = ENOMEM;
    }
    return -1;
}

void RpcServer::wait() noexcept
{
    // A callback that waited for its own end would wait for ever.
    if (!state_ || Serving::on_serving_thread() || ::getpid() != state_->process) {
        return;
    }
    const std::shared_ptr<ServerState> state = state_; // outlives a server that another thread destroys
    std::unique_lock hold{state->use};
    state->stopped.wait(hold, [&] { return state->stopping; });
    hold.unlock();
    for (const auto &serving : state->servings) { // none comes or goes any more
        serving->finish();
    }
}

void RpcServer::stop() noexcept
{
    if (!state_ || ::getpid() != state_->process) {
        return;
    }
    const std::lock_guard hold{state_->use};
    state_->stopping = true;
    for (const auto &serving : state_->servings) {
        serving->request_stop();
    }
    state_->stopped.notify_all();
}
