// SPDX-License-Identifier: Apache-2.0
// The tables of functions inside the switch-chip daemon, and serving them.
#include <switchcfg/funclist.h>

#include "funclist/endpoints.h"

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
    dispatcher_->setKeepAliveTime(nullptr); // also when a function calls exit(), which stopping cannot wait for
    server_->stop();
    server_->wait();
    dispatcher_.reset();
    server_.reset();
    delete stats_;
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
