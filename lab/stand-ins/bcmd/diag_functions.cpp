// SPDX-License-Identifier: Apache-2.0
// Functions that take long, fail, or have much to say.
#include "lab/stand-ins/bcmd/functions.h"

#include <chrono>
#include <condition_variable>
#include <limits>
#include <mutex>

namespace switchlab::bcmd {
namespace {

constexpr std::uint32_t most_bytes = 15U << 20; // a reply of 16 MiB would not be sent

struct Leaving {
    std::mutex use;
    std::condition_variable said;
    bool now = false;
};

Leaving &leaving()
{
    static Leaving the_one;
    return the_one;
}

// arg1: milliseconds
std::int32_t shell(std::uint32_t arg1, std::uint32_t /*arg2*/, std::uint32_t /*arg3*/, std::uint32_t /*arg4*/,
    const void * /*input*/, void ** /*output*/, std::uint32_t * /*output_length*/)
{
    Leaving &leave = leaving();
    std::unique_lock hold{leave.use};
    return leave.said.wait_for(hold, std::chrono::milliseconds{arg1}, [&] { return leave.now; }) ? was_interrupted : 0;
}

// arg1: the error code, without its sign
std::int32_t fail(std::uint32_t arg1, std::uint32_t /*arg2*/, std::uint32_t /*arg3*/, std::uint32_t /*arg4*/,
    const void * /*input*/, void ** /*output*/, std::uint32_t * /*output_length*/)
{
    if (arg1 > static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max())) {
        return bad_parameter;
    }
    return arg1 == 0 ? hardware_failed : -static_cast<std::int32_t>(arg1);
}

// arg1: bytes; arg2: the first of them, each of the others being one more than the one before
std::int32_t bulk(std::uint32_t arg1, std::uint32_t arg2, std::uint32_t /*arg3*/, std::uint32_t /*arg4*/,
    const void * /*input*/, void **output, std::uint32_t *output_length)
{
    if (arg1 > most_bytes) {
        return out_of_limits;
    }
    auto *const bytes = static_cast<unsigned char *>(std::malloc(arg1 > 0 ? arg1 : 1));
    if (bytes == nullptr) {
        return no_resources;
    }
    for (std::uint32_t i = 0; i < arg1; ++i) {
        bytes[i] = static_cast<unsigned char>(arg2 + i);
    }
    *output = bytes;
    *output_length = arg1;
    return 0;
}

} // namespace

void interrupt_functions()
{
    Leaving &leave = leaving();
    const std::lock_guard hold{leave.use};
    leave.now = true;
    leave.said.notify_all();
}

void register_diag_functions(BcmdFunclistServer &server)
{
    server.registerLegacyCallback(BCMD_GENERAL_DIAG_SHELL, shell);
    server.registerLegacyCallback(BCMD_GENERAL_DIAG_FAIL, fail);
    server.registerLegacyCallback(BCMD_GENERAL_DIAG_BULK, bulk);
}

} // namespace switchlab::bcmd
