/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file funclist.h
 * Calls into the switch-chip daemon `bcmd`, which owns the switch chip: numbered functions in five families, called the
 * same way from every process. C++. Part of libswitchcfg-funclist.
 *
 * Inside the daemon a call runs the registered function in place; in any other process it travels over 127.0.0.1 (TCP
 * 62050 for requests, 62060 for keep-alive; docs/rpc-protocol.md). The function numbers are the enumerations of
 * <switchcfg/funclist.pb.h>; docs/funclist.md lists them with their time-outs.
 *
 *     void *output = nullptr;
 *     std::uint32_t length = 0;
 *     const int result = bcm_cmd(BCMD_PORT_COUNTERS_GET, unit, port, 0, 0, nullptr, 0, &output, &length);
 *     ...
 *     free(output);
 */
#ifndef SWITCHCFG_FUNCLIST_H
#define SWITCHCFG_FUNCLIST_H

#include <cstdint>
#include <map>
#include <memory>
#include <switchcfg/export.h>
#include <switchcfg/funclist.pb.h>
#include <switchcfg/funclist_rpc.h>
#include <switchcfg/funclist_stats.h>

namespace switchcfg::funclist {
class CommandRecord;
struct Tables;
} // namespace switchcfg::funclist

/* ---- Calling ---- */

/**
 * Call a function of the daemon and wait for its result.
 * One call at a time: threads of a process wait for each other, and the first call of a process must not race with
 * another one.
 * @param type         function number; for a remote call one of the enumeration's, anything else aborts
 * @param input        what the function takes beside the arguments; may be null
 * @param input_length its bytes. Not handed to the function: it knows the size of its input or finds the end in it.
 *                     Behind an input that was sent there is one zero byte, so a text needs no terminator
 * @param output       receives the function's output, allocated with malloc: the caller's to free(3). Null throws it
 *                     away. Left alone when the function has no output and when the result is -37, so set it to null
 *                     first; set to null when memory for it is out
 * @param output_length receives the bytes of the output, under the same conditions; may be null
 * @return the function's result; -37 when the function is not registered or no answer came within its time-out, which
 *         is also logged. A daemon that is not there, died or was restarted is known within about 3 seconds. errno then
 *         tells why, as ReqClient::request() sets it, and is 0 when the daemon answered so itself
 */
SWITCHCFG_API int bcm_cmd(FunclistBcmdFuncGeneralType type, std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3,
    std::uint32_t arg4, const void *input, std::uint32_t input_length, void **output, std::uint32_t *output_length);
SWITCHCFG_API int bcm_cmd(FunclistBcmdFuncUnitType type, std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3,
    std::uint32_t arg4, const void *input, std::uint32_t input_length, void **output, std::uint32_t *output_length);
SWITCHCFG_API int bcm_cmd(FunclistBcmdFuncUnitPortType type, std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3,
    std::uint32_t arg4, const void *input, std::uint32_t input_length, void **output, std::uint32_t *output_length);
SWITCHCFG_API int bcm_cmd(FunclistBcmdFuncMplsType type, std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3,
    std::uint32_t arg4, const void *input, std::uint32_t input_length, void **output, std::uint32_t *output_length);
SWITCHCFG_API int bcm_cmd(FunclistBcmdFuncVhwType type, std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3,
    std::uint32_t arg4, const void *input, std::uint32_t input_length, void **output, std::uint32_t *output_length);

/**
 * As bcm_cmd(), but always through the daemon's port, also inside the daemon: not from one of its functions, which run
 * one at a time.
 */
SWITCHCFG_API int bcm_cmd_socket(FunclistBcmdFuncGeneralType type, std::uint32_t arg1, std::uint32_t arg2,
    std::uint32_t arg3, std::uint32_t arg4, const void *input, std::uint32_t input_length, void **output,
    std::uint32_t *output_length) noexcept;
SWITCHCFG_API int bcm_cmd_socket(FunclistBcmdFuncUnitType type, std::uint32_t arg1, std::uint32_t arg2,
    std::uint32_t arg3, std::uint32_t arg4, const void *input, std::uint32_t input_length, void **output,
    std::uint32_t *output_length) noexcept;
SWITCHCFG_API int bcm_cmd_socket(FunclistBcmdFuncUnitPortType type, std::uint32_t arg1, std::uint32_t arg2,
    std::uint32_t arg3, std::uint32_t arg4, const void *input, std::uint32_t input_length, void **output,
    std::uint32_t *output_length) noexcept;
SWITCHCFG_API int bcm_cmd_socket(FunclistBcmdFuncMplsType type, std::uint32_t arg1, std::uint32_t arg2,
    std::uint32_t arg3, std::uint32_t arg4, const void *input, std::uint32_t input_length, void **output,
    std::uint32_t *output_length) noexcept;
SWITCHCFG_API int bcm_cmd_socket(FunclistBcmdFuncVhwType type, std::uint32_t arg1, std::uint32_t arg2,
    std::uint32_t arg3, std::uint32_t arg4, const void *input, std::uint32_t input_length, void **output,
    std::uint32_t *output_length) noexcept;

/**
 * The client behind bcm_cmd(): one per process, made by the first call and never destroyed.
 */
class SWITCHCFG_API BcmdFunclistClient : public ReqKeepAliveClient {
  public:
    /** Opens the links; the daemon need not be there. */
    BcmdFunclistClient() noexcept;
    ~BcmdFunclistClient() override;

    /** @return `instance`, made when there is none; null when memory is out. Not by two threads at once. */
    static BcmdFunclistClient *getInstance() noexcept;

    /** @return seconds that a call of this function waits for its answer at most */
    static std::uint32_t bcmfTimeout(FunclistBcmdFuncGeneralType type) noexcept;
    static std::uint32_t bcmfTimeout(FunclistBcmdFuncUnitType type) noexcept;
    static std::uint32_t bcmfTimeout(FunclistBcmdFuncUnitPortType type) noexcept;
    static std::uint32_t bcmfTimeout(FunclistBcmdFuncMplsType type) noexcept;
    static std::uint32_t bcmfTimeout(FunclistBcmdFuncVhwType type) noexcept;

    /** The process's client; null until its first use. */
    static BcmdFunclistClient *instance;

    /**
     * Whether bcm_cmd() runs functions in this process: false at first. The switch-chip daemon sets it, on the client
     * that getInstance() returns, before its own first call. Nobody else does.
     */
    bool local_call = false;
};

/* ---- Serving ---- */

/**
 * A function of the daemon: general, unit-and-port, MPLS and virtual-hardware family.
 * @param input  null when the caller gave none. Its length is not told
 * @param output receives output allocated with malloc, whose owner is the caller; never null
 * @param output_length receives its bytes; never null
 * @return the result of the call
 */
typedef std::int32_t (*bcmd_legacy_callback)(std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3,
    std::uint32_t arg4, const void *input, void **output, std::uint32_t *output_length);

/** A function of the unit family, which has no output. */
typedef std::int32_t (*bcmd_legacy_unit_callback)(
    std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3, std::uint32_t arg4, const void *input);

/**
 * The daemon's side: five tables of functions, served to other processes on a thread of its own, one request at a time,
 * and to the daemon's own bcm_cmd() calls on theirs. Register all functions, then startProcessing(), then wait().
 *
 * The only one of a process; destroyed at its exit, which waits for a function that is running. So a function must not
 * call exit(3).
 */
class SWITCHCFG_API BcmdFunclistServer {
  public:
    /**
     * @return the process's server, made and bound to its ports by the first call, from any thread. When another
     *         process still has the ports, they are tried again while the server runs. Create it after daemonize()
     */
    static BcmdFunclistServer &getInstance() noexcept;

    BcmdFunclistServer(const BcmdFunclistServer &) = delete;
    BcmdFunclistServer &operator=(const BcmdFunclistServer &) = delete;

    /** Serve a function under a number, in place of an earlier one. Before startProcessing() and the first call. */
    void registerLegacyCallback(FunclistBcmdFuncGeneralType type, bcmd_legacy_callback function);
    void registerLegacyCallback(FunclistBcmdFuncUnitType type, bcmd_legacy_unit_callback function);
    void registerLegacyCallback(FunclistBcmdFuncUnitPortType type, bcmd_legacy_callback function);
    void registerLegacyCallback(FunclistBcmdFuncMplsType type, bcmd_legacy_callback function);
    void registerLegacyCallback(FunclistBcmdFuncVhwType type, bcmd_legacy_callback function);

    /**
     * Keep statistics of the requests that come in from now on, in a block that the server owns. Before
     * startProcessing(). Calling it again changes nothing.
     */
    void enableStatistics();

    /** @return the statistics, good until the process ends; null when they are not kept */
    const funclist_stats *statistics() const noexcept { return stats_; }

    /**
     * Begin to serve other processes, on threads that inherit the caller's signal mask: block first what other threads
     * are to handle.
     * @return 0, or -1 with errno as RpcServer::addDispatcher() sets it
     */
    int startProcessing() noexcept;

    /** Block until stop() was called and the function that was running has returned. Not from a function. */
    void wait() noexcept;

    /** Ask for the end of serving, for good; returns at once. Any thread; not a signal handler. */
    void stop() noexcept;

    /**
     * Run a registered function in this process.
     * @param input, output, output_length as the function takes them; without a place for it, output is freed
     * @return the function's result, or -37 when none is registered
     */
    int execBcmdFunc(FunclistBcmdFuncGeneralType type, std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3,
        std::uint32_t arg4, const void *input, void **output, std::uint32_t *output_length);
    int execBcmdFunc(FunclistBcmdFuncUnitType type, std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3,
        std::uint32_t arg4, const void *input, void **output, std::uint32_t *output_length);
    int execBcmdFunc(FunclistBcmdFuncUnitPortType type, std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3,
        std::uint32_t arg4, const void *input, void **output, std::uint32_t *output_length);
    int execBcmdFunc(FunclistBcmdFuncMplsType type, std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3,
        std::uint32_t arg4, const void *input, void **output, std::uint32_t *output_length);
    int execBcmdFunc(FunclistBcmdFuncVhwType type, std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3,
        std::uint32_t arg4, const void *input, void **output, std::uint32_t *output_length);

  private:
    friend class switchcfg::funclist::CommandRecord;
    friend struct switchcfg::funclist::Tables;

    BcmdFunclistServer();
    ~BcmdFunclistServer();

    std::unique_ptr<RpcServer> server_;
    std::unique_ptr<RepKeepAliveDispatcher> dispatcher_;
    std::map<FunclistBcmdFuncGeneralType, bcmd_legacy_callback> general_;
    std::map<FunclistBcmdFuncUnitType, bcmd_legacy_unit_callback> unit_;
    std::map<FunclistBcmdFuncUnitPortType, bcmd_legacy_callback> unit_port_;
    std::map<FunclistBcmdFuncMplsType, bcmd_legacy_callback> mpls_;
    std::map<FunclistBcmdFuncVhwType, bcmd_legacy_callback> vhw_;
    funclist_stats *stats_ = nullptr; // owned
};

/**
 * A dispatcher callback for one type of message: hands requests to a plain function.
 */
template<typename Message>
class FnDispCallbackOutput : public FnDispCallbackAbstract {
  public:
    using Function = int (*)(const Message &request, std::unique_ptr<google::protobuf::Message> *reply_slot);

    explicit FnDispCallbackOutput(Function function) noexcept
        : FnDispCallbackAbstract(Message::default_instance()), function_(function)
    {
    }

    int call(const google::protobuf::Message &request, std::unique_ptr<google::protobuf::Message> *reply_slot) override
    {
        return function_(static_cast<const Message &>(request), reply_slot);
    }

    FnDispCallbackAbstract *clone() const override { return new FnDispCallbackOutput(function_); }

  private:
    Function function_;
};

/**
 * Run the function that a request asks for, and record it in the statistics. The last one is not routed to: the
 * virtual-hardware family is served inside the daemon only.
 * @param reply_slot receives the function's output as a FunclistBcmdFuncResponseData, when it has any; may be null
 * @return the function's result, or -37 when none is registered
 */
SWITCHCFG_API int callback_bcmf_general(
    const FunclistBcmdFuncGeneral &request, std::unique_ptr<google::protobuf::Message> *reply_slot);
SWITCHCFG_API int callback_bcmf_unit(
    const FunclistBcmdFuncUnit &request, std::unique_ptr<google::protobuf::Message> *reply_slot);
SWITCHCFG_API int callback_bcmf_unit_port(
    const FunclistBcmdFuncUnitPort &request, std::unique_ptr<google::protobuf::Message> *reply_slot);
SWITCHCFG_API int callback_bcmf_mpls(
    const FunclistBcmdFuncMpls &request, std::unique_ptr<google::protobuf::Message> *reply_slot);
SWITCHCFG_API int callback_bcmf_vhw(
    const FunclistBcmdFuncVhw &request, std::unique_ptr<google::protobuf::Message> *reply_slot);

#endif
