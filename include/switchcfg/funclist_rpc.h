/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file funclist_rpc.h
 * Request and reply between processes of the switch, over ZeroMQ: what the function-list calls stand on, usable for
 * other services of the same kind. C++. Part of libswitchcfg-funclist.
 *
 * A server routes requests by service name and message id to callbacks and sends back a signed result and, where the
 * callback made one, a reply message. A client sends one request at a time and waits for its reply. Both messages are
 * protobuf messages. docs/rpc-protocol.md describes the bytes.
 *
 * What a caller can rely on:
 *  - A reply belongs to the request it is returned for, whatever was late, lost or repeated before.
 *  - A request runs at most once. One that was answered with a failure may still have run, or may run until its
 *    time-out has passed, never later and never in a daemon that was started after the one it was sent to.
 *  - With a keep-alive link, a daemon that is not there, died, hangs as a whole or was restarted while the request was
 *    under way makes the request fail within about 3 seconds; one that is merely busy is waited for.
 *  - A failure leaves the client usable; it finds the daemon again by itself.
 *  - Nothing throws.
 *
 * Limits: 16 MiB for a request and for a reply, 63 bytes for a service name, 256 connections for each endpoint served;
 * what is beyond is refused.
 *
 * fork(2): a client belongs to the process that used it last in this sense: the first request in a child opens links of
 * its own and leaves the parent's alone. Do not fork while another thread is inside a request of the same client. A
 * server stays with the process that created it: create it after daemonize(). In a child its objects do nothing and may
 * be destroyed. Descriptors are close-on-exec.
 */
#ifndef SWITCHCFG_FUNCLIST_RPC_H
#define SWITCHCFG_FUNCLIST_RPC_H

#include <cstdint>
#include <google/protobuf/message.h>
#include <memory>
#include <string>
#include <switchcfg/export.h>

namespace switchcfg::rpc {
class Link;
class Serving;
class ServerState;
} // namespace switchcfg::rpc

/**
 * What a dispatcher calls for a request.
 */
class SWITCHCFG_API FnDispCallbackAbstract {
  public:
    /**
     * @param request an instance of the request's message type, which must live as long as the program: the
     *                default_instance() of a generated class. Requests are parsed into new messages of its type.
     */
    explicit FnDispCallbackAbstract(const google::protobuf::Message &request) noexcept : request_(&request) {}
    virtual ~FnDispCallbackAbstract();

    /**
     * Serve one request, on the thread that serves the dispatcher; what it throws counts as the default error result.
     * @param request of the type given to the constructor
     * @param reply_slot may receive the reply message; never null when a dispatcher calls
     * @return the result the client gets
     */
    virtual int call(
        const google::protobuf::Message &request, std::unique_ptr<google::protobuf::Message> *reply_slot) = 0;

    /**
     * @return a copy allocated with new, the caller's to delete
     */
    virtual FnDispCallbackAbstract *clone() const = 0;

    const google::protobuf::Message &requestType() const noexcept { return *request_; }

  protected:
    FnDispCallbackAbstract(const FnDispCallbackAbstract &) = default;
    FnDispCallbackAbstract &operator=(const FnDispCallbackAbstract &) = default;

  private:
    const google::protobuf::Message *request_;
};

/**
 * A socket that serves requests. It is served from RpcServer::addDispatcher() on, until the server is stopped or the
 * dispatcher destroyed. Its destructor waits for a callback that is running; not to be called from one.
 */
class SWITCHCFG_API AbstractZmqDispatcher {
  public:
    virtual ~AbstractZmqDispatcher();
    AbstractZmqDispatcher(const AbstractZmqDispatcher &) = delete;
    AbstractZmqDispatcher &operator=(const AbstractZmqDispatcher &) = delete;

    /**
     * Bind to an endpoint ("tcp://127.0.0.1:62050"), before the dispatcher is served.
     * @param keep_trying when another process still holds the endpoint, try again while being served, until it is free:
     *                    a daemon that is started while its predecessor still dumps core comes to serve without help.
     *                    False: that is a failure
     * @return 0, or -1 with errno: EADDRINUSE, EINVAL (no endpoint), EBUSY (served already), EMFILE, ...
     */
    int bind(const std::string &endpoint, bool keep_trying) noexcept;

  protected:
    AbstractZmqDispatcher() noexcept;

    /** Null when memory or descriptors ran out at construction; then every operation fails with errno ENOMEM. */
    std::shared_ptr<switchcfg::rpc::Serving> serving_;

    friend class RpcServer;
};

/**
 * A dispatcher that routes requests to callbacks, one at a time, in the order of their arrival. A request that cannot
 * be served (no callback, not a message of its type, reply too long) gets the default error result.
 */
class SWITCHCFG_API RepDispatcher : public AbstractZmqDispatcher {
  public:
    RepDispatcher() noexcept;
    ~RepDispatcher() override;

    /**
     * Route requests to a callback, of which the dispatcher keeps its own clone; replaces an earlier one. Before the
     * dispatcher is served.
     * @param service 1 to 63 bytes
     * @return 0, or -1 with errno: EINVAL (service name), EBUSY (served already), ENOMEM
     */
    int registerCallback(
        const std::string &service, std::uint32_t message_id, const FnDispCallbackAbstract &callback) noexcept;

    /** Result for requests that cannot be served; -1 until set. Before the dispatcher is served. */
    void setDefaultError(int result) noexcept;
};

/**
 * A RepDispatcher that also answers keep-alive probes, on a thread of its own, so that clients can tell a daemon that
 * is busy with a long function from one that is gone.
 */
class SWITCHCFG_API RepKeepAliveDispatcher : public RepDispatcher {
  public:
    /**
     * @param keep_alive_endpoint tried again like an endpoint of bind() with keep_trying
     * @param name of the thread that answers, for ps(1); the first 15 bytes count
     */
    RepKeepAliveDispatcher(const std::string &keep_alive_endpoint, const std::string &name) noexcept;
    ~RepKeepAliveDispatcher() override;

    /**
     * From now on store the time (seconds since 1970) of each keep-alive message sent at a place, which must stay until
     * another call has named another one, or null, or the dispatcher is gone. Any thread. Null at the beginning.
     */
    void setKeepAliveTime(std::uint32_t *place) noexcept;
};

/**
 * Runs dispatchers, each on a thread that inherits the signal mask of the caller of addDispatcher(). The destructor is
 * stop() and wait().
 */
class SWITCHCFG_API RpcServer {
  public:
    /** @param name of the threads that serve requests, for ps(1); the first 15 bytes count */
    explicit RpcServer(const std::string &name) noexcept;
    ~RpcServer();
    RpcServer(const RpcServer &) = delete;
    RpcServer &operator=(const RpcServer &) = delete;

    /**
     * Start serving a dispatcher, which stays the caller's and may be destroyed before or after the server.
     * @return 0, or -1 with errno: EINVAL (null), EBUSY (served already), ESHUTDOWN (stopped), EDESTADDRREQ (not
     * bound to an endpoint), EAGAIN (no thread), ENOMEM
     */
    int addDispatcher(AbstractZmqDispatcher *dispatcher) noexcept;

    /**
     * Block until stop() was called and the callbacks that were running have returned. Their replies are sent; requests
     * that wait behind them are not served. Connections stand for 200 ms after the last reply, and a second more while
     * it cannot be delivered, so this may take as long. Not from a callback.
     */
    void wait() noexcept;

    /** Ask for the end, for good; returns at once. Any thread, also a callback; not a signal handler. */
    void stop() noexcept;

  private:
    std::shared_ptr<switchcfg::rpc::ServerState> state_; // null when memory ran out
};

/**
 * A client without a keep-alive link: waits for every reply until the time-out, whatever became of the server.
 * Requests of several threads wait for each other.
 */
class SWITCHCFG_API ReqClient {
  public:
    explicit ReqClient(const std::string &endpoint) noexcept;
    virtual ~ReqClient();
    ReqClient(const ReqClient &) = delete;
    ReqClient &operator=(const ReqClient &) = delete;

    /**
     * Tell the client where requests of a type go and what comes back; the counterpart of
     * RepDispatcher::registerCallback(). Replaces an earlier entry. Before the first request.
     * @param request, reply instances of the message types that live as long as the program: default_instance()
     * @return 0, or -1 with errno: EINVAL (service name), ENOMEM
     */
    int registerRequest(const google::protobuf::Message &request, const std::string &service, std::uint32_t message_id,
        const google::protobuf::Message &reply) noexcept;

    /** Result of a request that got no reply; -1 until set. */
    void setFailureResult(int result) noexcept;
    int failureResult() const noexcept;

    /**
     * Send a request and wait for its reply.
     * @param request of a registered type
     * @param reply_slot receives the reply message when the server sent one, else it is emptied; may be null
     * @param timeout_s seconds to wait at most; nothing below 1 is useful
     * @return the result the server sent; or the failure result with errno ETIMEDOUT (no reply in time), EHOSTDOWN (the
     *         daemon is not there, or died or was restarted meanwhile), EINVAL (type not registered), EMSGSIZE (request
     *         too long), EBADMSG (the reply is no message of its type), ENOMEM, EMFILE, ... errno is 0 when a server
     *         sent the result, so that a result that equals the failure result can be told from a failure
     */
    virtual int request(const google::protobuf::Message &request,
        std::unique_ptr<google::protobuf::Message> *reply_slot, std::uint32_t timeout_s) noexcept;

  protected:
    ReqClient(const std::string &endpoint, const std::string &keep_alive_endpoint) noexcept;

  private:
    std::unique_ptr<switchcfg::rpc::Link> link_; // null when memory ran out
    int failure_result_ = -1;
};

/**
 * A client with a keep-alive link, for a daemon that serves a RepKeepAliveDispatcher.
 */
class SWITCHCFG_API ReqKeepAliveClient : public ReqClient {
  public:
    /** Opens both links; the daemon need not be there. */
    ReqKeepAliveClient(const std::string &request_endpoint, const std::string &keep_alive_endpoint) noexcept;
    ~ReqKeepAliveClient() override;

    /**
     * Connect a ZeroMQ socket to an endpoint with the options this library's links use. Returns before the connection
     * stands.
     * @param socket as zmq_socket(3) returns it
     * @return 0, or -1 with errno as zmq_connect(3) sets it
     */
    static int link_socket(void *socket, const std::string &endpoint) noexcept;
};

#endif
