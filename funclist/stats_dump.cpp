// SPDX-License-Identifier: Apache-2.0
// The statistics of the switch-chip daemon as text.
#include <switchcfg/funclist_stats.h>

#include <cstdio>
#include <ctime>
#include <google/protobuf/descriptor.h>
#include <string>
#include <switchcfg/funclist.pb.h>

namespace switchcfg::funclist {
namespace {

// As ctime(3) prints it, with the newline.
std::string local_time(std::uint32_t seconds)
{
    const auto time = static_cast<std::time_t>(seconds);
    char text[64];
    return ::ctime_r(&time, text) != nullptr ? text : "?\n";
}

std::string name_of(const google::protobuf::EnumDescriptor *numbers, int number)
{
    const google::protobuf::EnumValueDescriptor *const value = numbers->FindValueByNumber(number);
    return value != nullptr ? value->name() : std::string{};
}

struct Called {
    std::string type;
    std::string function;
};

Called called(const funclist_command &command)
{
    switch (command.family) {
    case FUNCLIST_FAMILY_GENERAL:
        return {"General", name_of(FunclistBcmdFuncGeneralType_descriptor(), command.function)};
    case FUNCLIST_FAMILY_UNIT:
        return {"Unit", name_of(FunclistBcmdFuncUnitType_descriptor(), command.function)};
    case FUNCLIST_FAMILY_UNIT_PORT:
        return {"UnitPort", name_of(FunclistBcmdFuncUnitPortType_descriptor(), command.function)};
    case FUNCLIST_FAMILY_MPLS: // scripts that read the dump know these lines by the names of the family above
        return {"Mpls", name_of(FunclistBcmdFuncUnitPortType_descriptor(), command.function)};
    default:
        return {std::to_string(command.family), {}};
    }
}

bool has_ended(const funclist_command &command)
{
    return command.end_s != 0;
}

std::string duration_of(const funclist_command &command)
{
    auto seconds = static_cast<int>(command.end_s - command.start_s);
    auto microseconds = static_cast<long>(command.end_us) - static_cast<long>(command.start_us);
    if (microseconds < 0) {
        microseconds += 1000000;
        --seconds;
    }
    char text[64];
    (void)std::snprintf(text, sizeof text, "%4d.%06lds", seconds, microseconds);
    return text;
}

void print_command(const funclist_command &command, std::FILE *stream)
{
    std::string start = local_time(command.start_s);
    start.pop_back();
    const bool ended = has_ended(command);
    const auto [type, function] = called(command);
    (void)std::fprintf(stream, "%-24s | %12s | %-8s | %s %d (%d, %d, %d, %d)%s\n", start.c_str(),
        ended ? duration_of(command).c_str() : "Running", type.c_str(), function.c_str(), command.function,
        static_cast<int>(command.arg1), static_cast<int>(command.arg2), static_cast<int>(command.arg3),
        static_cast<int>(command.arg4), ended ? (": " + std::to_string(command.result)).c_str() : "");
}

int dump(const funclist_stats &stats, std::FILE *stream)
{
    (void)std::fprintf(stream, "Total amount of command processed: %d\n\n", static_cast<int>(stats.executed));
    (void)std::fputs("Last commands executed:\n", stream);
    (void)std::fprintf(
        stream, "%-24s | %-12s | %-8s | %s\n", "Exec Start", "Duration", "Type", "Function (Parameters) and result");
    (void)std::fprintf(stream, "%-24s-|-%-12s-|-%-8s-|-%s\n", std::string(24, '-').c_str(),
        std::string(12, '-').c_str(), std::string(8, '-').c_str(), std::string(32, '-').c_str());
    bool pending = false;
    for (std::uint32_t i = 0; i < FUNCLIST_STATS_COMMANDS; ++i) {
        const funclist_command &command = stats.commands[(stats.next + i) % FUNCLIST_STATS_COMMANDS];
        if (command.start_s != 0) {
            print_command(command, stream);
            pending = pending || !has_ended(command);
        }
    }
    int result = std::fputc('\n', stream);
    if (pending) {
        (void)std::fprintf(stream, "There are pending operations. Last keep alive message sent %s",
            local_time(stats.keep_alive_time).c_str());
        result = std::fputc('\n', stream);
    }
    return result;
}

} // namespace
} // namespace switchcfg::funclist

int dumpFunclistStats(const funclist_stats *block, std::FILE *stream) noexcept
{
    if (block == nullptr || stream == nullptr) {
        return EOF;
    }
    const funclist_stats snapshot = *block;
    try {
        return switchcfg::funclist::dump(snapshot, stream);
    } catch (const std::exception &) { // memory is out
        return EOF;
    }
}
