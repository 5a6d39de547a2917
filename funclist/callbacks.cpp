// SPDX-License-Identifier: Apache-2.0
// Requests that arrive from other processes: the function is run, its output goes into the reply.
#include <switchcfg/funclist.h>

#include "funclist/command_record.h"
#include "util/owned.h"

#include <memory>

namespace switchcfg::funclist {
namespace {

template<typename Message>
int callback_bcmf_exec(
    const Message &request, std::unique_ptr<google::protobuf::Message> *reply_slot, std::int32_t family)
{
    BcmdFunclistServer &server = BcmdFunclistServer::getInstance();
    const void *const input = request.has_input() ? request.input().data() : nullptr;
    funclist_command what{};
    what.family = family;
    what.function = request.type();
    what.arg1 = request.arg1();
    what.arg2 = request.arg2();
    what.arg3 = request.arg3();
    what.arg4 = request.arg4();
    CommandRecord record{server, what};

    void *buffer = nullptr;
    std::uint32_t length = 0;
    const int result =
        server.execBcmdFunc(request.type(), what.arg1, what.arg2, what.arg3, what.arg4, input, &buffer, &length);
    const Malloced<void> output{buffer};
    if (output && reply_slot != nullptr) {
        auto reply = std::make_unique<FunclistBcmdFuncResponseData>();
        reply->set_output(output.get(), length);
        *reply_slot = std::move(reply);
    }
    record.end(result);
    return result;
}

} // namespace
} // namespace switchcfg::funclist

using switchcfg::funclist::callback_bcmf_exec;

int callback_bcmf_general(
    const FunclistBcmdFuncGeneral &request, std::unique_ptr<google::protobuf::Message> *reply_slot)
{
    return callback_bcmf_exec(request, reply_slot, FUNCLIST_FAMILY_GENERAL);
}

int callback_bcmf_unit(const FunclistBcmdFuncUnit &request, std::unique_ptr<google::protobuf::Message> *reply_slot)
{
    return callback_bcmf_exec(request, reply_slot, FUNCLIST_FAMILY_UNIT);
}

int callback_bcmf_unit_port(
    const FunclistBcmdFuncUnitPort &request, std::unique_ptr<google::protobuf::Message> *reply_slot)
{
    return callback_bcmf_exec(request, reply_slot, FUNCLIST_FAMILY_UNIT_PORT);
}

int callback_bcmf_mpls(const FunclistBcmdFuncMpls &request, std::unique_ptr<google::protobuf::Message> *reply_slot)
{
    return callback_bcmf_exec(request, reply_slot, FUNCLIST_FAMILY_MPLS);
}

int callback_bcmf_vhw(const FunclistBcmdFuncVhw &request, std::unique_ptr<google::protobuf::Message> *reply_slot)
{
    return callback_bcmf_exec(request, reply_slot, FUNCLIST_FAMILY_VHW);
}
