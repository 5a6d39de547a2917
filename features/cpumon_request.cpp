// SPDX-License-Identifier: Apache-2.0
// Requests to a CPU monitor: one record out, the same back, and a text behind it.
#include <switchcfg/cpumon.h>

#include "features/cpumon_exchange.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <switchcfg/request_channel.h>
#include <switchcfg/robust_io.h>
#include <switchcfg/text.h>

static_assert(offsetof(cpumon_request, main_columns) == 4);
static_assert(offsetof(cpumon_request, summary_columns) == 92);
static_assert(offsetof(cpumon_request, summary_mode) == 152);
static_assert(offsetof(cpumon_request, text_length) == 156);
static_assert(offsetof(cpumon_request, message) == 160);
static_assert(offsetof(cpumon_request, result) == 672);
static_assert(offsetof(cpumon_request, cpu_usage) == 676);
static_assert(offsetof(cpumon_request, memory) == 680);
static_assert(offsetof(cpumon_request, process_id) == 688);
static_assert(offsetof(cpumon_request, name) == 692);

using namespace switchcfg;
using namespace switchcfg::cpumon;

namespace {

int fail(cpumon_request &request, const char *message, int code) noexcept
{
    (void)strncpy_safe(request.message, message, sizeof request.message);
    return code;
}

// What the printing needs: a text that "%.*s" can take. The switch itself could not allocate more.
constexpr std::uint32_t longest_text = INT32_MAX;

int read_text(int fd, std::uint32_t length, char **text_out) noexcept
{
    // Zeroed memory of this size is not touched before it is read into, so a length alone costs a peer's victim
    // nothing.
    Malloced<char> text{length <= longest_text ? static_cast<char *>(std::calloc(length, 1)) : nullptr};
    if (text == nullptr || vx_read_timeout(fd, text.get(), length, CPUMON_TEXT_TIMEOUT_S) != 0) {
        return CPUMON_FAILED;
    }
    *text_out = text.release();
    return 0;
}

} // namespace

int cpumon_daemon_request_extra_data(cpumon_request *request, char **text_out, const cpumon_target *target) noexcept
{
    if (text_out != nullptr) {
        *text_out = nullptr;
    }
    if (request == nullptr) {
        return CPUMON_NO_REPLY;
    }
    const int fd =
        target == nullptr ? -1 : daemon_client_req_connect_ipv6(target->port, target->address, target->scope_id);
    if (fd < 0) {
        return fail(*request, "Error in connection with CPUMON", CPUMON_NO_CONNECTION);
    }
    if (daemon_client_req_send(fd, CPUMON_REPLY_TIMEOUT_S, request, sizeof *request) != 0) { // it has closed then
        return fail(*request, "Error in sending request to CPUMON", CPUMON_NO_REPLY);
    }
    const Descriptor connection{fd};
    if (from_wire(request->result) < 0) {
        return fail(*request, "Error in received request from CPUMON", CPUMON_FAILED);
    }
    const std::uint32_t length = from_wire(request->text_length);
    return length == 0 || text_out == nullptr ? 0 : read_text(fd, length, text_out);
}

int cpumon_get_cpu_info(const cpumon_target *target, std::uint32_t *out) noexcept
{
    Exchange exchange{CPUMON_CPU};
    if (out == nullptr || exchange.run(target) != 0) {
        return CPUMON_FAILED;
    }
    *out = from_wire(exchange.record.cpu_usage);
    return 0;
}

int cpumon_get_mem_info(const cpumon_target *target, std::uint32_t out_pair[2]) noexcept
{
    Exchange exchange{CPUMON_MEMORY};
    if (out_pair == nullptr || exchange.run(target) != 0) {
        return CPUMON_FAILED;
    }
    out_pair[0] = from_wire(exchange.record.memory[0]);
    out_pair[1] = from_wire(exchange.record.memory[1]);
    return 0;
}

int cpumon_get_translated_name(const cpumon_target *target, cpumon_process_name *in_out) noexcept
{
    if (in_out == nullptr) {
        return CPUMON_FAILED;
    }
    Exchange exchange{CPUMON_NAME_OF};
    exchange.record.process_id = to_wire(in_out->process_id);
    if (exchange.run(target) != 0) {
        return CPUMON_FAILED;
    }
    std::memcpy(in_out->name, exchange.record.name, sizeof in_out->name);
    in_out->name[sizeof in_out->name - 1] = '\0'; // a caller prints it
    return 0;
}
