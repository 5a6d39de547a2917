// SPDX-License-Identifier: Apache-2.0
#include "tools/log_names.h"
#include "tools/command_line/failure.h"

#include <charconv>
#include <span>
#include <string_view>
#include <switchcfg/log.h>

namespace switchcfg::tool {
namespace {

struct Name {
    std::string_view name;
    int number;
};

constexpr Name level_names[] = {{"emerg", 0}, {"alert", 1}, {"crit", 2}, {"err", 3}, {"error", 3}, {"warning", 4},
    {"warn", 4}, {"notice", 5}, {"info", 6}, {"debug", 7}};

constexpr Name facility_names[] = {{"kern", 0}, {"user", 1}, {"mail", 2}, {"daemon", 3}, {"auth", 4}, {"syslog", 5},
    {"lpr", 6}, {"news", 7}, {"uucp", 8}, {"cron", 9}, {"authpriv", 10}, {"ftp", 11}, {"local0", 16}, {"local1", 17},
    {"local2", 18}, {"local3", 19}, {"local4", 20}, {"local5", 21}, {"local6", 22}, {"local7", 23}};

int number_of(std::span<const Name> names, const std::string &text, const char *what, int most)
{
    std::string known;
    for (const Name &name : names) {
        if (name.name == text) {
            return name.number;
        }
        known += " " + std::string{name.name};
    }
    int number = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc{} && end == text.data() + text.size() && number >= 0 && number <= most) {
        return number;
    }
    throw Failure{
        std::string{"no "} + what + " is named '" + text + "': one of" + known + " or 0 to " + std::to_string(most)};
}

} // namespace

int log_facility_by_name(const std::string &name)
{
    return number_of(facility_names, name, "facility", LOG_NO_FACILITY - 1);
}

int log_level_by_name(const std::string &name)
{
    return number_of(level_names, name, "level", 255);
}

std::string log_result_text(int result)
{
    const char *const name = log_get_error_string(result);
    return std::string{name != nullptr ? name : "unknown result"} + " (" + std::to_string(result) + ")";
}

} // namespace switchcfg::tool
