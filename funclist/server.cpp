// SPDX-License-Identifier: Apache-2.0
// The tables of functions inside the switch-chip daemon, and serving them.
#include <switchcfg/funclist.h>

#include "funclist/endpoints.h"
#include "util/owned.h"

#include <memory>

namespace switchcfg::funclist {
namespace {

// Every number that a request can carry gets its entry at once: from then on only registering changes a table, and
// looking a number up is safe beside the thread that serves.
template<typename Table>
void reserve(Table &table, const google::protobuf::EnumDescriptor &numbers)
{
    for (int i = 0; i < numbers.value_count(); ++i) {
        table[static_cast<typename Table::key_type>(numbers.value(i)->number())] = nullptr;
    }
}

template<typename Table, typename Type>
int run(Table &table, Type type, std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3, std::uint32_t arg4,
    const void *input, void **output, std::uint32_t *output_length)
{
    const bcmd_legacy_callback function = table[type];
    if (function == nullptr) {
        return communication_error;
    }
    void *unwanted = nullptr;
    std::uint32_t unwanted_length = 0;
    const int result = function(arg1, arg2, arg3, arg4, input, output != nullptr ? output : &unwanted,
        output_length != nullptr ? output_length : &unwanted_length);
    std::free(unwanted);
    return result;
}

} // namespace
} // namespace switchcfg::funclist

using namespace switchcfg::funclist;

BcmdFunclistServer::BcmdFunclistServer()
    : server_(std::make_unique<RpcServer>("BcmdRpcServer")),
      dispatcher_(std::make_unique<RepKeepAliveDispatcher>(endpoint_of(keep_alive_port), "funclist"))
{
    dispatcher_->setDefaultError(communication_error);
    (void)dispatcher_->bind(endpoint_of(request_port), true);
    // The virtual-hardware family has a callback too, but its callers are all in this process: it is not served.
    (void)dispatcher_->registerCallback(
        service, FUNCLIST_FAMILY_GENERAL, FnDispCallbackOutput<FunclistBcmdFuncGeneral>(callback_bcmf_general));
    (void)dispatcher_->registerCallback(
        service, FUNCLIST_FAMILY_UNIT, FnDispCallbackOutput<FunclistBcmdFuncUnit>(callback_bcmf_unit));
    (void)dispatcher_->registerCallback(
        service, FUNCLIST_FAMILY_UNIT_PORT, FnDispCallbackOutput<FunclistBcmdFuncUnitPort>(callback_bcmf_unit_port));
    (void)dispatcher_->registerCallback(
        service, FUNCLIST_FAMILY_MPLS, FnDispCallbackOutput<FunclistBcmdFuncMpls>(callback_bcmf_mpls));
    reserve(general_, *FunclistBcmdFuncGeneralType_descriptor());
    reserve(unit_, *FunclistBcmdFuncUnitType_descriptor());
    reserve(unit_port_, *FunclistBcmdFuncUnitPortType_descriptor());
    reserve(mpls_, *FunclistBcmdFuncMplsType_descriptor());
    reserve(vhw_, *FunclistBcmdFuncVhwType_descriptor());
}

// The tables and the statistics go after the last function has returned.
BcmdFunclistServer::~BcmdFunclistServer()
{
    server_->stop();
    server_->wait();
    dispatcher_.reset();
    server_.reset();
    delete stats_;
}

BcmdFunclistServer &BcmdFunclistServer::getInstance() noexcept
{
    static BcmdFunclistServer server;
    return server;
}

void BcmdFunclistServer::registerLegacyCallback(FunclistBcmdFuncGeneralType type, bcmd_legacy_callback function)
{
    general_[type] = function;
}

void BcmdFunclistServer::registerLegacyCallback(FunclistBcmdFuncUnitType type, bcmd_legacy_unit_callback function)
{
    unit_[type] = function;
}

void BcmdFunclistServer::registerLegacyCallback(FunclistBcmdFuncUnitPortType type, bcmd_legacy_callback function)
{
    unit_port_[type] = function;
}

void BcmdFunclistServer::registerLegacyCallback(FunclistBcmdFuncMplsType type, bcmd_legacy_callback function)
{
    mpls_[type] = function;
}

void BcmdFunclistServer::registerLegacyCallback(FunclistBcmdFuncVhwType type, bcmd_legacy_callback function)
{
    vhw_[type] = function;
}

void BcmdFunclistServer::enableStatistics()
{
    if (stats_ == nullptr) {
        stats_ = new funclist_stats{};
        dispatcher_->setKeepAliveTime(&stats_->keep_alive_time);
    }
}

int BcmdFunclistServer::startProcessing() noexcept
{
    return server_->addDispatcher(dispatcher_.get());
}

void BcmdFunclistServer::wait() noexcept
{
    server_->wait();
}

void BcmdFunclistServer::stop() noexcept
{
    server_->stop();
}

int BcmdFunclistServer::execBcmdFunc(FunclistBcmdFuncGeneralType type, std::uint32_t arg1, std::uint32_t arg2,
    std::uint32_t arg3, std::uint32_t arg4, const void *input, void **output, std::uint32_t *output_length)
{
    return run(general_, type, arg1, arg2, arg3, arg4, input, output, output_length);
}

int BcmdFunclistServer::execBcmdFunc(FunclistBcmdFuncUnitType type, std::uint32_t arg1, std::uint32_t arg2,
    std::uint32_t arg3, std::uint32_t arg4, const void *input, void ** /*output*/, std::uint32_t * /*output_length*/)
{
    const bcmd_legacy_unit_callback function = unit_[type];
    return function != nullptr ? function(arg1, arg2, arg3, arg4, input) : communication_error;
}

int BcmdFunclistServer::execBcmdFunc(FunclistBcmdFuncUnitPortType type, std::uint32_t arg1, std::uint32_t arg2,
    std::uint32_t arg3, std::uint32_t arg4, const void *input, void **output, std::uint32_t *output_length)
{
    return run(unit_port_, type, arg1, arg2, arg3, arg4, input, output, output_length);
}

int BcmdFunclistServer::execBcmdFunc(FunclistBcmdFuncMplsType type, std::uint32_t arg1, std::uint32_t arg2,
    std::uint32_t arg3, std::uint32_t arg4, const void *input, void **output, std::uint32_t *output_length)
{
    return run(mpls_, type, arg1, arg2, arg3, arg4, input, output, output_length);
}

int BcmdFunclistServer::execBcmdFunc(FunclistBcmdFuncVhwType type, std::uint32_t arg1, std::uint32_t arg2,
    std::uint32_t arg3, std::uint32_t arg4, const void *input, void **output, std::uint32_t *output_length)
{
    return run(vhw_, type, arg1, arg2, arg3, arg4, input, output, output_length);
}
