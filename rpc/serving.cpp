// SPDX-License-Identifier: Apache-2.0
#include "rpc/serving.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <pthread.h>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

namespace switchcfg::rpc {
namespace {

constexpr int replies_queued = 32; // for one peer; what comes on top is dropped
constexpr const char *waker_address = "inproc://waker";
// What peers may make the library under us keep; a request that waits its turn counts.
constexpr std::uint64_t pending_limit = 2 * std::uint64_t{max_frame};
constexpr std::uint64_t pending_limit_total = std::uint64_t{64} << 20;
constexpr std::size_t handshake_size = 1024; // longer than any probe; the limit counts for what is said first too
constexpr std::uint64_t probes_pending_limit = 65536;
constexpr std::uint64_t farewell_ms = 200; // for the peer of the last reply to take it

thread_local bool serving_here = false;

void name_thread(std::string name) noexcept
{
    name.resize(std::min<std::size_t>(name.size(), 15));
    (void)::pthread_setname_np(::pthread_self(), name.c_str());
}

// While it lives, threads that are started leave signals to the others, but for faults and thread dumps.
class SignalsElsewhere {
  public:
    SignalsElsewhere()
    {
        sigset_t mask;
        ::sigfillset(&mask);
        for (const int here : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP, SIGSYS, SIGRTMIN}) {
            ::sigdelset(&mask, here);
        }
        ::pthread_sigmask(SIG_BLOCK, &mask, &before_);
    }
    ~SignalsElsewhere() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsElsewhere(const SignalsElsewhere &) = delete;
    SignalsElsewhere &operator=(const SignalsElsewhere &) = delete;

  private:
    sigset_t before_{};
};

} // namespace

bool Serving::on_serving_thread() noexcept
{
    return serving_here;
}

std::shared_ptr<Serving> Serving::create() noexcept
try {
    std::shared_ptr<Serving> serving{new Serving};
    serving->watch_waker_ = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    serving->context_ = new_context();
    if (serving->watch_waker_ == -1 || !serving->context_ ||
        !serving->open_port(serving->requests_, "request-events", max_frame, pending_limit, 4) ||
        ::zmq_bind(serving->requests_.socket.get(), waker_address) != 0) {
        return nullptr;
    }
    serving->waker_.reset(::zmq_socket(serving->context_.get(), ZMQ_DEALER));
    void *const waker = serving->waker_.get();
    if (waker == nullptr || !set_option(waker, ZMQ_LINGER, 0) || ::zmq_connect(waker, waker_address) != 0) {
        return nullptr;
    }
    return serving;
} catch (...) {
    errno = ENOMEM;
    return nullptr;
}

Serving::~Serving()
{
    finish();
    if (::getpid() != process_) {
        // The threads that these belong to are the parent's.
        (void)request_thread_.release();
        (void)watch_thread_.release();
        (void)waker_.release();
        for (Port *const port : {&requests_, &keep_alive_}) {
            (void)port->guard.release();
            (void)port->socket.release();
        }
        (void)context_.release();
    }
    if (watch_waker_ != -1) {
        ::close(watch_waker_);
    }
}

bool Serving::open_port(Port &port, const char *name, std::size_t most_bytes, std::uint64_t connection_limit, int queue)
{
    port.socket.reset(::zmq_socket(context_.get(), ZMQ_ROUTER));
    void *const socket = port.socket.get();
    port.guard = std::make_unique<ConnectionGuard>(port.progress, connection_limit, pending_limit_total);
    return socket != nullptr && set_option(socket, ZMQ_LINGER, 0) && set_option(socket, ZMQ_RCVHWM, queue) &&
           set_option(socket, ZMQ_SNDHWM, replies_queued) && set_option(socket, ZMQ_HANDSHAKE_IVL, 5000) &&
           set_size_limit(socket, most_bytes) && port.guard->watch(context_.get(), socket, name);
}

int Serving::bind_port(Port &port, const std::string &endpoint, bool keep_trying)
{
    port.endpoint = endpoint;
    port.bound = ::zmq_bind(port.socket.get(), endpoint.c_str()) == 0;
    if (port.bound || (keep_trying && errno == EADDRINUSE)) {
        return 0;
    }
    port.endpoint.clear();
    return -1;
}

int Serving::bind(const std::string &endpoint, bool keep_trying)
{
    if (started_ || stopping_ || !requests_.endpoint.empty()) {
        errno = EBUSY;
        return -1;
    }
    return bind_port(requests_, endpoint, keep_trying);
}

int Serving::serve_keep_alive(const std::string &endpoint, const std::string &name)
{
    watch_name_ = name;
    return open_port(keep_alive_, "keep-alive-events", handshake_size, probes_pending_limit, 16)
               ? bind_port(keep_alive_, endpoint, true)
               : -1;
}

int Serving::add_route(const std::string &service, std::uint32_t message_id, const FnDispCallbackAbstract &callback)
{
    if (started_ || stopping_ || service.empty() || service.size() > max_service) {
        errno = started_ || stopping_ ? EBUSY : EINVAL;
        return -1;
    }
    Route route{service, message_id, std::unique_ptr<FnDispCallbackAbstract>{callback.clone()}};
    for (Route &known : routes_) {
        if (known.service == service && known.message_id == message_id) {
            known = std::move(route);
            return 0;
        }
    }
    routes_.push_back(std::move(route));
    return 0;
}

int Serving::start(const std::string &name)
{
    if (started_ || stopping_) {
        errno = started_ ? EBUSY : ESHUTDOWN;
        return -1;
    }
    if (requests_.endpoint.empty()) {
        errno = EDESTADDRREQ;
        return -1;
    }
    try {
        const auto self = shared_from_this();
        {
            const SignalsElsewhere mask;
            watch_thread_ = std::make_unique<std::thread>([self, name] {
                name_thread(self->watch_name_.empty() ? name : self->watch_name_);
                self->watch();
            });
        }
        started_ = true; // from here on finish() has something to end
        request_thread_ = std::make_unique<std::thread>([self, name] {
            name_thread(name);
            serving_here = true;
            self->serve_requests();
            // Not earlier: who waits for the last callback shall see that it is still worked on.
            (void)::eventfd_write(self->watch_waker_, 1);
        });
    } catch (const std::system_error &) {
        (void)::eventfd_write(watch_waker_, 1);
        finish();
        errno = EAGAIN;
        return -1;
    }
    return 0;
}

void Serving::set_keep_alive_time(std::uint32_t *place) noexcept
{
    const std::lock_guard hold{keep_alive_time_use_};
    keep_alive_time_ = place;
}

void Serving::request_stop() noexcept
{
    if (::getpid() != process_) {
        return;
    }
    const std::lock_guard hold{stop_use_};
    if (!stopping_.exchange(true)) {
        while (::zmq_send(waker_.get(), nullptr, 0, ZMQ_DONTWAIT) == -1 && errno == EINTR) {
        }
    }
}

void Serving::finish() noexcept
{
    if (::getpid() != process_) {
        return;
    }
    if (context_ && waker_) {
        request_stop();
    }
    // A callback that ends the process runs the destructors of its statics: it must not wait for itself.
    if (serving_here) {
        return;
    }
    const std::lock_guard hold{finish_use_};
    for (auto *const thread : {&request_thread_, &watch_thread_}) {
        if (*thread) {
            (*thread)->join();
            thread->reset();
        }
    }
    if (started_) {
        // The last reply may still be on its way. A peer to which it comes together with the end of the connection
        // finds only the end: ZeroMQ drops what a socket with ZMQ_IMMEDIATE has not handed out when its connection
        // ends.
        if (const std::uint64_t age = monotonic_ms() - last_sent_ms_; age < farewell_ms) {
            std::this_thread::sleep_for(std::chrono::milliseconds{farewell_ms - age});
        }
        set_option(requests_.socket.get(), ZMQ_LINGER, 1000);
        waker_.reset();
        for (Port *const port : {&requests_, &keep_alive_}) {
            port->guard.reset();
            port->socket.reset();
        }
        context_.reset();
        routes_.clear();
        started_ = false;
    }
}

} // namespace switchcfg::rpc
