// SPDX-License-Identifier: Apache-2.0
// Calls that go through the daemon's port.
#include <switchcfg/funclist.h>
#include <switchcfg/startup.h>
#include <switchcfg/vxlog.h>

#include "funclist/endpoints.h"
#include "util/owned.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <google/protobuf/stubs/logging.h>
#include <memory>
#include <string>
#include <sys/time.h>
#include <unistd.h>

namespace switchcfg::funclist {
namespace {

// Caught here, and not by the daemon as an unknown request, because the caller's code is wrong: for the rest of its
// life it would ask for nothing.
void require_valid(FunclistBcmdFuncGeneralType value)
{
    GOOGLE_CHECK(FunclistBcmdFuncGeneralType_IsValid(value));
}

void require_valid(FunclistBcmdFuncUnitType value)
{
    GOOGLE_CHECK(FunclistBcmdFuncUnitType_IsValid(value));
}

void require_valid(FunclistBcmdFuncUnitPortType value)
{
    GOOGLE_CHECK(FunclistBcmdFuncUnitPortType_IsValid(value));
}

void require_valid(FunclistBcmdFuncMplsType value)
{
    GOOGLE_CHECK(FunclistBcmdFuncMplsType_IsValid(value));
}

void require_valid(FunclistBcmdFuncVhwType value)
{
    GOOGLE_CHECK(FunclistBcmdFuncVhwType_IsValid(value));
}

timeval wall_clock() noexcept
{
    timeval now{};
    (void)::gettimeofday(&now, nullptr);
    return now;
}

void log_silence(int function, const timeval &start, std::uint32_t timeout_s) noexcept
{
    const timeval end = wall_clock();
    auto elapsed_s = static_cast<long long>(end.tv_sec) - start.tv_sec;
    if (end.tv_usec < start.tv_usec) {
        --elapsed_s;
    }
    // A call that failed sooner met no daemon that was slow to answer.
    if (elapsed_s > static_cast<long long>(timeout_s) - 1) {
        const int pid = static_cast<int>(::getpid());
        const Malloced<char> name{cfg_get_translated_pid_name(pid)};
        vxlog(3, "System did not respond to request %u from PID %d '%s'", static_cast<unsigned>(function), pid,
            name ? name.get() : "unknown");
    }
}

void hand_over(const std::string &bytes, void **output, std::uint32_t *output_length) noexcept
{
    if (output_length != nullptr) {
        *output_length = static_cast<std::uint32_t>(bytes.size());
    }
    *output = std::malloc(bytes.size());
    if (*output != nullptr) {
        std::memcpy(*output, bytes.data(), bytes.size());
    }
}

template<typename Message>
void fill(Message &message, std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3, std::uint32_t arg4,
    const void *input, std::uint32_t input_length)
{
    message.set_arg1(arg1);
    message.set_arg2(arg2);
    message.set_arg3(arg3);
    message.set_arg4(arg4);
    if (input != nullptr && input_length != 0) {
        message.set_input(input, input_length);
    }
}

// No exception leaves: of a wrong number it must end the process, not unwind into a handler of the caller's.
template<typename Message, typename Type>
int call_remote(Type type, std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3, std::uint32_t arg4,
    const void *input, std::uint32_t input_length, void **output, std::uint32_t *output_length) noexcept
{
    BcmdFunclistClient *const client = BcmdFunclistClient::getInstance();
    if (client == nullptr) {
        errno = ENOMEM;
        return communication_error;
    }
    require_valid(type);
    Message message;
    message.set_type(type);
    try {
        fill(message, arg1, arg2, arg3, arg4, input, input_length);
    } catch (const std::exception &) { // the input
        errno = ENOMEM;
        return communication_error;
    }
    const std::uint32_t timeout_s = BcmdFunclistClient::bcmfTimeout(type);
    const timeval start = wall_clock();
    std::unique_ptr<google::protobuf::Message> reply;
    const int result = client->request(message, &reply, timeout_s);
    const KeepErrno why;
    if (result == communication_error) {
        log_silence(type, start, timeout_s);
    } else if (reply != nullptr && output != nullptr) {
        hand_over(static_cast<const FunclistBcmdFuncResponseData &>(*reply).output(), output, output_length);
    }
    return result;
}

} // namespace
} // namespace switchcfg::funclist

using namespace switchcfg::funclist;

BcmdFunclistClient::BcmdFunclistClient() noexcept
    : ReqKeepAliveClient(endpoint_of(request_port), endpoint_of(keep_alive_port))
{
    const auto &reply = FunclistBcmdFuncResponseData::default_instance();
    setFailureResult(communication_error);
    (void)registerRequest(FunclistBcmdFuncGeneral::default_instance(), service, FUNCLIST_FAMILY_GENERAL, reply);
    (void)registerRequest(FunclistBcmdFuncUnit::default_instance(), service, FUNCLIST_FAMILY_UNIT, reply);
    (void)registerRequest(FunclistBcmdFuncUnitPort::default_instance(), service, FUNCLIST_FAMILY_UNIT_PORT, reply);
    (void)registerRequest(FunclistBcmdFuncMpls::default_instance(), service, FUNCLIST_FAMILY_MPLS, reply);
    // The daemon routes this one nowhere and says so, which is quicker than finding out from silence.
    (void)registerRequest(FunclistBcmdFuncVhw::default_instance(), service, FUNCLIST_FAMILY_VHW, reply);
}

BcmdFunclistClient::~BcmdFunclistClient() = default;

int bcm_cmd_socket(FunclistBcmdFuncGeneralType type, std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3,
    std::uint32_t arg4, const void *input, std::uint32_t input_length, void **output,
    std::uint32_t *output_length) noexcept
{
    return call_remote<FunclistBcmdFuncGeneral>(
        type, arg1, arg2, arg3, arg4, input, input_length, output, output_length);
}

int bcm_cmd_socket(FunclistBcmdFuncUnitType type, std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3,
    std::uint32_t arg4, const void *input, std::uint32_t input_length, void **output,
    std::uint32_t *output_length) noexcept
{
    return call_remote<FunclistBcmdFuncUnit>(type, arg1, arg2, arg3, arg4, input, input_length, output, output_length);
}

int bcm_cmd_socket(FunclistBcmdFuncUnitPortType type, std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3,
    std::uint32_t arg4, const void *input, std::uint32_t input_length, void **output,
    std::uint32_t *output_length) noexcept
{
    return call_remote<FunclistBcmdFuncUnitPort>(
        type, arg1, arg2, arg3, arg4, input, input_length, output, output_length);
}

int bcm_cmd_socket(FunclistBcmdFuncMplsType type, std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3,
    std::uint32_t arg4, const void *input, std::uint32_t input_length, void **output,
    std::uint32_t *output_length) noexcept
{
    return call_remote<FunclistBcmdFuncMpls>(type, arg1, arg2, arg3, arg4, input, input_length, output, output_length);
}

int bcm_cmd_socket(FunclistBcmdFuncVhwType type, std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3,
    std::uint32_t arg4, const void *input, std::uint32_t input_length, void **output,
    std::uint32_t *output_length) noexcept
{
    return call_remote<FunclistBcmdFuncVhw>(type, arg1, arg2, arg3, arg4, input, input_length, output, output_length);
}
