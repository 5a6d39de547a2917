// SPDX-License-Identifier: Apache-2.0
// What the daemon tells about itself, and what tries the way to it.
#include "lab/stand-ins/bcmd/chip.h"
#include "lab/stand-ins/bcmd/functions.h"

#include <string>

namespace switchlab::bcmd {
namespace {

std::int32_t version(std::uint32_t /*arg1*/, std::uint32_t /*arg2*/, std::uint32_t /*arg3*/, std::uint32_t /*arg4*/,
    const void * /*input*/, void **output, std::uint32_t *output_length)
{
    const std::lock_guard hold{chip().use};
    const std::string text = "switch-chip stand-in, " + std::to_string(chip().units()) + " units of " +
                             std::to_string(Chip::ports_per_unit) + " ports\n";
    return hand_out(text.data(), text.size(), output, output_length);
}

// The input is a text: nothing else says where it ends.
std::int32_t echo(std::uint32_t /*arg1*/, std::uint32_t /*arg2*/, std::uint32_t /*arg3*/, std::uint32_t /*arg4*/,
    const void *input, void **output, std::uint32_t *output_length)
{
    if (input == nullptr) {
        return 0;
    }
    const auto *const text = static_cast<const char *>(input);
    return hand_out(text, std::strlen(text), output, output_length);
}

std::int32_t command_stats(std::uint32_t /*arg1*/, std::uint32_t /*arg2*/, std::uint32_t /*arg3*/,
    std::uint32_t /*arg4*/, const void * /*input*/, void **output, std::uint32_t *output_length)
{
    const funclist_stats *const stats = BcmdFunclistServer::getInstance().statistics();
    return stats != nullptr ? hand_out(stats, sizeof *stats, output, output_length) : not_found;
}

std::int32_t clear_all_counters(std::uint32_t /*arg1*/, std::uint32_t /*arg2*/, std::uint32_t /*arg3*/,
    std::uint32_t /*arg4*/, const void * /*input*/, void ** /*output*/, std::uint32_t * /*output_length*/)
{
    const std::lock_guard hold{chip().use};
    chip().clear_counters();
    return 0;
}

} // namespace

void register_general_functions(BcmdFunclistServer &server)
{
    server.registerLegacyCallback(BCMD_GENERAL_VERSION, version);
    server.registerLegacyCallback(BCMD_GENERAL_ECHO, echo);
    server.registerLegacyCallback(BCMD_GENERAL_COMMAND_STATS, command_stats);
    server.registerLegacyCallback(BCMD_GENERAL_COUNTERS_CLEAR_ALL, clear_all_counters);
}

} // namespace switchlab::bcmd
