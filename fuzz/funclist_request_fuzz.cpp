// SPDX-License-Identifier: Apache-2.0
// Requests to the switch-chip daemon, on the way from the wire to a function and back: the first byte chooses the
// message id, the rest is the protobuf message.
#include "fuzz/fuzz_input.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <switchcfg/funclist.h>
#include <switchcfg/vxlog.h>

void vxlog(int /*level*/, const char * /*format*/, ...) {}

using namespace switchcfg::fuzz;

namespace {

// Reads its input as functions may: as a text, whatever was sent.
std::int32_t echo(std::uint32_t arg1, std::uint32_t, std::uint32_t, std::uint32_t, const void *input, void **output,
    std::uint32_t *output_length)
{
    if (input != nullptr) {
        *output = ::strdup(static_cast<const char *>(input));
        *output_length = static_cast<std::uint32_t>(std::strlen(static_cast<const char *>(input)));
    }
    return static_cast<std::int32_t>(arg1);
}

std::int32_t unit(std::uint32_t arg1, std::uint32_t, std::uint32_t, std::uint32_t, const void *input)
{
    return input != nullptr ? static_cast<std::int32_t>(std::strlen(static_cast<const char *>(input)))
                            : static_cast<std::int32_t>(arg1);
}

BcmdFunclistServer &server()
{
    BcmdFunclistServer &made = BcmdFunclistServer::getInstance();
    made.registerLegacyCallback(BCMD_GENERAL_ECHO, echo);
    made.registerLegacyCallback(BCMD_UNIT_PRESENT, unit);
    made.registerLegacyCallback(BCMD_PORT_STATE_GET, echo);
    made.registerLegacyCallback(BCMD_MPLS_DUMP, echo);
    made.registerLegacyCallback(BCMD_VHW_INIT, echo);
    made.enableStatistics();
    return made;
}

template<typename Message>
FnDispCallbackAbstract &callback(int (*function)(const Message &, std::unique_ptr<google::protobuf::Message> *))
{
    static FnDispCallbackOutput<Message> made{function};
    return made;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const BcmdFunclistServer &serving = server();
    if (size == 0) {
        return 0;
    }
    const std::array<FnDispCallbackAbstract *, 5> callbacks{&callback(callback_bcmf_general),
        &callback(callback_bcmf_unit), &callback(callback_bcmf_unit_port), &callback(callback_bcmf_mpls),
        &callback(callback_bcmf_vhw)};
    FnDispCallbackAbstract &chosen = *callbacks[data[0] % callbacks.size()];
    const std::unique_ptr<google::protobuf::Message> request{chosen.requestType().New()};
    if (!request->ParsePartialFromArray(data + 1, static_cast<int>(size - 1)) || !request->IsInitialized()) {
        return 0;
    }
    std::unique_ptr<google::protobuf::Message> reply;
    const std::uint32_t executed = serving.statistics()->executed;
    (void)chosen.call(*request, &reply);
    require(serving.statistics()->executed == executed + 1);
    if (reply) {
        FunclistBcmdFuncResponseData again;
        require(again.ParseFromString(reply->SerializeAsString()));
    }
    std::FILE *const nowhere = std::fopen("/dev/null", "w");
    require(nowhere != nullptr && dumpFunclistStats(serving.statistics(), nowhere) == '\n');
    (void)std::fclose(nowhere);
    return 0;
}
