// SPDX-License-Identifier: Apache-2.0
// Calls where they are made: inside the daemon into its tables, from everywhere else through its port. What a local
// call passes through stands in this one file, so that little is left of it but the look-up.
#include <switchcfg/funclist.h>

#include "funclist/endpoints.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace switchcfg::funclist {

struct Tables {
    static auto &of(BcmdFunclistServer &server, FunclistBcmdFuncGeneralType /*family*/) { return server.general_; }
    static auto &of(BcmdFunclistServer &server, FunclistBcmdFuncUnitType /*family*/) { return server.unit_; }
    static auto &of(BcmdFunclistServer &server, FunclistBcmdFuncUnitPortType /*family*/) { return server.unit_port_; }
    static auto &of(BcmdFunclistServer &server, FunclistBcmdFuncMplsType /*family*/) { return server.mpls_; }
    static auto &of(BcmdFunclistServer &server, FunclistBcmdFuncVhwType /*family*/) { return server.vhw_; }
};

namespace {

// The server once it is made: its one-time guard is more than the rest of a local call.
constinit std::atomic<BcmdFunclistServer *> made_server{nullptr};

// For callers that leave out a place, or both.
[[gnu::noinline]] int run_with_own_places(bcmd_legacy_callback function, std::uint32_t arg1, std::uint32_t arg2,
    std::uint32_t arg3, std::uint32_t arg4, const void *input, void **output, std::uint32_t *output_length)
{
    void *unwanted = nullptr;
    std::uint32_t unwanted_length = 0;
    const int result = function(arg1, arg2, arg3, arg4, input, output != nullptr ? output : &unwanted,
        output_length != nullptr ? output_length : &unwanted_length);
    std::free(unwanted);
    return result;
}

[[gnu::always_inline]] inline int run(bcmd_legacy_callback function, std::uint32_t arg1, std::uint32_t arg2,
    std::uint32_t arg3, std::uint32_t arg4, const void *input, void **output, std::uint32_t *output_length)
{
    if (output == nullptr || output_length == nullptr) [[unlikely]] {
        return run_with_own_places(function, arg1, arg2, arg3, arg4, input, output, output_length);
    }
    return function(arg1, arg2, arg3, arg4, input, output, output_length);
}

[[gnu::always_inline]] inline int run(bcmd_legacy_unit_callback function, std::uint32_t arg1, std::uint32_t arg2,
    std::uint32_t arg3, std::uint32_t arg4, const void *input, void ** /*output*/, std::uint32_t * /*output_length*/)
{
    return function(arg1, arg2, arg3, arg4, input);
}

// Nothing is called before the function is, so that the arguments stay where they came in.
template<typename Type>
[[gnu::always_inline]] inline int look_up_and_run(BcmdFunclistServer &server, Type type, std::uint32_t arg1,
    std::uint32_t arg2, std::uint32_t arg3, std::uint32_t arg4, const void *input, void **output,
    std::uint32_t *output_length)
{
    auto &table = Tables::of(server, type);
    const auto found = table.find(type);
    if (found == table.end()) [[unlikely]] {
        table[type] = nullptr;
        return communication_error;
    }
    if (found->second == nullptr) [[unlikely]] {
        return communication_error;
    }
    return run(found->second, arg1, arg2, arg3, arg4, input, output, output_length);
}

// Calls that are not local, and the first of those that are.
template<typename Type>
[[gnu::noinline]] int call_otherwise(Type type, std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3,
    std::uint32_t arg4, const void *input, std::uint32_t input_length, void **output, std::uint32_t *output_length)
{
    const BcmdFunclistClient *const client = BcmdFunclistClient::getInstance();
    if (client != nullptr && client->local_call) {
        return BcmdFunclistServer::getInstance().execBcmdFunc(
            type, arg1, arg2, arg3, arg4, input, output, output_length);
    }
    return bcm_cmd_socket(type, arg1, arg2, arg3, arg4, input, input_length, output, output_length);
}

template<typename Type>
[[gnu::always_inline]] inline int call(Type type, std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3,
    std::uint32_t arg4, const void *input, std::uint32_t input_length, void **output, std::uint32_t *output_length)
{
    const BcmdFunclistClient *const client = BcmdFunclistClient::instance;
    BcmdFunclistServer *const server = made_server.load(std::memory_order_acquire);
    if (client == nullptr || !client->local_call || server == nullptr) {
        return call_otherwise(type, arg1, arg2, arg3, arg4, input, input_length, output, output_length);
    }
    return look_up_and_run(*server, type, arg1, arg2, arg3, arg4, input, output, output_length);
}

} // namespace
} // namespace switchcfg::funclist

using namespace switchcfg::funclist;

BcmdFunclistClient *BcmdFunclistClient::instance = nullptr;

BcmdFunclistClient *BcmdFunclistClient::getInstance() noexcept
{
    if (instance == nullptr) {
        instance = new (std::nothrow) BcmdFunclistClient;
    }
    return instance;
}

BcmdFunclistServer &BcmdFunclistServer::getInstance() noexcept
{
    static BcmdFunclistServer server;
    made_server.store(&server, std::memory_order_release);
    return server;
}

int BcmdFunclistServer::execBcmdFunc(FunclistBcmdFuncGeneralType type, std::uint32_t arg1, std::uint32_t arg2,
    std::uint32_t arg3, std::uint32_t arg4, const void *input, void **output, std::uint32_t *output_length)
{
    return look_up_and_run(*this, type, arg1, arg2, arg3, arg4, input, output, output_length);
}

int BcmdFunclistServer::execBcmdFunc(FunclistBcmdFuncUnitType type, std::uint32_t arg1, std::uint32_t arg2,
    std::uint32_t arg3, std::uint32_t arg4, const void *input, void **output, std::uint32_t *output_length)
{
    return look_up_and_run(*this, type, arg1, arg2, arg3, arg4, input, output, output_length);
}

int BcmdFunclistServer::execBcmdFunc(FunclistBcmdFuncUnitPortType type, std::uint32_t arg1, std::uint32_t arg2,
    std::uint32_t arg3, std::uint32_t arg4, const void *input, void **output, std::uint32_t *output_length)
{
    return look_up_and_run(*this, type, arg1, arg2, arg3, arg4, input, output, output_length);
}

int BcmdFunclistServer::execBcmdFunc(FunclistBcmdFuncMplsType type, std::uint32_t arg1, std::uint32_t arg2,
    std::uint32_t arg3, std::uint32_t arg4, const void *input, void **output, std::uint32_t *output_length)
{
    return look_up_and_run(*this, type, arg1, arg2, arg3, arg4, input, output, output_length);
}

int BcmdFunclistServer::execBcmdFunc(FunclistBcmdFuncVhwType type, std::uint32_t arg1, std::uint32_t arg2,
    std::uint32_t arg3, std::uint32_t arg4, const void *input, void **output, std::uint32_t *output_length)
{
    return look_up_and_run(*this, type, arg1, arg2, arg3, arg4, input, output, output_length);
}

int bcm_cmd(FunclistBcmdFuncGeneralType type, std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3,
    std::uint32_t arg4, const void *input, std::uint32_t input_length, void **output, std::uint32_t *output_length)
{
    return call(type, arg1, arg2, arg3, arg4, input, input_length, output, output_length);
}

int bcm_cmd(FunclistBcmdFuncUnitType type, std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3,
    std::uint32_t arg4, const void *input, std::uint32_t input_length, void **output, std::uint32_t *output_length)
{
    return call(type, arg1, arg2, arg3, arg4, input, input_length, output, output_length);
}

int bcm_cmd(FunclistBcmdFuncUnitPortType type, std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3,
    std::uint32_t arg4, const void *input, std::uint32_t input_length, void **output, std::uint32_t *output_length)
{
    return call(type, arg1, arg2, arg3, arg4, input, input_length, output, output_length);
}

int bcm_cmd(FunclistBcmdFuncMplsType type, std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3,
    std::uint32_t arg4, const void *input, std::uint32_t input_length, void **output, std::uint32_t *output_length)
{
    return call(type, arg1, arg2, arg3, arg4, input, input_length, output, output_length);
}

int bcm_cmd(FunclistBcmdFuncVhwType type, std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3,
    std::uint32_t arg4, const void *input, std::uint32_t input_length, void **output, std::uint32_t *output_length)
{
    return call(type, arg1, arg2, arg3, arg4, input, input_length, output, output_length);
}
